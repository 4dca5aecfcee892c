// The info, render and thumb subcommands. Frames are numbered from 1, as in
// authoring tools; a thumbnail shows the frame (of the first kMaxThumbFrames)
// with the most pixels that differ from the background.
#include "commands.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "frame_pattern.h"
#include "info.h"
#include "png_writer.h"
#include "progress.h"
#include "tag_stream.h"
#include "tool_error.h"

namespace {

constexpr int kMaxThumbFrames = 300;

[[noreturn]] void Usage(const std::string& message) { throw ToolError(kExitUsage, message); }

}  // namespace

MovieFile LoadCheckedMovie(const std::string& path) {
    MovieFile movie = LoadMovie(path);
    const TagSummary tags = ScanTags(movie);
    if (tags.truncated) {
        throw ToolError(kExitInput, path + ": truncated: the tag at offset " +
                                        std::to_string(tags.truncatedAt) +
                                        " runs past the end of the movie");
    }
    return movie;
}

void RunInfo(const InfoOptions& options) {
    const MovieFile movie = LoadCheckedMovie(options.movie);
    PrintInfo(movie, ScanTags(movie), options.json, stdout);
    if (std::fflush(stdout) != 0) throw ToolError(kExitOutput, "<stdout>: write error");
}

void RunRender(const RenderOptions& options) {
    const MovieFile movie = LoadCheckedMovie(options.movie);
    const int count = movie.frameCount;
    if (count == 0) throw ToolError(kExitInput, options.movie + ": the movie has no frames");
    const int first = options.firstFrame ? options.firstFrame : 1;
    const int last = options.lastFrame ? options.lastFrame : count;
    if (first < 1 || last < first || last > count) {
        Usage("frames " + std::to_string(first) + "-" + std::to_string(last) + " are outside " +
              options.movie + ", which has frames 1-" + std::to_string(count));
    }
    MovieRenderer renderer(movie, options.settings);
    AnimationOptions animationOptions = options.animation;
    uint8_t background[4];
    renderer.BackgroundPixel(background);
    std::copy(background, background + 3, animationOptions.background);
    animationOptions.transparent = background[3] != 255;
    if (animationOptions.repeat < 1) Usage("--repeat needs a count of 1 or more");
    std::unique_ptr<AnimationWriter> animation =
        options.output == "-" ? nullptr
                              : OpenAnimation(options.output, renderer.width(), renderer.height(), movie.frameRate,
                                              animationOptions);
    const bool toStdout = options.output == "-";
    const FramePattern pattern(animation ? "" : options.output);
    if (!animation && last > first && (toStdout || !pattern.numbered())) {
        Usage("rendering " + std::to_string(last - first + 1) + " frames needs an output pattern " +
              "with a frame number such as frame_%04d.png, or a .webp, .mp4, .webm or .mkv file " +
              "(or pick one frame with --frame)");
    }
    const int repeats = animation ? animationOptions.repeat : 1;
    const int total = (last - first + 1) * repeats;
    Progress progress(total, !options.quiet);
    std::vector<uint8_t> rgba;
    int written = 0;
    for (int round = 0; round < repeats; ++round) {
        if (round > 0) renderer.Restart();
        for (int frame = 1; frame <= last; ++frame) {
            renderer.Advance(frame >= first);
            if (frame < first) continue;
            renderer.ToRGBA(rgba);
            if (animation)
                animation->AddFrame(rgba, FrameStartMs(written, movie.frameRate));
            else
                WritePng(toStdout ? "-" : pattern.Format(frame), renderer.width(), renderer.height(), rgba);
            progress.Update(++written);
        }
    }
    if (animation) animation->Finish(FrameStartMs(written, movie.frameRate));
    progress.Finish(total, options.quiet ? nullptr : toStdout ? stderr : stdout);
}

void RunThumb(const ThumbOptions& options) {
    const MovieFile movie = LoadCheckedMovie(options.movie);
    if (movie.frameCount == 0) throw ToolError(kExitInput, options.movie + ": the movie has no frames");
    if (options.size < 1 || options.size > kMaxImageSide) {
        Usage("thumbnail size " + std::to_string(options.size) + " is outside 1.." +
              std::to_string(kMaxImageSide));
    }
    // Fit the frame's aspect into size x size; the image is no larger than that.
    const double w = std::max(1, (movie.frame.right - movie.frame.left) / 20);
    const double h = std::max(1, (movie.frame.bottom - movie.frame.top) / 20);
    const double scale = options.size / std::max(w, h);
    RenderSettings settings;
    settings.background = options.background;
    settings.view.width = std::max(1, int(std::lround(w * scale)));
    settings.view.height = std::max(1, int(std::lround(h * scale)));

    MovieRenderer renderer(movie, settings);
    uint8_t background[4];
    renderer.BackgroundPixel(background);
    std::vector<uint8_t> rgba, best;
    long bestInk = -1;
    const int frames = std::min<int>(movie.frameCount, kMaxThumbFrames);
    for (int frame = 1; frame <= frames; ++frame) {
        renderer.Advance(true);
        renderer.ToRGBA(rgba);
        long ink = 0;  // pixels that differ from the background
        for (size_t i = 0; i < rgba.size(); i += 4) {
            ink += !std::equal(background, background + 4, rgba.begin() + long(i));
        }
        if (ink > bestInk) {
            bestInk = ink;
            best = rgba;
        }
    }
    WritePng(options.output, renderer.width(), renderer.height(), best);
}
