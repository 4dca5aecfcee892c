// Test helpers that use the engine the way a host does, through the public
// header only: an owning handle and an ARGB pixel buffer.
#ifndef ZEL_TESTS_API_ENGINEHOST_H
#define ZEL_TESTS_API_ENGINEHOST_H

#include <cstdint>
#include <vector>

#include "fixture/SwfBuilder.h"
#include "zelengine.h"

namespace host {

// Opens a movie kept alive as long as the handle.
class Engine {
public:
    explicit Engine(swf::Bytes movie) : movie_(std::move(movie)) {
        handle_ = zelEngineOpen(movie_.data(), static_cast<unsigned>(movie_.size()));
    }
    ~Engine() { zelEngineClose(handle_); }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    void* get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

    // Pops every pending code, most recent first.
    std::vector<unsigned> Errors() {
        std::vector<unsigned> codes;
        unsigned code = 0;
        while (zelEnginePopError(handle_, &code)) codes.push_back(code);
        return codes;
    }

    // The update boxes in pixels.
    std::vector<_GRECT> Boxes(int full = 0) {
        int count = 0;
        const _GRECT* boxes = zelEngineGetUpdateBoxes(handle_, &count, full);
        return boxes ? std::vector<_GRECT>(boxes, boxes + count) : std::vector<_GRECT>();
    }

private:
    swf::Bytes movie_;
    void* handle_ = nullptr;
};

// A premultiplied ARGB buffer, optionally inside a larger guarded block.
struct Pixels {
    int width, height;
    std::vector<uint32_t> data;
    _GOFFSCR descriptor;

    Pixels(int w, int h, uint32_t fill = 0)
        : width(w), height(h), data(static_cast<size_t>(w) * h, fill),
          descriptor{0, 0, w, h, ZEL_FORMAT_ARGB32, reinterpret_cast<intptr_t>(data.data()), 0} {}

    uint32_t at(int x, int y) const { return data[static_cast<size_t>(y) * width + x]; }
    _GOFFSCR* get() { return &descriptor; }
};

}  // namespace host

#endif
