// Reads a movie file into memory as the engine wants it: an uncompressed
// ("FWS") buffer. Compressed ("CWS") files are inflated here, with the header's
// declared size checked and capped so a hostile file cannot exhaust memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct TwipRect {
    int32_t left = 0, top = 0, right = 0, bottom = 0;
};

struct MovieFile {
    std::string path;
    std::vector<uint8_t> data;  // the whole movie, "FWS" signature, ready for zelEngineOpen
    bool compressed = false;    // the file on disk was "CWS"
    uint8_t version = 0;
    uint32_t declaredLength = 0;  // the header's file length field
    uint64_t fileSize = 0;        // bytes on disk
    TwipRect frame;
    uint16_t frameRate = 0;  // 8.8 fixed point
    uint16_t frameCount = 0;
    size_t firstTag = 0;  // offset of the first tag after the header
};

// Largest movie accepted once inflated; bigger declared sizes are refused
// before any memory is reserved.
constexpr uint32_t kMaxMovieBytes = 256u * 1024u * 1024u;

// Loads and checks path. Throws ToolError (kExitInput) naming the file and
// the cause when it cannot be read or is not a readable movie.
MovieFile LoadMovie(const std::string& path);

// Parses the header of an uncompressed buffer into movie (signature, version,
// lengths, frame, rate, count). Returns an empty string on success, else the
// reason the header is unusable.
std::string ParseMovieHeader(MovieFile& movie);
