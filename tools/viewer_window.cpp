// The window's loop. Frames are due at deadlines of a monotonic clock, one
// frame period apart from the movie's start; when drawing falls behind, the
// timeline still advances by every frame that is due and only the last is
// drawn. The engine draws into the renderer's ARGB32 buffer (the layout of
// SDL's ARGB8888), and only the rectangles it changed are uploaded.
#include "viewer_window.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "png_writer.h"
#include "tool_error.h"

namespace {

constexpr double kZoomStep = 1.25;

std::string BaseName(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Milliseconds per frame at a frame rate in 8.8 fixed point (0: 10 per
// second, as the engine times it).
double FramePeriodMs(uint16_t rate) { return 256000.0 / (rate ? rate : 10 * 256); }

}  // namespace

ViewerWindow::ViewerWindow(const ViewerOptions& options) : options_(options) {
    if (SDL_Init(SDL_INIT_VIDEO) != 0) throw ToolError(kExitInternal, std::string("SDL: ") + SDL_GetError());
    SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "nearest");
    int w = options.width, h = options.height;
    if (!options.movie.empty()) {
        try {
            movie_ = std::make_unique<MovieFile>(LoadMovie(options.movie));
            if (w <= 0 || h <= 0) {
                w = std::max(1, (movie_->frame.right - movie_->frame.left) / 20);
                h = std::max(1, (movie_->frame.bottom - movie_->frame.top) / 20);
            }
        } catch (const ToolError& e) {
            movie_.reset();
            Report(e);
        }
    }
    if (w <= 0 || h <= 0) w = 640, h = 480;
    window_ = SDL_CreateWindow("zelview", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, std::min(w, kMaxImageSide),
                               std::min(h, kMaxImageSide), SDL_WINDOW_RESIZABLE);
    if (!window_) throw ToolError(kExitInternal, std::string("SDL window: ") + SDL_GetError());
    renderer_ = SDL_CreateRenderer(window_, -1, 0);
    if (!renderer_) renderer_ = SDL_CreateRenderer(window_, -1, SDL_RENDERER_SOFTWARE);
    if (!renderer_) throw ToolError(kExitInternal, std::string("SDL renderer: ") + SDL_GetError());
    if (movie_) {
        const std::string path = options.movie;
        movie_.reset();
        Open(path);
    }
    UpdateTitle();
}

ViewerWindow::~ViewerWindow() {
    player_.reset();
    if (texture_) SDL_DestroyTexture(texture_);
    if (renderer_) SDL_DestroyRenderer(renderer_);
    if (window_) SDL_DestroyWindow(window_);
    SDL_Quit();
}

void ViewerWindow::Open(const std::string& path) {
    try {
        auto movie = std::make_unique<MovieFile>(LoadMovie(path));
        RenderSettings settings;
        settings.background = options_.background;
        settings.view.width = 1, settings.view.height = 1;  // fitted to the window below
        auto player = std::make_unique<MovieRenderer>(*movie, settings);
        player_ = std::move(player);
        movie_ = std::move(movie);
        name_ = BaseName(path);
        error_.clear();
        zoom_ = 1.0;
        orientation_ = 0;
        paused_ = false;
        Refit();
        Step(1, true);
        nextFrame_ = SDL_GetPerformanceCounter();
    } catch (const ToolError& e) {
        Report(e);
    }
    UpdateTitle();
}

void ViewerWindow::Report(const ToolError& error) {
    error_ = error.what();
    exitCode_ = error.code();
    std::fprintf(stderr, "zelview: %s\n", error.what());
}

// The movie fitted into the window (times the zoom), turned as asked.
void ViewerWindow::Refit() {
    if (!player_) return;
    int w = 0, h = 0;
    SDL_GetRendererOutputSize(renderer_, &w, &h);
    ViewRequest view;
    view.orientation = orientation_;
    view.width = std::clamp(int(std::lround(std::max(1, w) * zoom_)), 1, kMaxImageSide);
    view.height = std::clamp(int(std::lround(std::max(1, h) * zoom_)), 1, kMaxImageSide);
    player_->Resize(view);
    Upload(true);
}

void ViewerWindow::Step(int frames, bool draw) {
    for (int i = 0; i < frames; ++i) player_->Advance(draw && i + 1 == frames);
    if (draw) Upload(false);
}

// Copies the changed rectangles (or everything) into the texture, made anew
// when the image size changed.
void ViewerWindow::Upload(bool everything) {
    const int w = player_->width(), h = player_->height();
    if (!texture_ || w != textureWidth_ || h != textureHeight_) {
        if (texture_) SDL_DestroyTexture(texture_);
        texture_ = SDL_CreateTexture(renderer_, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING, w, h);
        if (!texture_) throw ToolError(kExitInternal, std::string("SDL texture: ") + SDL_GetError());
        textureWidth_ = w, textureHeight_ = h;
        everything = true;
    }
    const uint8_t* pixels = player_->pixels();
    const int stride = int(player_->stride());
    if (everything) {
        SDL_UpdateTexture(texture_, nullptr, pixels, stride);
        return;
    }
    for (const PixelRect& r : player_->changed()) {
        const SDL_Rect rect{r.left, r.top, r.right - r.left, r.bottom - r.top};
        SDL_UpdateTexture(texture_, &rect, pixels + size_t(r.top) * size_t(stride) + size_t(r.left) * 4, stride);
    }
}

void ViewerWindow::Present() {
    SDL_SetRenderDrawColor(renderer_, 0, 0, 0, 255);
    SDL_RenderClear(renderer_);
    if (texture_) {
        int w = 0, h = 0;
        SDL_GetRendererOutputSize(renderer_, &w, &h);
        const SDL_Rect dst{(w - textureWidth_) / 2, (h - textureHeight_) / 2, textureWidth_, textureHeight_};
        SDL_RenderCopy(renderer_, texture_, nullptr, &dst);
    }
    SDL_RenderPresent(renderer_);
    ++drawnThisSecond_;
}

void ViewerWindow::UpdateTitle() {
    std::string title;
    if (!error_.empty()) {
        title = "zelview: " + error_;
    } else if (player_) {
        char text[160];
        std::snprintf(text, sizeof text, "%s - frame %d of %d - %.1f frames/s%s", name_.c_str(), player_->frame(),
                      int(movie_->frameCount), rate_, paused_ ? " - paused" : "");
        title = text;
    } else {
        title = "zelview: drop a movie here";
    }
    SDL_SetWindowTitle(window_, title.c_str());
}

void ViewerWindow::SaveScreenshot(const std::string& path) {
    int w = 0, h = 0;
    SDL_GetRendererOutputSize(renderer_, &w, &h);
    std::vector<uint8_t> rgba(size_t(w) * size_t(h) * 4);
    if (SDL_RenderReadPixels(renderer_, nullptr, SDL_PIXELFORMAT_ABGR8888, rgba.data(), w * 4) != 0)
        throw ToolError(kExitInternal, std::string("SDL read back: ") + SDL_GetError());
    WritePng(path, w, h, rgba);
}

// One key; false when it asks to quit.
bool ViewerWindow::HandleKey(SDL_Keycode key) {
    switch (key) {
    case SDLK_q:
    case SDLK_ESCAPE: return false;
    case SDLK_f: {
        const bool full = SDL_GetWindowFlags(window_) & SDL_WINDOW_FULLSCREEN_DESKTOP;
        SDL_SetWindowFullscreen(window_, full ? 0 : SDL_WINDOW_FULLSCREEN_DESKTOP);
        return true;
    }
    default: break;
    }
    if (!player_) return true;
    switch (key) {
    case SDLK_SPACE:
        paused_ = !paused_;
        nextFrame_ = SDL_GetPerformanceCounter();
        break;
    case SDLK_RIGHT:
        if (paused_ && player_->frame() < movie_->frameCount) Step(1, true);
        break;
    case SDLK_HOME:
        player_->Restart();
        Step(1, true);
        nextFrame_ = SDL_GetPerformanceCounter();
        break;
    case SDLK_PLUS:
    case SDLK_EQUALS:
    case SDLK_KP_PLUS: zoom_ = std::min(zoom_ * kZoomStep, 16.0), Refit(); break;
    case SDLK_MINUS:
    case SDLK_KP_MINUS: zoom_ = std::max(zoom_ / kZoomStep, 1 / 16.0), Refit(); break;
    case SDLK_0:
    case SDLK_KP_0: zoom_ = 1.0, Refit(); break;
    case SDLK_r: orientation_ = (orientation_ + 1) % 4, Refit(); break;
    case SDLK_s: {
        const std::string path = movie_->path + "-frame" + std::to_string(player_->frame()) + ".png";
        std::vector<uint8_t> rgba;
        player_->ToRGBA(rgba);
        try {
            WritePng(path, player_->width(), player_->height(), rgba);
            std::fprintf(stderr, "zelview: wrote %s\n", path.c_str());
        } catch (const ToolError& e) {
            error_ = e.what();
        }
        break;
    }
    default: break;
    }
    UpdateTitle();
    return true;
}

int ViewerWindow::Run() {
    const uint64_t ticksPerMs = SDL_GetPerformanceFrequency() / 1000;
    secondStart_ = SDL_GetPerformanceCounter();
    nextFrame_ = secondStart_;
    bool dirty = true;
    for (;;) {
        SDL_Event event;
        while (SDL_PollEvent(&event)) {
            if (event.type == SDL_QUIT) return exitCode_;
            if (event.type == SDL_KEYDOWN && !HandleKey(event.key.keysym.sym)) return exitCode_;
            if (event.type == SDL_WINDOWEVENT && event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) Refit();
            if (event.type == SDL_DROPFILE) {
                Open(event.drop.file);
                SDL_free(event.drop.file);
            }
            dirty = true;
        }
        const bool atEnd = !player_ || player_->frame() >= movie_->frameCount;
        if (options_.frames > 0 && (atEnd || player_->frame() >= options_.frames)) {
            Present();
            if (!options_.screenshot.empty()) SaveScreenshot(options_.screenshot);
            return exitCode_;
        }
        const uint64_t now = SDL_GetPerformanceCounter();
        if (player_ && !paused_ && !atEnd) {
            if (options_.frames > 0) {
                Step(1, true); // a fixed number of frames: as fast as they come
                dirty = true;
            } else if (now >= nextFrame_) {
                const double period = FramePeriodMs(movie_->frameRate) * double(ticksPerMs);
                const int due = 1 + int(double(now - nextFrame_) / period);
                Step(std::min(due, movie_->frameCount - player_->frame()), true);
                nextFrame_ += uint64_t(due * period);
                dirty = true;
            }
        }
        if (dirty) {
            Present();
            dirty = false;
        }
        if (now - secondStart_ >= 1000 * ticksPerMs) {
            rate_ = drawnThisSecond_ * 1000.0 / double((now - secondStart_) / ticksPerMs);
            drawnThisSecond_ = 0;
            secondStart_ = now;
            UpdateTitle();
        }
        if (options_.frames == 0) {
            const bool waiting = !player_ || paused_ || atEnd;
            const uint64_t later = SDL_GetPerformanceCounter();
            const int ms = waiting ? 250 : later >= nextFrame_ ? 0 : int((nextFrame_ - later) / ticksPerMs);
            if (ms > 0) SDL_WaitEventTimeout(nullptr, ms);
        }
    }
}
