// Matrix products, rectangle transform and the in-place linear inversion.
#include "math/GMatrix.h"

#include <cmath>

#include "base/Memory.h"

GMatrix::GMatrix(const GMatrix& other) { tovMemCpy(m, other.m, sizeof(m)); }

GMatrix& GMatrix::operator=(const GMatrix& other) {
    tovMemCpy(m, other.m, sizeof(m));
    return *this;
}

int GMatrix::IsIdentify() const {
    return m[0][0] == 1.0 && m[0][1] == 0.0 && m[0][2] == 0.0 && m[1][0] == 0.0 &&
           m[1][1] == 1.0 && m[1][2] == 0.0;
}

GMatrix GMatrix::operator*(const GMatrix& b) const {
    if (IsIdentify()) return b;
    if (b.IsIdentify()) return *this;
    const double(*A)[3] = m;
    const double(*B)[3] = b.m;
    GMatrix r;
    r.m[0][0] = A[0][0] * B[0][0] + A[1][0] * B[0][1];
    r.m[0][1] = A[0][1] * B[0][0] + A[1][1] * B[0][1];
    r.m[0][2] = A[0][2] * B[0][0] + A[1][2] * B[0][1] + B[0][2];
    r.m[1][0] = A[0][0] * B[1][0] + A[1][0] * B[1][1];
    r.m[1][1] = A[0][1] * B[1][0] + A[1][1] * B[1][1];
    r.m[1][2] = A[0][2] * B[1][0] + A[1][2] * B[1][1] + B[1][2];
    return r;
}

GMatrix GMatrix::operator*(double s) const {
    GMatrix r(*this);
    if (s == 1.0) return r;
    for (auto& row : r.m)
        for (double& v : row) v *= s;
    return r;
}

int GMatrix::Reverse() { return CalRMatrix(&m[0][0]); }

GMatrix GMatrix::Combine(const GMatrix* a, const GMatrix* b) {
    if (!a && !b) return GMatrix();
    if (!a) return *b;
    if (!b) return *a;
    return *a * *b;
}

_GRECT GMatrix::Transform(const _GRECT& r) const {
    if (IsIdentify()) return r;
    const double xs[4] = {r.left, r.left, r.right, r.right};
    const double ys[4] = {r.top, r.bottom, r.top, r.bottom};
    _GRECT out;
    for (int i = 0; i < 4; ++i) {
        double x = m[0][0] * xs[i] + m[0][1] * ys[i] + m[0][2];
        double y = m[1][0] * xs[i] + m[1][1] * ys[i] + m[1][2];
        if (i == 0 || x < out.left) out.left = x;
        if (i == 0 || x > out.right) out.right = x;
        if (i == 0 || y < out.top) out.top = y;
        if (i == 0 || y > out.bottom) out.bottom = y;
    }
    return out;
}

// Gauss-Jordan with column pivoting on the 2x2 linear part.
int CalRMatrix(double* m) {
    double tx = m[2];
    double a[2][2] = {{m[0], m[1]}, {m[3], m[4]}};
    int swaps[2] = {0, 1};
    for (int k = 0; k < 2; ++k) {
        int col = k;
        double best = std::fabs(a[k][k]);
        for (int j = k + 1; j < 2; ++j) {
            if (std::fabs(a[k][j]) > best) {
                best = std::fabs(a[k][j]);
                col = j;
            }
        }
        if (best == 0.0) return 0;
        swaps[k] = col;
        if (col != k) {
            for (auto& row : a) {
                double t = row[k];
                row[k] = row[col];
                row[col] = t;
            }
        }
        a[k][k] = 1.0 / a[k][k];
        for (int j = 0; j < 2; ++j)
            if (j != k) a[k][j] *= a[k][k];
        for (int i = 0; i < 2; ++i) {
            if (i == k) continue;
            for (int j = 0; j < 2; ++j)
                if (j != k) a[i][j] -= a[i][k] * a[k][j];
        }
        for (int i = 0; i < 2; ++i)
            if (i != k) a[i][k] = -a[i][k] * a[k][k];
    }
    for (int k = 1; k >= 0; --k) {
        if (swaps[k] != k) {
            for (int j = 0; j < 2; ++j) {
                double t = a[k][j];
                a[k][j] = a[swaps[k]][j];
                a[swaps[k]][j] = t;
            }
        }
    }
    m[0] = a[0][0];
    m[1] = a[0][1];
    m[3] = a[1][0];
    m[4] = a[1][1];
    m[2] = tx;
    return 1;
}
