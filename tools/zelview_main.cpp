// zelview's command line: a window that plays a movie (or waits for one to
// be dropped), and a scripted mode that plays a number of frames and writes
// what the window shows. Exit codes are zelplay's.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <new>
#include <string>

#include "command_line.h"
#include "output_file.h"
#include "tool_error.h"
#include "viewer_window.h"

int main(int argc, char** argv) {
    CLI::App app{"zelview: plays SWF vector movies in a window with zelEngine.\n"
                 "Keys: space pause/play, right arrow next frame (paused), Home restart, + - 0 zoom in, out, fit, "
                 "r turn a quarter, f fullscreen, s save the frame as PNG next to the movie, q or Esc quit."};
    ViewerOptions options;
    std::string size, background;
    app.add_option("MOVIE", options.movie, "SWF movie (FWS or CWS); or drop one onto the window");
    app.add_option("--size", size, "Window size WIDTHxHEIGHT (default: the movie's size)");
    app.add_option("--background", background, "RRGGBB (default: the movie's colour)");
    CLI::Option* frames =
        app.add_option("--frames", options.frames, "Play this many frames, then stop (for scripts and tests)")
            ->check(CLI::PositiveNumber);
    app.add_option("--screenshot", options.screenshot, "With --frames: write what the window shows as PNG, then quit")
        ->needs(frames);
    app.footer(kExitCodes);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? kExitOk : kExitUsage;
    }
    try {
        if (!size.empty()) ParseSize(size, options.width, options.height);
        if (!background.empty()) options.background = ParseBackground(background);
        InstallOutputCleanupHandlers();
        ViewerWindow window(options);
        return window.Run();
    } catch (const ToolError& e) {
        std::fprintf(stderr, "zelview: %s\n", e.what());
        return e.code();
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "zelview: out of memory\n");
        return kExitInternal;
    }
}
