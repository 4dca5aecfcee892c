// golden_test.cpp: scenes that exercise every drawing path of tov (fills of
// several styles sharing edges, gradients, strokes, nested masks), compared
// with pictures kept in tests/tov/golden, drawn by the float-layer rasterizer
// this one replaced. Set TOV_WRITE_GOLDEN=1 to rewrite the pictures from the
// current build after a deliberate change.
#include "tov_fixture.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using namespace tovtest;

namespace {

constexpr int kSize = 64;

tovObject *linear(tovCanvas *c, double scale, double turn, double tx, double ty, uint8_t alpha = 255)
{
    tovGradientStop stops[3] = {{0, {255, 0, 0, alpha}}, {100, {0, 200, 0, 255}}, {255, {0, 0, 255, alpha}}};
    double k = scale / 819.2, m[2][3] = {{k, -turn * k, tx}, {turn * k, k, ty}};
    return tovCreateGradientBrush(c, 2, 3, stops, 1, tx, ty, m, nullptr);
}

tovObject *radial(tovCanvas *c, double rx, double ry, double tx, double ty)
{
    tovGradientStop stops[3] = {{0, {255, 255, 0, 255}}, {128, {200, 0, 100, 200}}, {255, {0, 60, 90, 255}}};
    double m[2][3] = {{rx / 819.2, 0, tx}, {0, ry / 819.2, ty}};
    return tovCreateGradientBrush(c, 3, 3, stops, 1, tx, ty, m, nullptr);
}

// A 4 x 4 grid of cells whose inner corners are moved off the pixel grid;
// every edge is given once, with the cells on its two sides as its fills.
void mosaic(tovCanvas *c, tovObject *const *brushes, int count)
{
    auto corner = [](int i, int j) {
        double x = 4 + i * 14.0, y = 4 + j * 14.0;
        if (i > 0 && i < 4 && j > 0 && j < 4)
            x += ((i * 7 + j * 3) % 5 - 2) * 1.37, y += ((i * 3 + j * 5) % 5 - 2) * 1.21;
        return Pt{x, y};
    };
    auto cell = [count](int i, int j) { return (i < 0 || j < 0 || i > 3 || j > 3) ? 0 : 1 + (i + 2 * j + i * j) % (count - 1); };
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, count);
    for (int j = 0; j <= 4; ++j)
        for (int i = 0; i < 4; ++i) { // horizontal edge from corner (i, j) to (i + 1, j)
            Pt a = corner(i, j), b = corner(i + 1, j);
            tovUseBrush(c, cell(i, j), cell(i, j - 1));
            tovMoveTo(c, a.x, a.y);
            if (j == 2)
                tovCurveTo(c, (a.x + b.x) / 2, a.y + 5, b.x, b.y);
            else
                tovLineTo(c, b.x, b.y);
        }
    for (int i = 0; i <= 4; ++i)
        for (int j = 0; j < 4; ++j) { // vertical edge from corner (i, j) to (i, j + 1)
            Pt a = corner(i, j), b = corner(i, j + 1);
            tovUseBrush(c, cell(i - 1, j), cell(i, j));
            tovMoveTo(c, a.x, a.y);
            tovLineTo(c, b.x, b.y);
        }
    tovEndShape(c);
}

void opaqueMosaic(tovCanvas *c)
{
    tovObject *b[5] = {nullptr, solid(c, 200, 30, 30), solid(c, 30, 160, 40), solid(c, 20, 40, 220),
                       solid(c, 240, 200, 0)};
    mosaic(c, b, 5);
}

void mixedMosaic(tovCanvas *c)
{
    tovObject *b[5] = {nullptr, solid(c, 200, 30, 30, 128), linear(c, 70, 0.4, 32, 32),
                       radial(c, 30, 20, 20, 40), solid(c, 0, 0, 0, 40)};
    mosaic(c, b, 5);
}

// Overlapping and open edge soups: windings above one, a fill left open at
// the right, edges whose two fills are the same.
void overlaps(tovCanvas *c)
{
    beginFills(c, {solid(c, 30, 30, 200, 160), solid(c, 220, 120, 0)});
    tovUseBrush(c, 0, 1);
    circlePath(c, 24, 24, 18);
    circlePath(c, 36, 30, 16);
    tovUseBrush(c, 2, 1);
    tovMoveTo(c, 10.5, 40.2);
    tovLineTo(c, 30.3, 62);
    tovUseBrush(c, 2, 2);
    tovLineTo(c, 60, 50);
    tovUseBrush(c, 0, 2);
    tovMoveTo(c, 50.4, 3.3);
    tovLineTo(c, 44.6, 20.7);
    tovEndShape(c);
}

void gradients(tovCanvas *c)
{
    fillPolygon(c, linear(c, 50, 0.6, 30, 30), {{2, 2}, {62, 5}, {40, 40}});
    beginFills(c, {radial(c, 28, 18, 36, 40)});
    tovUseBrush(c, 0, 1);
    circlePath(c, 36, 40, 22, 7);
    tovEndShape(c);
    fillCircle(c, linear(c, 0.001, 0, 32, 32), 8, 56, 7); // steeper than a pixel
}

