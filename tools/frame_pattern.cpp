// Frame pattern parsing: "%%" stands for a percent sign, "%[0][width]d" for
// the frame number; the width is capped so a pattern cannot ask for huge names.
#include "frame_pattern.h"

#include <cctype>

#include "tool_error.h"

namespace {

constexpr int kMaxWidth = 16;

[[noreturn]] void Bad(const std::string& pattern, const std::string& why) {
    throw ToolError(kExitUsage, "output pattern \"" + pattern + "\": " + why);
}

}  // namespace

FramePattern::FramePattern(const std::string& pattern) {
    std::string* part = &prefix_;
    for (size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '%') {
            *part += pattern[i];
            continue;
        }
        if (i + 1 < pattern.size() && pattern[i + 1] == '%') {
            *part += '%';
            ++i;
            continue;
        }
        if (numbered_) Bad(pattern, "more than one frame number conversion");
        size_t j = i + 1;
        if (j < pattern.size() && pattern[j] == '0') {
            zeroPad_ = true;
            ++j;
        }
        while (j < pattern.size() && std::isdigit(static_cast<unsigned char>(pattern[j]))) {
            width_ = width_ * 10 + (pattern[j] - '0');
            if (width_ > kMaxWidth) Bad(pattern, "field width larger than 16");
            ++j;
        }
        if (j >= pattern.size() || pattern[j] != 'd') Bad(pattern, "only %d, %Nd or %0Nd is allowed");
        numbered_ = true;
        part = &suffix_;
        i = j;
    }
}

std::string FramePattern::Format(int frame) const {
    if (!numbered_) return prefix_;
    std::string digits = std::to_string(frame);
    if (int(digits.size()) < width_) {
        digits.insert(0, size_t(width_) - digits.size(), zeroPad_ ? '0' : ' ');
    }
    return prefix_ + digits + suffix_;
}
