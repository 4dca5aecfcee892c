// zelview's window: plays one movie at its frame rate in an SDL2 window,
// uploading only the engine's update boxes into a streaming texture, with
// keys for pause, step, restart, zoom, turn, fullscreen and screenshots, and
// movies dropped onto the window opened in place.
#pragma once

#include <SDL.h>

#include <memory>
#include <string>

#include "movie_renderer.h"
#include "tool_error.h"

struct ViewerOptions {
    std::string movie;          // may be empty: the window waits for a drop
    int width = 0, height = 0;  // window size; 0: the movie's own size
    Background background;
    int frames = 0;             // > 0: play this many frames, then stop
    std::string screenshot;     // with frames: write what the window shows, then quit
};

class ViewerWindow {
public:
    explicit ViewerWindow(const ViewerOptions& options);
    ~ViewerWindow();
    ViewerWindow(const ViewerWindow&) = delete;
    ViewerWindow& operator=(const ViewerWindow&) = delete;

    // Runs until the window is closed (or, with a frame count, until that
    // many frames are shown); returns the exit code: 0, or the code of the
    // last failure to open a movie.
    int Run();

private:
    // Opens path in place of the current movie; on failure the error goes
    // to the title and stderr and the old movie (if any) stays.
    void Open(const std::string& path);
    // Shows a failure in the title and on stderr; its code becomes the exit code.
    void Report(const ToolError& error);
    void Refit();
    void Step(int frames, bool draw);
    void Upload(bool everything);
    void Present();
    void UpdateTitle();
    bool HandleKey(SDL_Keycode key);
    void SaveScreenshot(const std::string& path);

    ViewerOptions options_;
    SDL_Window* window_ = nullptr;
    SDL_Renderer* renderer_ = nullptr;
    SDL_Texture* texture_ = nullptr;
    int textureWidth_ = 0, textureHeight_ = 0;
    std::unique_ptr<MovieFile> movie_;
    std::unique_ptr<MovieRenderer> player_;
    std::string name_, error_;
    int exitCode_ = 0;
    bool paused_ = false;
    double zoom_ = 1.0;
    unsigned orientation_ = 0;
    uint64_t nextFrame_ = 0;  // performance counter ticks of the next frame's deadline
    int drawnThisSecond_ = 0;
    uint64_t secondStart_ = 0;
    double rate_ = 0;  // frames drawn per second, last second
};
