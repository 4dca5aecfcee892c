// `zelplay info`: what a movie holds, as text for people or JSON for scripts.
#pragma once

#include <cstdio>

#include "movie_file.h"
#include "tag_stream.h"

void PrintInfo(const MovieFile& movie, const TagSummary& tags, bool json, FILE* out);
