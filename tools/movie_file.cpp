// Loading a movie file: reading it whole, inflating CWS bodies with zlib and
// parsing the fixed header (signature, version, length, frame RECT, rate,
// count). Every read is bounded by the buffer; a short header is an error.
#include "movie_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cstring>

#include "tool_error.h"

namespace {

constexpr size_t kHeaderFixedBytes = 8;  // signature, version, file length

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    throw ToolError(kExitInput, path + ": " + cause);
}

uint32_t ReadU32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

// Reads the bit-packed RECT at offset; returns false when it runs past size.
bool ReadRect(const std::vector<uint8_t>& d, size_t offset, TwipRect& rect, size_t& next) {
    if (offset >= d.size()) return false;
    const unsigned nbits = d[offset] >> 3;
    const size_t totalBits = 5 + 4 * size_t(nbits);
    const size_t bytes = (totalBits + 7) / 8;
    if (d.size() - offset < bytes) return false;
    size_t bit = 5;
    auto field = [&]() {
        uint32_t v = 0;
        for (unsigned i = 0; i < nbits; ++i, ++bit) {
            v = (v << 1) | ((d[offset + bit / 8] >> (7 - bit % 8)) & 1u);
        }
        // Sign-extend an nbits-wide value; 0 bits give 0.
        if (nbits > 0 && nbits < 32 && (v >> (nbits - 1)) & 1u) v |= ~0u << nbits;
        return int32_t(v);
    };
    rect.left = field();
    rect.right = field();
    rect.top = field();
    rect.bottom = field();
    next = offset + bytes;
    return true;
}

std::vector<uint8_t> ReadWholeFile(const std::string& path, uint64_t& size) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) Fail(path, std::strerror(errno));
    struct FdCloser {
        int fd;
        ~FdCloser() { ::close(fd); }
    } closer{fd};
    struct stat st{};
    if (::fstat(fd, &st) != 0) Fail(path, std::strerror(errno));
    if (!S_ISREG(st.st_mode)) Fail(path, "not a regular file");
    size = uint64_t(st.st_size);
    // A CWS file can hold at most what it inflates to, so the same cap applies.
    if (size > kMaxMovieBytes) Fail(path, "file is larger than the 256 MiB limit");
    std::vector<uint8_t> bytes(static_cast<size_t>(size));
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) Fail(path, std::string("read error: ") + std::strerror(errno));
        if (n == 0) break;
        done += size_t(n);
    }
    bytes.resize(done);
    return bytes;
}

// Inflates the body after the 8-byte header into exactly declared - 8 bytes.
std::vector<uint8_t> Inflate(const std::string& path, const std::vector<uint8_t>& file,
                             uint32_t declared) {
    if (declared < kHeaderFixedBytes) Fail(path, "header declares an impossible length");
    if (declared > kMaxMovieBytes) {
        Fail(path, "header declares " + std::to_string(declared) +
                       " bytes once inflated, more than the 256 MiB limit");
    }
    std::vector<uint8_t> out(declared);
    std::memcpy(out.data(), file.data(), kHeaderFixedBytes);
    out[0] = 'F';

    z_stream zs{};
    if (inflateInit(&zs) != Z_OK) throw ToolError(kExitInternal, path + ": zlib initialisation failed");
    zs.next_in = const_cast<Bytef*>(file.data() + kHeaderFixedBytes);
    zs.avail_in = uInt(file.size() - kHeaderFixedBytes);
    zs.next_out = out.data() + kHeaderFixedBytes;
    zs.avail_out = uInt(declared - kHeaderFixedBytes);
    int rc = inflate(&zs, Z_FINISH);
    const uLong produced = zs.total_out;
    // When the output is full but the stream goes on, probe for one more byte
    // to tell "exactly the declared size" from "more than declared".
    bool overflow = false;
    if (rc == Z_BUF_ERROR && zs.avail_out == 0) {
        uint8_t probe;
        zs.next_out = &probe;
        zs.avail_out = 1;
        rc = inflate(&zs, Z_FINISH);
        overflow = zs.avail_out == 0;
    }
    inflateEnd(&zs);
    if (overflow) Fail(path, "compressed data inflates to more than the header's declared length");
    if (rc == Z_DATA_ERROR || rc == Z_NEED_DICT) Fail(path, "corrupt compressed data");
    if (rc != Z_STREAM_END) {
        Fail(path, "compressed data ends early (" + std::to_string(produced + kHeaderFixedBytes) +
                       " of " + std::to_string(declared) + " bytes)");
    }
    if (produced + kHeaderFixedBytes != declared) {
        Fail(path, "compressed data inflates to " + std::to_string(produced + kHeaderFixedBytes) +
                       " bytes, the header declares " + std::to_string(declared));
    }
    return out;
}

}  // namespace

std::string ParseMovieHeader(MovieFile& movie) {
    const std::vector<uint8_t>& d = movie.data;
    if (d.size() < 3 || d[1] != 'W' || d[2] != 'S' || (d[0] != 'F' && d[0] != 'C')) {
        return "not a SWF movie (no FWS or CWS signature)";
    }
    if (d.size() < kHeaderFixedBytes) return "header is cut short";
    movie.version = d[3];
    movie.declaredLength = ReadU32(&d[4]);
    size_t next = 0;
    if (!ReadRect(d, kHeaderFixedBytes, movie.frame, next) || d.size() - next < 4) {
        return "header is cut short";
    }
    movie.frameRate = uint16_t(d[next] | d[next + 1] << 8);
    movie.frameCount = uint16_t(d[next + 2] | d[next + 3] << 8);
    movie.firstTag = next + 4;
    return "";
}

MovieFile LoadMovie(const std::string& path) {
    MovieFile movie;
    movie.path = path;
    std::vector<uint8_t> file = ReadWholeFile(path, movie.fileSize);
    if (file.size() >= 3 && file[0] == 'C' && file[1] == 'W' && file[2] == 'S') {
        if (file.size() < kHeaderFixedBytes) Fail(path, "header is cut short");
        movie.compressed = true;
        movie.data = Inflate(path, file, ReadU32(&file[4]));
    } else {
        movie.data = std::move(file);
    }
    const std::string problem = ParseMovieHeader(movie);
    if (!problem.empty()) Fail(path, problem);
    if (!movie.compressed && movie.declaredLength > movie.data.size()) {
        Fail(path, "truncated: header declares " + std::to_string(movie.declaredLength) +
                       " bytes, the file has " + std::to_string(movie.data.size()));
    }
    return movie;
}
