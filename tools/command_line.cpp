// The shared command-line parsers.
#include "command_line.h"

#include "tool_error.h"

namespace {

int ParseHexByte(const std::string& s, size_t at) {
    int v = 0;
    for (size_t i = at; i < at + 2; ++i) {
        const char c = s[i];
        const int d = c >= '0' && c <= '9'   ? c - '0'
                      : c >= 'a' && c <= 'f' ? c - 'a' + 10
                      : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                             : -1;
        if (d < 0) return -1;
        v = v * 16 + d;
    }
    return v;
}

}  // namespace

const char kExitCodes[] =
    "Exit codes: 0 success, 1 internal error, 2 usage error (bad option, impossible size or "
    "frame range), 3 unreadable or invalid movie, 4 output could not be written.";

// "transparent", "RRGGBB" or "RRGGBBAA", with an optional leading '#'.
Background ParseBackground(const std::string& text) {
    Background bg;
    bg.fromMovie = false;
    if (text == "transparent") {
        bg.rgba[0] = bg.rgba[1] = bg.rgba[2] = bg.rgba[3] = 0;
        return bg;
    }
    const std::string hex = !text.empty() && text[0] == '#' ? text.substr(1) : text;
    if (hex.size() != 6 && hex.size() != 8) {
        throw ToolError(kExitUsage, "--background \"" + text + "\": use RRGGBB, RRGGBBAA or transparent");
    }
    for (size_t i = 0; i < hex.size(); i += 2) {
        const int v = ParseHexByte(hex, i);
        if (v < 0) throw ToolError(kExitUsage, "--background \"" + text + "\": not a hex colour");
        bg.rgba[i / 2] = uint8_t(v);
    }
    if (hex.size() == 6) bg.rgba[3] = 255;
    return bg;
}

// "A-B", "A-" (to the end) or "A".
void ParseFrameRange(const std::string& text, int& first, int& last) {
    const size_t dash = text.find('-');
    auto number = [&](const std::string& s) {
        if (s.empty() || s.size() > 6 || s.find_first_not_of("0123456789") != std::string::npos) {
            throw ToolError(kExitUsage, "--frames \"" + text + "\": use A-B, A- or A (frames from 1)");
        }
        return std::stoi(s);
    };
    first = number(text.substr(0, dash));
    last = dash == std::string::npos ? first : dash + 1 == text.size() ? 0 : number(text.substr(dash + 1));
    if (first < 1) throw ToolError(kExitUsage, "--frames \"" + text + "\": frames are numbered from 1");
}

void ParseSize(const std::string& text, int& width, int& height) {
    const size_t x = text.find('x');
    const bool ok = x != std::string::npos && x > 0 && x + 1 < text.size() && x <= 6 &&
                    text.size() - x - 1 <= 6 &&
                    text.find_first_not_of("0123456789x") == std::string::npos &&
                    text.find('x', x + 1) == std::string::npos;
    if (!ok) throw ToolError(kExitUsage, "--size \"" + text + "\": use WIDTHxHEIGHT, e.g. 640x480");
    width = std::stoi(text.substr(0, x));
    height = std::stoi(text.substr(x + 1));
}

