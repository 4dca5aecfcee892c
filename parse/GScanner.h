// GScanner: reads bytes (little-endian) and bit fields (most significant bit
// first) from a range of the host's movie buffer. An overrun sets a sticky
// error flag and the read returns a fixed value; callers test the flag once
// after a record.
//
// The range check treats `end` as inclusive, so a read may touch the byte at
// `end` itself. Memory safety overrides that quirk: `limit` is one past the
// last byte of the host's buffer, and any byte at or beyond it reads as 0
// (the flag and the positions behave exactly as if the byte had been read).
#ifndef ZEL_PARSE_GSCANNER_H
#define ZEL_PARSE_GSCANNER_H

#include <cstdint>

#include "base/Memory.h"

class GScanner {
public:
    unsigned char* start;
    unsigned char* end;
    unsigned char* cur;
    uint32_t bitPos;
    int error;
    const unsigned char* limit;

    GScanner() { Deinit(); }
    // A copy begins at the other's next whole byte, which becomes its start.
    GScanner(const GScanner& other) {
        Deinit();
        cur = other.cur;
        if (other.bitPos != 0 && other.cur) ++cur;
        start = cur;
        end = other.end;
        limit = other.limit;
        error = 0;
    }
    GScanner& operator=(const GScanner&) = delete;

    void Deinit() {
        start = end = cur = nullptr;
        limit = nullptr;
        bitPos = 0;
        error = 1;
    }

    // Covers [buffer, buffer + length]; `bufferLimit` (default buffer +
    // length) bounds what is really read. Null buffer: 0, error stays set.
    int Init(const void* buffer, unsigned length, const void* bufferLimit = nullptr) {
        Deinit();
        if (!buffer) return 0;
        start = cur = static_cast<unsigned char*>(const_cast<void*>(buffer));
        end = start + length;
        limit = bufferLimit ? static_cast<const unsigned char*>(bufferLimit) : end;
        error = 0;
        return 1;
    }

    // True when the byte `ahead` bytes past `cur` lies inside the range (the
    // range's end is inclusive). Offsets, not pointers, so nothing is formed
    // outside the buffer before the check.
    bool Room(uintptr_t ahead) const {
        return start && end && cur && cur <= end && static_cast<uintptr_t>(end - cur) >= ahead;
    }
    // The byte `i` bytes past `cur`; 0 at or beyond the host buffer's end.
    unsigned At(uintptr_t i) const {
        return cur < limit && static_cast<uintptr_t>(limit - cur) > i ? cur[i] : 0u;
    }
    // One byte of the buffer; 0 at or beyond the host buffer's end.
    unsigned Byte(const unsigned char* p) const { return p < limit ? *p : 0u; }

    // Whole bytes left in the range (its inclusive end counted), 0 once
    // overrun: a count read here can describe at most this many entries of
    // one byte or more.
    unsigned Remaining() const {
        if (!cur || !end || cur > end || error) return 0;
        uintptr_t left = static_cast<uintptr_t>(end - cur) + 1 - (bitPos != 0 ? 1 : 0);
        return left > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<unsigned>(left);
    }

    int32_t GetPosition() {
        if (!start) {
            error = 1;
            return 0;
        }
        return static_cast<int32_t>(cur - start) + (bitPos != 0 ? 1 : 0);
    }

    unsigned ScanUI8() {
        DropBits();
        if (!Room(0)) {
            error = 1;
            return 0;
        }
        unsigned v = At(0);
        cur += 1;
        return v;
    }

    unsigned ScanUI16() {
        DropBits();
        if (!Room(1)) {
            error = 1;
            return 0;
        }
        unsigned v = At(0) | (At(1) << 8);
        cur += 2;
        return v;
    }

    uint32_t ScanUI32() {
        DropBits();
        if (!Room(3)) {
            error = 1;
            return 0xFFFFFFFFu;
        }
        uint32_t v = At(0) | (At(1) << 8) | (At(2) << 16) | (static_cast<uint32_t>(At(3)) << 24);
        cur += 4;
        return v;
    }

    // n bits (0..32) as an unsigned value; 0xFFFFFFFF and nothing consumed
    // when they run past the range.
    uint32_t ParseUI32(int n) {
        if (n <= 0) return 0;
        if (n > 32) n = 32;
        uint32_t total = bitPos + static_cast<uint32_t>(n);
        if (!Room((total - 1) / 8)) {
            error = 1;
            return 0xFFFFFFFFu;
        }
        uint64_t value = 0;
        while (total >= 8) {
            value = (value << 8) | At(0);
            ++cur;
            total -= 8;
        }
        if (total > 0) {
            value = (value << total) | (At(0) >> (8 - total));
        }
        bitPos = total;
        if (n == 32) return static_cast<uint32_t>(value);
        return static_cast<uint32_t>(value & ((uint64_t{1} << n) - 1));
    }

    // n bits sign-extended; a failed read gives -1.
    int32_t ParseSI32(int n) {
        uint32_t v = ParseUI32(n);
        if (n > 0 && n < 32 && (v & (uint32_t{1} << (n - 1)))) v |= ~((uint32_t{1} << n) - 1);
        return static_cast<int32_t>(v);
    }

    // Copies up to n bytes (fewer when the range ends first); -1 on failure.
    int ScanBlock(char* dst, unsigned n) {
        if (!dst || !Room(bitPos != 0 ? 1 : 0)) {
            error = 1;
            return -1;
        }
        DropBits();
        // Here the end is exclusive: the byte at `end` is not copied.
        uintptr_t left = cur <= end ? static_cast<uintptr_t>(end - cur) : 0;
        unsigned count = n < left ? n : static_cast<unsigned>(left);
        for (unsigned i = 0; i < count; ++i) dst[i] = static_cast<char>(At(i));
        cur += count;
        return static_cast<int>(count);
    }

    // Skips n bytes measured from `cur`; 0 (and no move) past the range.
    int Skip(unsigned n) {
        if (!cur) return -1;
        const uintptr_t partial = bitPos != 0 ? 1 : 0;
        bitPos = 0;
        // Measured from `cur`, not from the next whole byte.
        if (!Room(n)) {
            error = 1;
            return 0;
        }
        const uintptr_t avail = static_cast<uintptr_t>(end - cur);
        uintptr_t left = avail >= partial ? avail - partial : 0;
        unsigned count = n < left ? n : static_cast<unsigned>(left);
        cur += partial + count;
        return static_cast<int>(count);
    }

    int Align() {
        if (!cur) return 0;
        if (Room(0)) {
            DropBits();
            return 1;
        }
        if (bitPos == 0) return 1;
        error = 1;
        return 0;
    }

    // Bytes up to and including a zero byte (or to the range's end, then
    // without a terminator), copied to dst when given; 0 on failure.
    unsigned ScanString(unsigned char* dst) {
        Align();
        if (!Room(0)) {
            error = 1;
            return 0;
        }
        unsigned count = 0;
        for (;;) {
            unsigned b = At(count);
            if (dst) dst[count] = static_cast<unsigned char>(b);
            ++count;
            if (b == 0 || !Room(count)) break;
        }
        cur += count;
        return count;
    }

private:
    // A byte read drops the unread rest of a partly read byte.
    void DropBits() {
        if (bitPos != 0) {
            ++cur;
            bitPos = 0;
        }
    }
};

#endif
