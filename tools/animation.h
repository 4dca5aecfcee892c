// Whole movies as one file: an animated WebP (libwebp) or a video (the ffmpeg
// program). `render` picks the writer by the output name's extension; frames
// arrive as straight-alpha RGBA images with the time each one starts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct AnimationOptions {
    int quality = -1;    // WebP: 0..100 lossy; -1 lossless
    int loop = 0;        // WebP: times to play, 0 forever
    int crf = -1;        // video: constant rate factor; -1 the codec's default
    int repeat = 1;      // the timeline played this many times
    bool transparent = false;  // the background has alpha: keep it where the format can
    uint8_t background[3] = {255, 255, 255};  // colour that pads a video to even sizes
};

class AnimationWriter {
public:
    virtual ~AnimationWriter() = default;
    // The frame starting at timestampMs (frames come in order, one per
    // movie frame).
    virtual void AddFrame(const std::vector<uint8_t>& rgba, int64_t timestampMs) = 0;
    // Ends the last frame at endMs, writes the file and moves it into place.
    // A writer destroyed without Finish leaves no file behind.
    virtual void Finish(int64_t endMs) = 0;
};

// Start of frame `index` (from 0) at the movie's frame rate (8.8 fixed point;
// 0 plays at 10 frames per second, as the engine's frame delay does), rounded
// to the millisecond from the movie's start so that the rate holds over the
// whole movie: 12 frames per second alternate 83 and 84 ms.
int64_t FrameStartMs(int64_t index, uint16_t frameRate);

// A writer for path when its extension names an animation (.webp, .mp4,
// .webm, .mkv), else null. Throws ToolError when the output cannot be made
// (kExitUsage when ffmpeg is missing, kExitOutput when the file cannot be
// created).
std::unique_ptr<AnimationWriter> OpenAnimation(const std::string& path, int width, int height, uint16_t frameRate,
                                               const AnimationOptions& options);

// The writers behind OpenAnimation.
std::unique_ptr<AnimationWriter> OpenWebp(const std::string& path, int width, int height,
                                          const AnimationOptions& options);
std::unique_ptr<AnimationWriter> OpenVideo(const std::string& path, const std::string& container, int width,
                                           int height, uint16_t frameRate, const AnimationOptions& options);
