// The dirty-rectangle set: snapping to whole pixels with a one-pixel margin
// before and two after, and merging touching boxes into the first one met.
#include "render/GClipBox.h"

#include <cmath>
#include <cstdint>

namespace {

// Conversion toward zero into 32 bits; values outside that range (or NaN)
// saturate instead of invoking undefined behaviour.
int32_t Trunc32(double v) {
    if (!(v > -2147483648.0)) return v != v ? 0 : INT32_MIN;
    if (!(v < 2147483647.0)) return INT32_MAX;
    return static_cast<int32_t>(v);
}

double Snap(double v, int margin) { return (static_cast<double>(Trunc32(v / 20)) + margin) * 20; }

bool Empty(const GRect& r) { return !(r.left < r.right) || !(r.top < r.bottom); }

// Closed intervals: boxes that share only an edge or a corner touch.
bool Touch(const GRect& a, const GRect& b) {
    return !Empty(a) && !Empty(b) && a.left <= b.right && a.right >= b.left && a.top <= b.bottom &&
           a.bottom >= b.top;
}

bool Contains(const GRect& outer, const GRect& inner) {
    return outer.left <= inner.left && outer.right >= inner.right && outer.top <= inner.top &&
           outer.bottom >= inner.bottom;
}

void Unite(GRect& into, const GRect& other) {
    if (other.left < into.left) into.left = other.left;
    if (other.top < into.top) into.top = other.top;
    if (other.right > into.right) into.right = other.right;
    if (other.bottom > into.bottom) into.bottom = other.bottom;
}

}  // namespace

void GClipBox::Create(int w, int h) {
    boxes.RemoveAll();
    width = w <= 0 ? 2048 : w;
    height = h <= 0 ? 1024 : h;
}

void GClipBox::InsertClipBox(const _GRECT& r) {
    if (Empty(r)) return;
    // One pixel of margin before and two after: the second covers the pixel
    // holding a fractional right or bottom edge plus anti-aliasing spill.
    // Truncation goes toward zero, so negative edges snap toward zero first.
    GRect s = {Snap(r.left, -1), Snap(r.top, -1), Snap(r.right, 2), Snap(r.bottom, 2)};

    int k = 0;
    while (k < boxes.count && !Touch(boxes[k], s)) ++k;
    if (k == boxes.count) {
        boxes.Add(s);  // on allocation failure the area is dropped
        return;
    }
    if (Contains(boxes[k], s)) return;
    Unite(boxes[k], s);

    int j = 0;
    while (boxes.count > 1 && j < boxes.count) {
        if (j == k || !Touch(boxes[j], boxes[k])) {
            ++j;
            continue;
        }
        bool contained = Contains(boxes[k], boxes[j]);
        if (!contained) Unite(boxes[k], boxes[j]);
        boxes.RemoveAt(j);
        if (j < k) --k;
        // A grown box may now touch boxes already passed: start again.
        if (!contained) j = 0;
    }
}

int GClipBox::IsContain(const _GRECT& r) const {
    if (boxes.count == 0) return 0;
    if (Empty(r)) return 1;
    for (int i = boxes.count - 1; i >= 0; --i)
        if (Contains(boxes[i], r)) return 1;
    return 0;
}
