// Walks a movie's tag stream (and the timelines inside sprites) without the
// engine, which exposes no tag listing, to describe what a movie holds and what
// the engine will skip. Every read is bounded by the buffer and the tag.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "movie_file.h"

// What a tag code means to this tool.
struct TagKind {
    const char* name;        // the tag's usual name, null when unknown
    const char* definition;  // character type it defines, or null
    bool engineReads;        // handled by the engine's frame loop or its characters
    bool script, sound, bitmap, video;
};

TagKind DescribeTag(unsigned code);

// The tag's usual name, or "Tag<code>" for codes this tool does not know.
std::string TagName(unsigned code);

struct TagSummary {
    std::map<std::string, unsigned> tags;         // tag name -> count, sprites included
    std::map<std::string, unsigned> definitions;  // character type -> count
    std::map<std::string, unsigned> skipped;      // tags the engine passes over
    unsigned showFrames = 0;                      // ShowFrame tags of the main timeline
    bool hasScripts = false, hasSounds = false, hasBitmaps = false, hasVideo = false;
    bool hasBackground = false;
    uint8_t background[3] = {0, 0, 0};  // first SetBackgroundColor, red green blue
    bool endTag = false;                // main timeline closed by an End tag
    bool truncated = false;             // a tag runs past the end of the movie
    size_t truncatedAt = 0;             // offset of that tag
};

TagSummary ScanTags(const MovieFile& movie);
