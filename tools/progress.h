// Progress reporting for long renders: a one-line bar redrawn on stderr when
// it is a terminal, and the closing summary line (frames, time, frame rate).
#pragma once

#include <chrono>
#include <cstdio>

class Progress {
public:
    // The bar shows only when enabled and stderr is a terminal.
    Progress(int total, bool enabled);
    ~Progress();

    void Update(int done);
    // Clears the bar and prints the summary line on out (unless null).
    void Finish(int frames, FILE* out);

private:
    int total_;
    bool bar_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point start_;
    std::chrono::steady_clock::time_point lastDraw_;
};
