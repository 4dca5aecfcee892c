// Frame timing and the choice of animation writer by file extension.
#include "animation.h"

#include <algorithm>
#include <cctype>

int64_t FrameStartMs(int64_t index, uint16_t frameRate) {
    const int64_t rate = frameRate ? frameRate : 10 * 256;
    return (index * 256000 + rate / 2) / rate;
}

std::unique_ptr<AnimationWriter> OpenAnimation(const std::string& path, int width, int height, uint16_t frameRate,
                                               const AnimationOptions& options) {
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return nullptr;
    std::string ext = path.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    if (ext == "webp") return OpenWebp(path, width, height, options);
    if (ext == "mp4" || ext == "webm" || ext == "mkv") return OpenVideo(path, ext, width, height, frameRate, options);
    return nullptr;
}
