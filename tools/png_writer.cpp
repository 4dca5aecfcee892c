// PNG output through libpng's simplified write interface, which takes
// straight-alpha RGBA rows as they are and needs no setjmp error handling.
#include "png_writer.h"

#include <png.h>

#include "output_file.h"
#include "tool_error.h"

void WritePng(const std::string& path, int width, int height, const std::vector<uint8_t>& rgba) {
    OutputFile out(path);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(width);
    image.height = png_uint_32(height);
    image.format = PNG_FORMAT_RGBA;
    if (!png_image_write_to_stdio(&image, out.stream(), 0, rgba.data(), 0, nullptr)) {
        const std::string cause = image.message[0] ? image.message : "PNG encoding failed";
        png_image_free(&image);
        throw ToolError(kExitOutput, path + ": " + cause);
    }
    out.Commit();
}
