// Drives the engine over one movie: opens it, sets up the view (size,
// orientation, origin, background, text callback) and renders frame after
// frame into a pixel buffer of the chosen format, incrementally by default.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "movie_file.h"
#include "pixel_format.h"
#include "text_draw.h"
#include "view_geometry.h"

struct Background {
    bool fromMovie = true;            // the movie's SetBackgroundColor, else white
    uint8_t rgba[4] = {255, 255, 255, 255};  // used when fromMovie is false
};

// A rectangle of the image, in pixels, right and bottom exclusive.
struct PixelRect {
    int left, top, right, bottom;
};

struct RenderSettings {
    ViewRequest view;
    Background background;
    const PixelFormat* format = nullptr;  // null means ARGB32
    bool full = false;                   // repaint every frame instead of the update boxes
};

class MovieRenderer {
public:
    // Throws ToolError when the engine refuses the movie or the view is impossible.
    MovieRenderer(const MovieFile& movie, const RenderSettings& settings);
    MovieRenderer(const MovieRenderer&) = delete;
    MovieRenderer& operator=(const MovieRenderer&) = delete;

    int width() const { return geometry_.imageWidth; }
    int height() const { return geometry_.imageHeight; }

    // Moves to the next frame; draws it when draw is set. A frame that is not
    // drawn makes the next drawn frame a full repaint.
    void Advance(bool draw);
    // Rewinds the movie: the next Advance shows its first frame again.
    void Restart();
    // Changes the view (size, orientation, scale) and draws the current
    // frame again in it. Throws ToolError for an impossible size.
    void Resize(const ViewRequest& view);
    // Frames advanced since the start or the last Restart.
    int frame() const { return frame_; }
    // The parts of the image the last drawing changed (the whole image after
    // a full repaint).
    const std::vector<PixelRect>& changed() const { return changed_; }
    // The image in the engine's pixel format, rows stride() bytes apart.
    const uint8_t* pixels() const { return pixels_.data(); }
    size_t stride() const { return stride_; }

    // The background as ToRGBA shows it.
    void BackgroundPixel(uint8_t rgba[4]) const;

    // The current image as straight-alpha RGBA rows.
    void ToRGBA(std::vector<uint8_t>& rgba) const;

private:
    void ApplyView();
    void Draw(bool full);
    void ApplyBackground();
    // Fills a rectangle already clipped to the image with the background.
    void FillBackground(int left, int top, int right, int bottom);

    RenderSettings settings_;
    const PixelFormat& format_;
    std::unique_ptr<void, void (*)(void*)> engine_;  // the engine handle
    ViewGeometry geometry_;
    bool needFull_ = true;
    bool newBuffer_ = true;  // the engine must make its canvas over a new buffer
    int frame_ = 0;
    const MovieFile* movie_;
    std::vector<PixelRect> changed_;
    uint8_t background_[4] = {255, 255, 255, 255};
    size_t stride_ = 0;
    std::vector<uint8_t> pixels_;
    _GOFFSCR offscreen_{};
    TextDrawer text_;
};
