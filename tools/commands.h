// The three zelplay subcommands, called by main once the command line is
// parsed. Each throws ToolError on failure; main turns it into one stderr
// line and the matching exit code.
#pragma once

#include <string>

#include "animation.h"
#include "movie_renderer.h"

struct InfoOptions {
    std::string movie;
    bool json = false;
};

struct RenderOptions {
    std::string movie;
    std::string output;
    int firstFrame = 0, lastFrame = 0;  // 1-based, inclusive; 0 means the movie's first / last
    RenderSettings settings;
    AnimationOptions animation;  // for .webp, .mp4, .webm and .mkv outputs
    bool quiet = false;
};

struct ThumbOptions {
    std::string movie;
    std::string output;
    int size = 128;
    Background background;
};

void RunInfo(const InfoOptions& options);
void RunRender(const RenderOptions& options);
void RunThumb(const ThumbOptions& options);

// Loads the movie and checks that its tag stream is whole.
MovieFile LoadCheckedMovie(const std::string& path);
