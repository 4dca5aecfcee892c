// Engine driving for zelplay. Opaque backgrounds are painted by the engine
// itself; for a (partly) transparent background the engine is told not to
// clear, and the tool fills the areas about to be repainted (the update boxes,
// or the whole image) with the background before each zelEnginePlay.
#include "movie_renderer.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tag_stream.h"
#include "tool_error.h"
#include "zelengine.h"

namespace {

enum PlayMode { kRepaintChanged = 0, kNewCanvas = 1, kRepaintAll = 2 };

const PixelFormat& ResolveFormat(const PixelFormat* format) {
    return format ? *format : *FindPixelFormat("argb32");
}

// Update boxes are whole pixels but may lie far outside the image.
int ClampedPixel(double v, int limit) {
    return v <= 0 ? 0 : v >= limit ? limit : int(v);
}

}  // namespace

MovieRenderer::MovieRenderer(const MovieFile& movie, const RenderSettings& settings)
    : settings_(settings),
      format_(ResolveFormat(settings.format)),
      engine_(zelEngineOpen(movie.data.data(), unsigned(movie.data.size())), zelEngineClose),
      movie_(&movie) {
    if (!engine_) throw ToolError(kExitInput, movie.path + ": the engine cannot open this movie");
    if (settings.background.fromMovie) {
        const TagSummary tags = ScanTags(movie);
        if (tags.hasBackground) std::copy(tags.background, tags.background + 3, background_);
    } else {
        std::copy(settings.background.rgba, settings.background.rgba + 4, background_);
    }
    if (background_[3] != 255 && !format_.hasAlpha) {
        throw ToolError(kExitUsage, std::string("a transparent background needs a format with "
                                                "alpha (argb32), not ") + format_.name);
    }
    ApplyView();
}

// Sizes the pixel buffer for the view and tells the engine where the movie
// goes; the next drawing makes the engine's canvas over the new buffer.
void MovieRenderer::ApplyView() {
    void* engine = engine_.get();
    try {
        geometry_ = ComputeView(movie_->frame, zelEngineGetInt(engine, 3), zelEngineGetInt(engine, 4),
                                settings_.view);
    } catch (const ToolError& e) {
        throw ToolError(e.code(), movie_->path + ": " + e.what());
    }
    stride_ = size_t(geometry_.imageWidth) * size_t(format_.bytes);
    pixels_.assign(stride_ * size_t(geometry_.imageHeight), 0);
    offscreen_.width = geometry_.imageWidth;
    offscreen_.height = geometry_.imageHeight;
    offscreen_.format = format_.code;
    offscreen_.param5 = reinterpret_cast<intptr_t>(pixels_.data());
    offscreen_.param6 = intptr_t(stride_);

    zelEngineFlipCanvas(engine, settings_.view.orientation);
    zelEngineSetOrg(engine, geometry_.originX, geometry_.originY);
    text_.Attach(engine, format_, pixels_.data(), geometry_.imageWidth, geometry_.imageHeight,
                 stride_);
    newBuffer_ = needFull_ = true;
}

void MovieRenderer::Resize(const ViewRequest& view) {
    settings_.view = view;
    ApplyView();
    // A step of no frames sets the engine's view for the new size.
    zelEngineForward(engine_.get(), 0, geometry_.imageWidth, geometry_.imageHeight, 1);
    ApplyBackground();
    if (frame_ > 0) Draw(true);
}

// The movie's own SetBackgroundColor tags run inside zelEngineForward, so the
// chosen colour is set again after every step to stay in force.
void MovieRenderer::ApplyBackground() {
    zelEngineSetBgColor(engine_.get(), background_[0], background_[1], background_[2],
                        background_[3] == 255 ? 255 : 0);
}

void MovieRenderer::FillBackground(int left, int top, int right, int bottom) {
    if (left >= right) return;
    uint8_t sample[4];
    StorePixel(format_, sample, background_);
    for (int y = top; y < bottom; ++y) {
        uint8_t* p = pixels_.data() + size_t(y) * stride_ + size_t(left) * format_.bytes;
        for (int x = left; x < right; ++x, p += format_.bytes) std::copy(sample, sample + format_.bytes, p);
    }
}

void MovieRenderer::Advance(bool draw) {
    zelEngineForward(engine_.get(), 1, geometry_.imageWidth, geometry_.imageHeight, 1);
    ++frame_;
    ApplyBackground();
    if (!draw) {
        needFull_ = true;
        return;
    }
    Draw(needFull_ || settings_.full);
}

void MovieRenderer::Draw(bool full) {
    const int w = geometry_.imageWidth, h = geometry_.imageHeight;
    changed_.clear();
    if (full) {
        changed_.push_back({0, 0, w, h});
    } else {
        int count = 0;
        const _GRECT* boxes = zelEngineGetUpdateBoxes(engine_.get(), &count, 0);
        for (int i = 0; boxes && i < count; ++i) {
            const PixelRect r{ClampedPixel(std::floor(boxes[i].left), w), ClampedPixel(std::floor(boxes[i].top), h),
                              ClampedPixel(std::ceil(boxes[i].right), w), ClampedPixel(std::ceil(boxes[i].bottom), h)};
            if (r.left < r.right && r.top < r.bottom) changed_.push_back(r);
        }
    }
    if (background_[3] != 255) {
        for (const PixelRect& r : changed_) FillBackground(r.left, r.top, r.right, r.bottom);
    }
    zelEnginePlay(engine_.get(), &offscreen_, 0, 0, w, h,
                  newBuffer_ ? kNewCanvas : full ? kRepaintAll : kRepaintChanged);
    needFull_ = newBuffer_ = false;
}

void MovieRenderer::Restart() {
    zelEngineReset(engine_.get());
    needFull_ = true;
    frame_ = 0;
}

void MovieRenderer::ToRGBA(std::vector<uint8_t>& rgba) const {
    rgba.resize(size_t(geometry_.imageWidth) * size_t(geometry_.imageHeight) * 4);
    for (int y = 0; y < geometry_.imageHeight; ++y) {
        RowToRGBA(format_, pixels_.data() + size_t(y) * stride_,
                  rgba.data() + size_t(y) * size_t(geometry_.imageWidth) * 4, geometry_.imageWidth);
    }
}

void MovieRenderer::BackgroundPixel(uint8_t rgba[4]) const {
    uint8_t pixel[4];
    StorePixel(format_, pixel, background_);
    RowToRGBA(format_, pixel, rgba, 1);
}
