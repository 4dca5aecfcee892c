// Where the movie lands in the output image: the image size, the zoom the
// engine will choose for it, and the origin that puts the whole (possibly
// turned) frame inside the image, centred when the aspect ratios differ.
#pragma once

#include "movie_file.h"

struct ViewRequest {
    unsigned orientation = 0;  // quarter turns, 0..3
    int width = 0, height = 0;  // explicit image size; 0 means use scale
    double scale = 1.0;
};

struct ViewGeometry {
    int imageWidth = 0, imageHeight = 0;
    double zoom = 0;  // output pixels per movie pixel
    int originX = 0, originY = 0;  // for zelEngineSetOrg
};

// Largest image accepted: at most 16384 pixels a side and 64 Mi pixels in
// all, so the pixel buffer and its RGBA copy stay within 256 MiB each.
constexpr int kMaxImageSide = 16384;
constexpr long long kMaxImagePixels = 64ll * 1024 * 1024;

// movieWidth and movieHeight are the engine's frame size in whole pixels
// (zelEngineGetInt 3 and 4). Throws ToolError (kExitUsage) for sizes that
// cannot be rendered.
ViewGeometry ComputeView(const TwipRect& frame, int movieWidth, int movieHeight,
                         const ViewRequest& request);
