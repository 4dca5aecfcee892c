// The engine's pixel formats as this tool handles them: names for the command
// line, conversion of a rendered row to straight-alpha RGBA for PNG, and
// single-pixel writes and blends for the text callback and background fills.
#pragma once

#include <cstdint>
#include <string>

struct PixelFormat {
    const char* name;  // command-line name
    int code;          // ZEL_FORMAT_* value
    int bytes;         // bytes per pixel
    bool hasAlpha;     // formats without alpha are opaque destinations
};

// Finds a format by name or by numeric code; null when unknown.
const PixelFormat* FindPixelFormat(const std::string& nameOrCode);

// Comma-separated names, for help and error messages.
std::string PixelFormatNames();

// Converts width pixels of format to RGBA bytes with straight alpha.
void RowToRGBA(const PixelFormat& format, const uint8_t* src, uint8_t* rgba, int width);

// Writes one pixel of a straight-alpha colour exactly (premultiplying for
// the ARGB format, dropping alpha for the others).
void StorePixel(const PixelFormat& format, uint8_t* pixel, const uint8_t rgba[4]);

// Draws colour rgb over one pixel with opacity alpha (0..255), source over.
void BlendPixel(const PixelFormat& format, uint8_t* pixel, const uint8_t rgb[3], unsigned alpha);
