// The progress bar redraws at most ten times a second so that rendering small
// frames is not slowed down by terminal output.
#include "progress.h"

#include <unistd.h>

namespace {

constexpr int kBarWidth = 30;

double Seconds(std::chrono::steady_clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

}  // namespace

Progress::Progress(int total, bool enabled)
    : total_(total > 0 ? total : 1),
      bar_(enabled && ::isatty(STDERR_FILENO)),
      start_(std::chrono::steady_clock::now()),
      lastDraw_(start_) {}

Progress::~Progress() {
    if (drawn_) std::fputs("\r\033[K", stderr);
}

void Progress::Update(int done) {
    if (!bar_) return;
    const auto now = std::chrono::steady_clock::now();
    if (done < total_ && drawn_ && Seconds(now - lastDraw_) < 0.1) return;
    lastDraw_ = now;
    drawn_ = true;
    const int filled = int(long(done) * kBarWidth / total_);
    char bar[kBarWidth + 1];
    for (int i = 0; i < kBarWidth; ++i) bar[i] = i < filled ? '#' : '.';
    bar[kBarWidth] = '\0';
    std::fprintf(stderr, "\r[%s] %d/%d frames", bar, done, total_);
    std::fflush(stderr);
}

void Progress::Finish(int frames, FILE* out) {
    if (drawn_) {
        std::fputs("\r\033[K", stderr);
        drawn_ = false;
    }
    if (!out) return;
    const double seconds = Seconds(std::chrono::steady_clock::now() - start_);
    std::fprintf(out, "rendered %d frame%s in %.3f s (%.1f frames/s)\n", frames,
                 frames == 1 ? "" : "s", seconds, seconds > 0 ? frames / seconds : 0.0);
}
