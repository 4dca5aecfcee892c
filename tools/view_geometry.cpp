// View geometry. The zoom rule repeats the engine's fit-inside rule (the
// larger scale at which the frame fits, height deciding a tie) so that the
// origin can be computed before the first zelEngineForward.
#include "view_geometry.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tool_error.h"

namespace {

constexpr int kMaxMovieSide = 65535;

double FitZoom(long long w, long long h, long long viewW, long long viewH, unsigned orientation) {
    if (w == 0 || h == 0 || viewW == 0 || viewH == 0) return 0.0;
    if (orientation & 1) std::swap(w, h);
    return w * viewH > h * viewW ? double(viewW) / double(w) : double(viewH) / double(h);
}

}  // namespace

ViewGeometry ComputeView(const TwipRect& frame, int movieWidth, int movieHeight,
                         const ViewRequest& request) {
    if (movieWidth <= 0 || movieHeight <= 0) {
        throw ToolError(kExitInput, "movie frame is empty (" + std::to_string(movieWidth) + " x " +
                                        std::to_string(movieHeight) + " pixels)");
    }
    // Keeps the engine's 32-bit fit computation (size times view size) exact.
    if (movieWidth > kMaxMovieSide || movieHeight > kMaxMovieSide) {
        throw ToolError(kExitInput, "movie frame of " + std::to_string(movieWidth) + " x " +
                                        std::to_string(movieHeight) + " pixels is too large");
    }
    const bool turned = request.orientation & 1;
    const int rotatedW = turned ? movieHeight : movieWidth;
    const int rotatedH = turned ? movieWidth : movieHeight;

    ViewGeometry g;
    if (request.width > 0 || request.height > 0) {
        g.imageWidth = request.width;
        g.imageHeight = request.height;
    } else {
        const double w = std::round(rotatedW * request.scale);
        const double h = std::round(rotatedH * request.scale);
        if (!(w <= kMaxImageSide && h <= kMaxImageSide)) {
            throw ToolError(kExitUsage, "scale " + std::to_string(request.scale) +
                                            " gives an image larger than " +
                                            std::to_string(kMaxImageSide) + " pixels a side");
        }
        g.imageWidth = std::max(1, int(w));
        g.imageHeight = std::max(1, int(h));
    }
    if (g.imageWidth <= 0 || g.imageHeight <= 0 || g.imageWidth > kMaxImageSide ||
        g.imageHeight > kMaxImageSide) {
        throw ToolError(kExitUsage, "image size " + std::to_string(g.imageWidth) + "x" +
                                        std::to_string(g.imageHeight) + " is outside 1.." +
                                        std::to_string(kMaxImageSide));
    }

    if (static_cast<long long>(g.imageWidth) * g.imageHeight > kMaxImagePixels) {
        throw ToolError(kExitUsage, "image size " + std::to_string(g.imageWidth) + "x" +
                                        std::to_string(g.imageHeight) + " has more than " +
                                        std::to_string(kMaxImagePixels) + " pixels");
    }

    g.zoom = FitZoom(movieWidth, movieHeight, g.imageWidth, g.imageHeight, request.orientation);
    const int stageW = int(std::floor(rotatedW * g.zoom + 0.5));
    const int stageH = int(std::floor(rotatedH * g.zoom + 0.5));

    // The engine turns the frame about the origin without moving it, so a
    // quarter or half turn puts the picture at negative coordinates. Turn the
    // frame's corners the same way and move the origin by the smallest x and y.
    static const int kTurn[4][4] = {{1, 0, 0, 1}, {0, 1, -1, 0}, {-1, 0, 0, -1}, {0, -1, 1, 0}};
    const int* m = kTurn[request.orientation & 3];
    const double xs[2] = {double(frame.left), double(frame.right)};
    const double ys[2] = {double(frame.top), double(frame.bottom)};
    double minX = INFINITY, minY = INFINITY;
    for (double x : xs) {
        for (double y : ys) {
            minX = std::min(minX, g.zoom * (m[0] * x + m[1] * y));
            minY = std::min(minY, g.zoom * (m[2] * x + m[3] * y));
        }
    }
    g.originX = int(std::lround(-minX / 20.0 + (g.imageWidth - stageW) / 2.0));
    g.originY = int(std::lround(-minY / 20.0 + (g.imageHeight - stageH) / 2.0));
    return g;
}
