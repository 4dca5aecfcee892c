// Draws the engine's device text and edit-field borders (the records sent to
// the zelEngineSetTextDraw callback) into the tool's pixel buffer, with fonts
// found through fontconfig and rasterised by FreeType.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include "pixel_format.h"
#include "zelengine.h"

class TextDrawer {
public:
    TextDrawer();
    ~TextDrawer();
    TextDrawer(const TextDrawer&) = delete;
    TextDrawer& operator=(const TextDrawer&) = delete;

    // Registers this drawer as engine's text callback, drawing into pixels.
    void Attach(void* engine, const PixelFormat& format, uint8_t* pixels, int width, int height,
                size_t stride);

    // Draws one record; public so tests and hosts can call it directly.
    void Draw(const _GDEVICETEXT& record);

private:
    struct Face;
    struct Line;
    static void Callback(_GDEVICETEXT* record, unsigned int user);

    Face* FindFace(const char* family, bool bold, bool italic);
    void DrawBorder(const _GDEVICETEXT& record);
    void DrawText(const _GDEVICETEXT& record);
    void FillRect(int left, int top, int right, int bottom, const uint8_t rgb[3]);
    void DrawGlyph(const FT_Bitmap& bitmap, long left, long top, const uint8_t color[4]);

    FT_Library library_ = nullptr;
    FcConfig* fontConfig_ = nullptr;
    std::map<std::string, std::unique_ptr<Face>> faces_;
    const PixelFormat* format_ = nullptr;
    uint8_t* pixels_ = nullptr;
    int width_ = 0, height_ = 0;
    size_t stride_ = 0;
    int clip_[4] = {0, 0, 0, 0};  // left, top, right, bottom of the current record
    unsigned slot_ = 0;
};
