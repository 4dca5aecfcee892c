// Helpers shared by the record-parser tests: parsers over fixture bytes held
// in heap blocks of exactly their size, so that ASan sees any overrun.
#ifndef ZEL_TESTS_PARSE_PARSERTESTUTIL_H
#define ZEL_TESTS_PARSE_PARSERTESTUTIL_H

#include <cstring>
#include <memory>

#include "fixture/SwfBuilder.h"
#include "parse/GParser.h"

namespace parsetest {

// A heap copy of the first n bytes of `bytes` (all of them by default).
inline std::unique_ptr<unsigned char[]> Exact(const swf::Bytes& bytes, size_t n = SIZE_MAX) {
    if (n > bytes.size()) n = bytes.size();
    std::unique_ptr<unsigned char[]> p(new unsigned char[n]);
    if (n) std::memcpy(p.get(), bytes.data(), n);
    return p;
}

// The code left on the stack, or 0 when it is empty.
inline unsigned Popped(GError& errors) {
    unsigned code = 0;
    return errors.PopError(code) ? code : 0;
}

// Releases what a placement reader left in the record.
inline void Release(GCTRL_INFO& info) {
    delete info.matrix;
    delete info.cxform;
    GParser::ReleaseReadString(&info.name);
    info.matrix = nullptr;
    info.cxform = nullptr;
}

}  // namespace parsetest

#endif
