// Animated WebP through libwebp's animation encoder. A frame equal to the
// one before is not added: the earlier frame simply lasts longer. Lossless
// frames keep every byte, transparent pixels included.
#include <webp/encode.h>
#include <webp/mux.h>

#include "animation.h"
#include "output_file.h"
#include "tool_error.h"

namespace {

class WebpAnimation : public AnimationWriter {
public:
    WebpAnimation(const std::string& path, int width, int height, const AnimationOptions& options)
        : path_(path), width_(width), height_(height), options_(options), out_(path) {
        WebPAnimEncoderOptions encoderOptions;
        if (!WebPAnimEncoderOptionsInit(&encoderOptions)) throw ToolError(kExitInternal, "libwebp version mismatch");
        encoderOptions.anim_params.loop_count = options.loop;
        encoderOptions.anim_params.bgcolor = 0;
        encoder_ = WebPAnimEncoderNew(width, height, &encoderOptions);
        if (!encoder_) throw ToolError(kExitInternal, path + ": cannot start a WebP of " + std::to_string(width) +
                                                           "x" + std::to_string(height));
        if (!WebPConfigInit(&config_)) throw ToolError(kExitInternal, "libwebp version mismatch");
        config_.lossless = options.quality < 0;
        config_.quality = options.quality < 0 ? 75 : float(options.quality);
        config_.exact = 1;
    }
    ~WebpAnimation() override { WebPAnimEncoderDelete(encoder_); }

    void AddFrame(const std::vector<uint8_t>& rgba, int64_t timestampMs) override {
        if (rgba == previous_) return;
        previous_ = rgba;
        WebPPicture picture;
        if (!WebPPictureInit(&picture)) throw ToolError(kExitInternal, "libwebp version mismatch");
        picture.use_argb = 1;
        picture.width = width_;
        picture.height = height_;
        const bool ok = WebPPictureImportRGBA(&picture, rgba.data(), width_ * 4) &&
                        WebPAnimEncoderAdd(encoder_, &picture, int(timestampMs), &config_);
        WebPPictureFree(&picture);
        if (!ok) throw ToolError(kExitInternal, path_ + ": WebP encoding failed: " + WebPAnimEncoderGetError(encoder_));
    }

    void Finish(int64_t endMs) override {
        WebPData data;
        WebPDataInit(&data);
        if (!WebPAnimEncoderAdd(encoder_, nullptr, int(endMs), nullptr) || !WebPAnimEncoderAssemble(encoder_, &data)) {
            throw ToolError(kExitInternal, path_ + ": WebP encoding failed: " + WebPAnimEncoderGetError(encoder_));
        }
        const bool written = std::fwrite(data.bytes, 1, data.size, out_.stream()) == data.size;
        WebPDataClear(&data);
        if (!written) throw ToolError(kExitOutput, path_ + ": write error");
        out_.Commit();
    }

private:
    std::string path_;
    int width_, height_;
    AnimationOptions options_;
    OutputFile out_;
    WebPAnimEncoder* encoder_ = nullptr;
    WebPConfig config_;
    std::vector<uint8_t> previous_;
};

}  // namespace

std::unique_ptr<AnimationWriter> OpenWebp(const std::string& path, int width, int height,
                                          const AnimationOptions& options) {
    return std::make_unique<WebpAnimation>(path, width, height, options);
}
