// Video through the ffmpeg program: raw RGBA frames go down a pipe at the
// movie's exact frame rate, and ffmpeg encodes them into a temporary file
// next to the target, renamed into place once ffmpeg has finished well.
// MP4 and MKV get H.264 in yuv420p (sizes made even with a row or column of
// background), WebM gets VP9, with its alpha channel kept when the
// background is transparent.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "animation.h"
#include "output_file.h"
#include "tool_error.h"

extern char** environ;

namespace {

constexpr const char* kInstallHint =
    "ffmpeg is needed to write video (.mp4, .webm, .mkv) and was not found; install it with: apt-get install ffmpeg";

// The last non-empty line of a file (ffmpeg's error message).
std::string LastLine(const std::string& path) {
    std::ifstream in(path);
    std::string line, last;
    while (std::getline(in, line))
        if (!line.empty()) last = line;
    return last;
}

class FfmpegVideo : public AnimationWriter {
public:
    FfmpegVideo(const std::string& path, const std::string& container, int width, int height, uint16_t frameRate,
                const AnimationOptions& options)
        : path_(path), frameBytes_(size_t(width) * size_t(height) * 4), out_(path, true) {
        out_.CloseStream();
        char log[] = "/tmp/zelplay_ffmpeg_XXXXXX";
        const int logFd = ::mkstemp(log);
        if (logFd < 0) throw ToolError(kExitOutput, path + ": cannot create ffmpeg's log: " + std::strerror(errno));
        log_ = log;
        // A broken pipe (ffmpeg gone) must come back as an error of write().
        std::signal(SIGPIPE, SIG_IGN);

        const bool vp9 = container == "webm";
        const bool alpha = vp9 && options.transparent;
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        const std::string rate = std::to_string(frameRate ? frameRate : 10 * 256) + "/256";
        const std::string crf = std::to_string(options.crf >= 0 ? options.crf : vp9 ? 32 : 23);
        std::vector<std::string> args = {"ffmpeg", "-hide_banner", "-loglevel", "error", "-y", "-f", "rawvideo",
                                         "-pix_fmt", "rgba", "-s", size, "-framerate", rate, "-i", "-"};
        if (vp9) {
            args.insert(args.end(), {"-c:v", "libvpx-vp9", "-pix_fmt", alpha ? "yuva420p" : "yuv420p", "-crf", crf,
                                     "-b:v", "0", "-row-mt", "1"});
        } else {
            // H.264 in yuv420p needs even sizes: an odd side gets one more
            // row or column of the background colour.
            char pad[64];
            std::snprintf(pad, sizeof pad, "pad=ceil(iw/2)*2:ceil(ih/2)*2:color=0x%02X%02X%02X", options.background[0],
                          options.background[1], options.background[2]);
            args.insert(args.end(), {"-vf", pad, "-c:v", "libx264", "-pix_fmt", "yuv420p", "-crf", crf});
            if (container == "mp4") args.insert(args.end(), {"-movflags", "+faststart"});
        }
        args.push_back(out_.temp());
        Spawn(args, logFd);
        ::close(logFd);
    }

    ~FfmpegVideo() override {
        if (pipe_ >= 0) ::close(pipe_);
        if (child_ > 0) {
            ::kill(child_, SIGKILL);
            ::waitpid(child_, nullptr, 0);
            SetPendingChild(0);
        }
        if (!log_.empty()) ::unlink(log_.c_str());
    }

    void AddFrame(const std::vector<uint8_t>& rgba, int64_t) override {
        const uint8_t* p = rgba.data();
        size_t left = frameBytes_;
        while (left > 0) {
            const ssize_t n = ::write(pipe_, p, left);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) Failed();
            p += n;
            left -= size_t(n);
        }
    }

    void Finish(int64_t) override {
        ::close(pipe_);
        pipe_ = -1;
        if (Wait() != 0) Failed();
        out_.Commit();
    }

private:
    void Spawn(const std::vector<std::string>& args, int logFd) {
        int fds[2];
        if (::pipe(fds) != 0) throw ToolError(kExitInternal, std::string("pipe: ") + std::strerror(errno));
        ::fcntl(fds[1], F_SETFD, FD_CLOEXEC);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[0], 0);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, logFd, 2);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        std::vector<char*> argv;
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        const int error = posix_spawnp(&child_, "ffmpeg", &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        ::close(fds[0]);
        if (error != 0) {
            child_ = 0;
            ::close(fds[1]);
            if (error == ENOENT) throw ToolError(kExitUsage, kInstallHint);
            throw ToolError(kExitInternal, std::string("cannot start ffmpeg: ") + std::strerror(error));
        }
        SetPendingChild(child_);
        pipe_ = fds[1];
    }

    // ffmpeg's exit status; 127 when it could not be run.
    int Wait() {
        int status = 0;
        while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
        }
        child_ = 0;
        SetPendingChild(0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    [[noreturn]] void Failed() {
        if (pipe_ >= 0) ::close(pipe_);
        pipe_ = -1;
        const int status = child_ > 0 ? Wait() : 0;
        std::string cause = LastLine(log_);
        if (status == 127 && cause.empty()) throw ToolError(kExitUsage, kInstallHint);
        if (cause.empty()) cause = "exit status " + std::to_string(status);
        throw ToolError(kExitOutput, path_ + ": ffmpeg failed: " + cause);
    }

    std::string path_;
    size_t frameBytes_;
    OutputFile out_;
    std::string log_;
    pid_t child_ = 0;
    int pipe_ = -1;
};

}  // namespace

std::unique_ptr<AnimationWriter> OpenVideo(const std::string& path, const std::string& container, int width,
                                           int height, uint16_t frameRate, const AnimationOptions& options) {
    return std::make_unique<FfmpegVideo>(path, container, width, height, frameRate, options);
}
