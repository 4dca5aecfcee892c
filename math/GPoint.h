// Points: _GPOINT in doubles (twips until scaled) and _TWIPPOINT in whole
// twips, the running pen position while shape edges are read.
#ifndef ZEL_MATH_GPOINT_H
#define ZEL_MATH_GPOINT_H

#include <cstdint>

struct _GPOINT {
    double x, y;
};

struct _TWIPPOINT {
    int32_t x, y;
};

#endif
