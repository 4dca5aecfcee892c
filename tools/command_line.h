// Command-line pieces the host programs share: the exit-code help text and
// the parsers of sizes, backgrounds and frame ranges, each throwing
// ToolError (kExitUsage) with a message that names the bad value.
#pragma once

#include <string>

#include "movie_renderer.h"

extern const char kExitCodes[];

// "transparent", "RRGGBB" or "RRGGBBAA", with an optional leading '#'.
Background ParseBackground(const std::string& text);
// "A-B", "A-" (to the end: last 0) or "A".
void ParseFrameRange(const std::string& text, int& first, int& last);
// "WIDTHxHEIGHT".
void ParseSize(const std::string& text, int& width, int& height);
