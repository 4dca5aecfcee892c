// GMatrix: a 2x3 affine matrix in doubles, row-major (a b tx / c d ty), laid
// out so that it can be handed to the rasterizer as double[2][3]. Products
// read left to right: (a * b) maps by a first, then by b.
#ifndef ZEL_MATH_GMATRIX_H
#define ZEL_MATH_GMATRIX_H

#include "zelengine.h"

class GMatrix {
public:
    double m[2][3];

    GMatrix() : m{{1, 0, 0}, {0, 1, 0}} {}
    GMatrix(const GMatrix& other);
    GMatrix& operator=(const GMatrix& other);

    GMatrix operator*(const GMatrix& b) const;
    GMatrix operator*(double s) const;
    // Exact comparison with the identity (spelled so on purpose).
    int IsIdentify() const;
    int Reverse();
    static GMatrix Combine(const GMatrix* a, const GMatrix* b);
    // Bounding box of the rectangle's four corners mapped through the matrix;
    // the identity returns the rectangle untouched, even when inverted.
    _GRECT Transform(const _GRECT& r) const;
};

// Inverts in place the 2x2 linear part of six row-major values; the
// translations stay as they are. 1, or 0 when singular.
int CalRMatrix(double* m);

#endif
