// Test support for the dictionary and the characters: tags back to back in one
// exact-size heap block (the sanitizer catches a read past its end) and a
// dictionary bounded by it, with its error stack.
#ifndef ZEL_TESTS_DISPLAY_DICTIONARYFIXTURE_H
#define ZEL_TESTS_DISPLAY_DICTIONARYFIXTURE_H

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "base/GError.h"
#include "display/GDictionary.h"
#include "fixture/SwfBuilder.h"

// A dictionary over the tags, every tag inserted under its id.
class DictionaryFixture {
public:
    explicit DictionaryFixture(const std::vector<std::pair<uint16_t, swf::Bytes>>& defs) {
        size_t size = 0;
        for (const auto& d : defs) offsets_.push_back(size), size += d.second.size();
        movie_.reset(new unsigned char[size ? size : 1]);
        for (size_t i = 0; i < defs.size(); ++i) {
            if (!defs[i].second.empty()) std::memcpy(Tag(i), defs[i].second.data(), defs[i].second.size());
        }
        dict.error = &errors;
        dict.movieEnd = movie_.get() + size;
        for (size_t i = 0; i < defs.size(); ++i) dict.Insert(defs[i].first, Tag(i));
    }
    unsigned char* Tag(size_t i) { return movie_.get() + offsets_.at(i); }

private:
    // Declared first: the movie must outlive the dictionary, whose
    // destructor reads the slots that point into it.
    std::unique_ptr<unsigned char[]> movie_;
    std::vector<size_t> offsets_;

public:
    GError errors;
    GDictionary dict;
};

#endif
