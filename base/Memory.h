// The engine's raw-memory wrappers: every block the engine allocates goes
// through these six functions, so a build can count or redirect them in one
// place. They are the engine's own, not part of the tov rasterizer.
#ifndef ZEL_BASE_MEMORY_H
#define ZEL_BASE_MEMORY_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

inline void* tovMalloc(size_t size) { return std::malloc(size); }
inline void* tovReAlloc(void* p, size_t size) { return std::realloc(p, size); }
inline void tovFree(void* p) { std::free(p); }
inline void* tovMemSet(void* p, int value, size_t n) { return std::memset(p, value, n); }
inline void* tovMemCpy(void* dst, const void* src, size_t n) { return std::memcpy(dst, src, n); }
inline void* tovMemMove(void* dst, const void* src, size_t n) { return std::memmove(dst, src, n); }

#endif