void strokes(tovCanvas *c)
{
    strokePolyline(c, 0, {0, 0, 0, 255}, {{3.5, 60.5}, {30, 44.2}, {60.5, 60.5}});
    strokePolyline(c, 1, {0, 0, 200, 255}, {{4, 4}, {60, 9}, {6, 14}, {58, 19.5}});
    strokePolyline(c, 2.5, {0, 140, 0, 180}, {{8, 30}, {20, 22}, {32, 38}, {44, 22}, {56, 30}, {8, 30}});
    strokePolyline(c, 9, {200, 0, 0, 128}, {{12, 50}, {40, 54}, {20, 36}});
    tovPenSpec spec{4, {120, 0, 160, 255}};
    tovObject *pens[2] = {nullptr, tovCreatePen(c, &spec)};
    tovBeginShape(c, 1, 2, 0);
    tovSetPens(c, pens, 2);
    tovUsePen(c, 1);
    tovMoveTo(c, 40, 40);
    tovCurveTo(c, 62, 36, 54, 62);
    tovMoveTo(c, 50, 44);
    tovLineTo(c, 50, 44);
    tovEndShape(c);
}

// A star mask, a circle mask inside it, drawing through both, then through
// the star alone.
void masks(tovCanvas *c)
{
    tovBeginCanvas(c, 2);
    std::vector<Pt> star;
    for (int i = 0; i < 5; ++i) {
        double a = -kPi / 2 + i * 4 * kPi / 5;
        star.push_back({32 + 30 * std::cos(a), 33 + 30 * std::sin(a)});
    }
    fillPolygon(c, solid(c, 0, 0, 0, 0), star);
    tovEndCanvas(c, 2);
    tovBeginCanvas(c, 2);
    fillCircle(c, solid(c, 0, 0, 0), 26, 30, 17);
    tovEndCanvas(c, 2);
    tovBeginCanvas(c, 1);
    fillRect(c, radial(c, 40, 40, 26, 30), 0, 0, 64, 64);
    tovEndCanvas(c, 1);
    tovDestroyMask(c);
    fillRect(c, solid(c, 0, 120, 0, 100), 30.5, 0, 64, 64);
    tovDestroyMask(c);
    fillRect(c, solid(c, 0, 0, 0, 60), 0, 56.25, 64, 64);
}

struct Scene {
    const char *name;
    void (*draw)(tovCanvas *);
    int tolerance; // largest difference of one channel of one pixel
};

// Coverage is computed with the same integer arithmetic as before, so fills
// match exactly. Translucent blending now rounds each channel to nearest
// where it used to be off by up to one level, hence 1 wherever something is
// translucent. Gradient positions are stepped in 16.16 fixed point instead
// of computed in float: a pixel on the border of two table entries may take
// the neighbour, a difference of at most one table step (2 levels in these
// gradients). Round joins and caps are walked with one fixed angle per pen
// and a shorter last step instead of equal steps, which moves arc vertices
// by up to the 0.1 pixel tolerance: up to a sixteenth of an edge pixel.
const Scene kScenes[] = {{"opaque_mosaic", opaqueMosaic, 1}, {"mixed_mosaic", mixedMosaic, 1},
                         {"overlaps", overlaps, 1},          {"gradients", gradients, 2},
                         {"strokes", strokes, 16},           {"masks", masks, 1}};

std::string goldenPath(const char *name) { return std::string(TOV_GOLDEN_DIR) + "/" + name + ".png"; }

// Pictures are drawn over opaque white, so PNG keeps them exactly.
void render(const Scene &scene, Surface &s)
{
    Canvas c(s);
    tovColor white{255, 255, 255, 255};
    tovClear(c, &white);
    scene.draw(c);
}

TEST(TovGolden, ScenesMatchTheKeptPictures)
{
    bool write = std::getenv("TOV_WRITE_GOLDEN") != nullptr;
    for (const Scene &scene : kScenes) {
        Surface s(kSize, kSize);
        render(scene, s);
        cairo_surface_t *mine =
            cairo_image_surface_create_for_data(s.row(0), CAIRO_FORMAT_ARGB32, kSize, kSize, kSize * 4);
        if (write) {
            ASSERT_EQ(cairo_surface_write_to_png(mine, goldenPath(scene.name).c_str()), CAIRO_STATUS_SUCCESS);
            cairo_surface_destroy(mine);
            continue;
        }
        cairo_surface_t *kept = cairo_image_surface_create_from_png(goldenPath(scene.name).c_str());
        ASSERT_EQ(cairo_surface_status(kept), CAIRO_STATUS_SUCCESS) << scene.name;
        ASSERT_EQ(cairo_image_surface_get_width(kept), kSize);
        const unsigned char *data = cairo_image_surface_get_data(kept);
        int stride = cairo_image_surface_get_stride(kept), worst = 0;
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                uint32_t want;
                std::memcpy(&want, data + y * stride + x * 4, 4);
                for (int shift = 0; shift < 32; shift += 8) {
                    int d = int((want >> shift) & 255) - int((s.argb(x, y) >> shift) & 255);
                    worst = std::max(worst, d < 0 ? -d : d);
                }
            }
        EXPECT_LE(worst, scene.tolerance) << scene.name;
        cairo_surface_destroy(kept);
        cairo_surface_destroy(mine);
    }
}

} // namespace
