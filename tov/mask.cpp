// mask.cpp: drawing groups and clip masks. A kind-2 group collects the
// coverage of what is drawn inside it into an 8-bit mask over the clip box it
// started with; only the part drawn is ever written (each row keeps the
// extent of its values, everything else counts as zero), so a mask costs what
// was drawn into it, not its box. When the group ends the mask is multiplied
// by the open one over that part only, and drawing is then cut to its bounds
// and multiplied by it until tovDestroyMask; a mask that is one opaque
// rectangle only cuts. Masks are pooled.
#include "tov/internal.h"

#include <new>

using namespace tov;

namespace {

constexpr Box kUnlimited{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};

// A mask over the box from the pool with every row empty, or null when too
// many masks are in use or memory runs out. Its values are not cleared:
// rows are only read inside their extents.
Mask *takeMask(tovCanvas *c, const Box &clip)
{
    if (c->maskAll.size() - c->maskPool.size() >= size_t(kMaxMasks))
        return nullptr;
    Mask *m;
    if (!c->maskPool.empty()) {
        m = c->maskPool.back();
        c->maskPool.pop();
    } else {
        m = new (std::nothrow) Mask();
        if (!m)
            return nullptr;
        if (!c->maskAll.push(m) || !c->maskPool.reserve(c->maskAll.size())) {
            if (!c->maskAll.empty() && c->maskAll.back() == m)
                c->maskAll.pop();
            delete m;
            return nullptr;
        }
    }
    Box box = clip.empty() ? Box{0, 0, 0, 0} : clip;
    size_t rows = size_t(box.bottom - box.top);
    if (!m->alpha.resize(size_t(box.right - box.left) * rows) || !m->lo.resize(rows) || !m->hi.resize(rows)) {
        c->maskPool.push(m);
        return nullptr;
    }
    for (size_t r = 0; r < rows; ++r)
        m->lo[r] = m->hi[r] = 0;
    m->box = box;
    m->bounds = Box{0, 0, 0, 0};
    m->rectangle = false;
    m->baseDepth = c->maskDepth;
    return m;
}

// Multiplies mask m by mask `by` (zero outside by's rows' extents), then
// finds its bounds and whether it is one opaque rectangle.
void finish(Mask *m, const Mask *by)
{
    Box b{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    bool full = true;
    for (int y = m->box.top; y < m->box.bottom; ++y) {
        size_t r = size_t(y - m->box.top);
        int lo = m->lo[r], hi = m->hi[r];
        uint8_t *row = m->row(y);
        if (by && lo < hi) {
            int plo = 0, phi = 0;
            if (y >= by->box.top && y < by->box.bottom) {
                plo = by->lo[size_t(y - by->box.top)];
                phi = by->hi[size_t(y - by->box.top)];
            }
            lo = lo > plo ? lo : plo;
            hi = hi < phi ? hi : phi;
            const uint8_t *prow = by->row(y);
            for (int x = lo; x < hi; ++x)
                row[x] = uint8_t(mul255(row[x], prow[x]));
        }
        while (lo < hi && !row[lo])
            ++lo;
        while (hi > lo && !row[hi - 1])
            --hi;
        if (lo >= hi) {
            m->lo[r] = m->hi[r] = 0;
            continue;
        }
        m->lo[r] = lo, m->hi[r] = hi;
        if (b.top == INT32_MAX) {
            b.left = lo, b.right = hi;
        } else {
            full = full && b.bottom == y && lo == b.left && hi == b.right;
            b.left = b.left < lo ? b.left : lo;
            b.right = b.right > hi ? b.right : hi;
        }
        b.top = b.top < y ? b.top : y;
        b.bottom = y + 1;
        for (int x = lo; full && x < hi; ++x)
            full = row[x] == 255;
    }
    m->bounds = b.top == INT32_MAX ? Box{0, 0, 0, 0} : b;
    m->rectangle = full && !m->bounds.empty();
}

} // namespace

namespace tov {

bool drawingMask(tovCanvas *c, int minDepth, const Mask **mask, Box *limit)
{
    *mask = nullptr;
    *limit = kUnlimited;
    if (c->maskOverflow > 0)
        return false;
    if (c->maskDepth <= minDepth)
        return true;
    const Mask *m = c->masks[c->maskDepth - 1];
    if (m->bounds.empty())
        return false;
    *limit = m->bounds;
    if (!m->rectangle)
        *mask = m;
    return true;
}

bool maskTarget(tovCanvas *c, Mask **builder)
{
    for (int d = c->groupDepth - 1; d >= 0; --d) {
        if (c->groupKinds[d] == 2) {
            *builder = c->groupBuilders[d];
            return true;
        }
    }
    *builder = nullptr;
    return false;
}

// Union of coverages: a + v - a v.
void addToBuilder(Mask *m, int y, int x, int n, const uint8_t *cov)
{
    const Box &b = m->box;
    if (y < b.top || y >= b.bottom)
        return;
    int lo = x < b.left ? b.left : x;
    int hi = x + n > b.right ? b.right : x + n;
    if (lo >= hi)
        return;
    cov -= x;
    size_t r = size_t(y - b.top);
    uint8_t *row = m->row(y);
    int &rlo = m->lo[r], &rhi = m->hi[r];
    if (rlo >= rhi) {
        std::memcpy(row + lo, cov + lo, size_t(hi - lo));
        rlo = lo, rhi = hi;
        return;
    }
    // Newly reached columns start from zero.
    if (lo < rlo)
        std::memset(row + lo, 0, size_t(rlo - lo)), rlo = lo;
    if (hi > rhi)
        std::memset(row + rhi, 0, size_t(hi - rhi)), rhi = hi;
    for (int i = lo; i < hi; ++i) {
        unsigned a = row[i], v = cov[i];
        row[i] = uint8_t(a + v - mul255(a, v));
    }
}

void releaseMasks(tovCanvas *c)
{
    for (size_t i = 0; i < c->maskAll.size(); ++i)
        delete c->maskAll[i];
    c->maskAll.clear();
    c->maskPool.clear();
    c->maskDepth = 0;
}

} // namespace tov

extern "C" {

// Groups nest (a sprite's children open their own groups inside the group of
// the sprite). Drawing goes into the mask of the innermost kind-2 group if
// there is one, so a clip layer made of a sprite collects all its children.
void tovBeginCanvas(tovCanvas *c, int kind)
{
    if (!c)
        return;
    if (c->groupDepth >= kMaxGroups) {
        ++c->groupOverflow;
        return;
    }
    int d = c->groupDepth++;
    c->groupKinds[d] = kind == 2 ? 2 : 1;
    c->groupBuilders[d] = kind == 2 ? takeMask(c, c->clip) : nullptr;
}

// Ends the innermost group whatever kind is passed, so mismatched calls
// cannot leave a mask half built.
void tovEndCanvas(tovCanvas *c, int)
{
    if (!c)
        return;
    if (c->groupOverflow > 0) {
        --c->groupOverflow;
        return;
    }
    if (c->groupDepth == 0)
        return;
    int d = --c->groupDepth;
    if (c->groupKinds[d] != 2)
        return;
    Mask *m = c->groupBuilders[d];
    // A mask that could not be built hides everything until it is dropped.
    if (!m || c->maskDepth >= kMaxMasks) {
        if (m)
            c->maskPool.push(m);
        ++c->maskOverflow;
        return;
    }
    finish(m, c->maskDepth > 0 ? c->masks[c->maskDepth - 1] : nullptr);
    c->masks[c->maskDepth++] = m;
}

void tovDestroyMask(tovCanvas *c)
{
    if (!c)
        return;
    if (c->maskOverflow > 0) {
        --c->maskOverflow;
        return;
    }
    if (c->maskDepth > 0)
        c->maskPool.push(c->masks[--c->maskDepth]);
}

} // extern "C"
