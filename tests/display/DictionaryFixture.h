// Test support for the dictionary and the characters: tags back to back in one
// exact-size heap block (the sanitizer catches a read past its end) and a
// dictionary bounded by it, with its error stack.
#ifndef ZEL_TESTS_DISPLAY_DICTIONARYFIXTURE_H
#define ZEL_TESTS_DISPLAY_DICTIONARYFIXTURE_H

#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "base/GError.h"
#include "display/GDictionary.h"
#include "fixture/SwfBuilder.h"

class MovieBuffer {
public:
    explicit MovieBuffer(const std::vector<swf::Bytes>& tags) {
        for (const swf::Bytes& t : tags) {
            offsets_.push_back(size_);
            size_ += t.size();
        }
        bytes_.reset(new unsigned char[size_ ? size_ : 1]);
        size_t at = 0;
        for (const swf::Bytes& t : tags) {
            if (!t.empty()) std::memcpy(bytes_.get() + at, t.data(), t.size());
            at += t.size();
        }
    }
    unsigned char* Tag(size_t i) { return bytes_.get() + offsets_.at(i); }
    const unsigned char* End() const { return bytes_.get() + size_; }
    size_t Size() const { return size_; }

private:
    std::unique_ptr<unsigned char[]> bytes_;
    std::vector<size_t> offsets_;
    size_t size_ = 0;
};

// A dictionary over a movie buffer, with every tag inserted under its id.
class DictionaryFixture {
    // Declared first: the buffer must outlive the dictionary, whose
    // destructor reads the slots that point into it.
    MovieBuffer movie_;

public:
    explicit DictionaryFixture(const std::vector<std::pair<uint16_t, swf::Bytes>>& defs)
        : movie_(Bodies(defs)) {
        dict.error = &errors;
        dict.movieEnd = movie_.End();
        for (size_t i = 0; i < defs.size(); ++i) dict.Insert(defs[i].first, movie_.Tag(i));
    }
    unsigned char* Tag(size_t i) { return movie_.Tag(i); }
    // The most recent error code, or 0 when none is pending.
    unsigned LastError() {
        unsigned code = 0;
        return errors.PopError(code) > 0 ? code : 0;
    }

    GError errors;
    GDictionary dict;

private:
    static std::vector<swf::Bytes> Bodies(const std::vector<std::pair<uint16_t, swf::Bytes>>& defs) {
        std::vector<swf::Bytes> out;
        for (const auto& d : defs) out.push_back(d.second);
        return out;
    }
};

// A 10 x 10 pixel square shape (200 twips), filled with `c`.
inline swf::Bytes SquareShape(uint16_t id, swf::Rgba c = {255, 0, 0, 255}, int version = 1) {
    swf::Shape s({swf::Fill::Solid(c)}, {});
    s.MoveTo(0, 0).Fill1(1).LineTo(200, 0).LineTo(200, 200).LineTo(0, 200).LineTo(0, 0);
    return swf::DefineShape(id, swf::Rect{0, 200, 0, 200, 0}, s, version);
}

#endif
