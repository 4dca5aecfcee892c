// zelplay's command line: the info, render and thumb subcommands parsed with
// CLI11, and the mapping of every failure to one stderr line and a documented
// exit code.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <new>
#include <string>

#include "command_line.h"
#include "commands.h"
#include "output_file.h"
#include "tool_error.h"


int main(int argc, char** argv) {
    CLI::App app{"zelplay: inspects and renders SWF vector movies with zelEngine."};
    app.set_version_flag("--version", "zelplay " ZELPLAY_VERSION);
    app.require_subcommand(1);
    app.footer(kExitCodes);

    InfoOptions info;
    CLI::App* infoCmd = app.add_subcommand("info", "Describe a movie: header, tags, definitions, "
                                                   "what the engine skips or does not play.");
    infoCmd->add_option("MOVIE", info.movie, "SWF movie (FWS or CWS)")->required();
    infoCmd->add_flag("--json", info.json, "Print one JSON object instead of text");
    infoCmd->footer(kExitCodes);

    RenderOptions render;
    std::string frames, size, background, format;
    int frame = 0;
    unsigned orientation = 0;
    double scale = 1.0;
    CLI::App* renderCmd = app.add_subcommand(
        "render", "Render frames to PNG files, or the whole movie to an animated WebP or a video.");
    renderCmd->add_option("MOVIE", render.movie, "SWF movie (FWS or CWS)")->required();
    renderCmd->add_option("-o,--output", render.output,
                          "Output: a pattern such as out/frame_%04d.png (- writes one PNG to stdout), "
                          "or one animated movie.webp, or a video movie.mp4, movie.webm or movie.mkv "
                          "(through the ffmpeg program)")
        ->required();
    CLI::Option* framesOpt =
        renderCmd->add_option("--frames", frames, "Frame range A-B, A- or A (frames from 1)");
    renderCmd->add_option("--frame", frame, "One frame (from 1)")->excludes(framesOpt);
    CLI::Option* sizeOpt = renderCmd->add_option("--size", size, "Image size WIDTHxHEIGHT; the movie "
                                                                 "is fitted and centred");
    renderCmd->add_option("--scale", scale, "Scale factor of the movie's own size (default 1)")
        ->excludes(sizeOpt);
    renderCmd->add_option("--orientation", orientation, "Quarter turns, counter-clockwise on screen: 0..3")
        ->check(CLI::Range(0u, 3u));
    renderCmd->add_option("--background", background,
                          "RRGGBB, RRGGBBAA or transparent (default: the movie's colour)");
    renderCmd->add_option("--format", format,
                          "Engine pixel format: argb32 (default), rgb24, bgr24, bgr24b, rgb565, "
                          "rgb555, rgb444, bgr565, or its numeric code");
    renderCmd->add_flag("--full", render.settings.full,
                        "Repaint every frame instead of only the update boxes");
    renderCmd->add_flag("-q,--quiet", render.quiet, "No progress bar and no summary line");
    renderCmd->add_option("--quality", render.animation.quality,
                          "WebP: lossy at quality 0..100 (default: lossless)")
        ->check(CLI::Range(0, 100));
    renderCmd->add_option("--loop", render.animation.loop, "WebP: times the animation plays, 0 forever (default)")
        ->check(CLI::Range(0, 65535));
    renderCmd->add_option("--crf", render.animation.crf,
                          "Video: constant rate factor, lower is better (default 23 for H.264, 32 for VP9)")
        ->check(CLI::Range(0, 63));
    renderCmd->add_option("--repeat", render.animation.repeat,
                          "WebP and video: play the timeline this many times (default 1)")
        ->check(CLI::Range(1, 1000));
    renderCmd->footer(kExitCodes);

    ThumbOptions thumb;
    std::string thumbBackground;
    CLI::App* thumbCmd = app.add_subcommand("thumb", "Write one representative frame fitted into "
                                                     "SIZE x SIZE pixels.");
    thumbCmd->add_option("MOVIE", thumb.movie, "SWF movie (FWS or CWS)")->required();
    thumbCmd->add_option("-o,--output", thumb.output, "Output PNG (- for stdout)")->required();
    thumbCmd->add_option("--size", thumb.size, "Largest side in pixels (default 128)");
    thumbCmd->add_option("--background", thumbBackground, "RRGGBB, RRGGBBAA or transparent");
    thumbCmd->footer(kExitCodes);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "zelplay: %s (see zelplay --help)\n", e.what());
        return kExitUsage;
    }

    try {
        InstallOutputCleanupHandlers();
        if (infoCmd->parsed()) {
            RunInfo(info);
        } else if (renderCmd->parsed()) {
            if (!frames.empty()) ParseFrameRange(frames, render.firstFrame, render.lastFrame);
            if (frame != 0 || renderCmd->count("--frame")) {
                if (frame < 1) throw ToolError(kExitUsage, "--frame: frames are numbered from 1");
                render.firstFrame = render.lastFrame = frame;
            }
            if (!size.empty()) ParseSize(size, render.settings.view.width, render.settings.view.height);
            if (!(scale > 0 && scale <= 1000)) throw ToolError(kExitUsage, "--scale must be in (0, 1000]");
            render.settings.view.scale = scale;
            render.settings.view.orientation = orientation;
            if (!background.empty()) render.settings.background = ParseBackground(background);
            if (!format.empty()) {
                render.settings.format = FindPixelFormat(format);
                if (!render.settings.format) {
                    throw ToolError(kExitUsage, "--format \"" + format + "\": use one of " +
                                                    PixelFormatNames());
                }
            }
            RunRender(render);
        } else if (thumbCmd->parsed()) {
            if (!thumbBackground.empty()) thumb.background = ParseBackground(thumbBackground);
            RunThumb(thumb);
        }
    } catch (const ToolError& e) {
        std::fprintf(stderr, "zelplay: %s\n", e.what());
        return e.code();
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "zelplay: out of memory\n");
        return kExitInternal;
    }
    return kExitOk;
}
