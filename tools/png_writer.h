// Writes an RGBA image (straight alpha, 8 bits per channel) as a PNG file,
// atomically: the file exists only once the whole image is written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// path "-" writes to stdout. Throws ToolError (kExitOutput) on failure.
void WritePng(const std::string& path, int width, int height, const std::vector<uint8_t>& rgba);
