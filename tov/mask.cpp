// mask.cpp: drawing groups and clip masks. A kind-2 group collects the
// coverage of what is drawn inside it into an 8-bit mask sized to the clip box
// it started with; when it ends, the mask is intersected with the open one and
// multiplies all later drawing until tovDestroyMask. Masks are pooled.
#include "tov/internal.h"

#include <new>

using namespace tov;

namespace {

// A cleared mask over the box from the pool, or null when too many masks
// are in use or memory runs out.
Mask *takeMask(tovCanvas *c, const Box &box)
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
    size_t area = box.empty() ? 0 : size_t(box.right - box.left) * size_t(box.bottom - box.top);
    if (!m->alpha.resize(area)) {
        c->maskPool.push(m);
        return nullptr;
    }
    if (area)
        std::memset(m->alpha.data(), 0, area);
    m->box = box.empty() ? Box{0, 0, 0, 0} : box;
    m->baseDepth = c->maskDepth;
    return m;
}

// Multiplies mask m by mask by (zero outside by's box).
void intersect(Mask *m, const Mask *by)
{
    int w = m->box.right - m->box.left;
    int bw = by->box.right - by->box.left;
    for (int y = m->box.top; y < m->box.bottom; ++y) {
        uint8_t *row = m->alpha.data() + size_t(y - m->box.top) * size_t(w);
        bool inside = y >= by->box.top && y < by->box.bottom;
        const uint8_t *src = inside ? by->alpha.data() + size_t(y - by->box.top) * size_t(bw) : nullptr;
        for (int x = m->box.left; x < m->box.right; ++x) {
            uint8_t &a = row[x - m->box.left];
            a = src && x >= by->box.left && x < by->box.right ? uint8_t(mul255(a, src[x - by->box.left])) : 0;
        }
    }
}

} // namespace

namespace tov {

bool applyMask(tovCanvas *c, int minDepth, int y, int x, int n, uint8_t *cov)
{
    if (c->maskOverflow > 0)
        return false;
    if (c->maskDepth <= minDepth)
        return true;
    const Mask *m = c->masks[c->maskDepth - 1];
    const Box &b = m->box;
    if (y < b.top || y >= b.bottom) {
        std::memset(cov, 0, size_t(n));
        return false;
    }
    int lo = x < b.left ? b.left : x;
    int hi = x + n > b.right ? b.right : x + n;
    if (lo >= hi) {
        std::memset(cov, 0, size_t(n));
        return false;
    }
    std::memset(cov, 0, size_t(lo - x));
    std::memset(cov + (hi - x), 0, size_t(x + n - hi));
    const uint8_t *row = m->alpha.data() + size_t(y - b.top) * size_t(b.right - b.left) - b.left;
    unsigned any = 0;
    for (int i = lo; i < hi; ++i) {
        uint8_t &a = cov[i - x];
        a = uint8_t(mul255(a, row[i]));
        any |= a;
    }
    return any != 0;
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

void addToBuilder(tovCanvas *c, Mask *m, int y, int x, int n, uint8_t *cov)
{
    if (!applyMask(c, m->baseDepth, y, x, n, cov))
        return;
    const Box &b = m->box;
    if (y < b.top || y >= b.bottom)
        return;
    int lo = x < b.left ? b.left : x;
    int hi = x + n > b.right ? b.right : x + n;
    uint8_t *row = m->alpha.data() + size_t(y - b.top) * size_t(b.right - b.left) - b.left;
    for (int i = lo; i < hi; ++i) {
        unsigned a = row[i], v = cov[i - x];
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
    if (c->maskDepth > 0)
        intersect(m, c->masks[c->maskDepth - 1]);
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
