// Output names for rendered frames: a pattern with one printf-style integer
// conversion (%d, %4d, %04d) that receives the frame number. The pattern is
// parsed here rather than handed to printf, so no pattern can misbehave.
#pragma once

#include <string>

class FramePattern {
public:
    // Throws ToolError (kExitUsage) for a pattern with more than one
    // conversion, or any conversion other than an integer one.
    explicit FramePattern(const std::string& pattern);

    bool numbered() const { return numbered_; }
    std::string Format(int frame) const;

private:
    std::string prefix_, suffix_;
    bool numbered_ = false;
    bool zeroPad_ = false;
    int width_ = 0;
};
