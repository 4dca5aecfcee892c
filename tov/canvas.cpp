// canvas.cpp: creating and destroying a canvas, its clip box, clearing, and
// the pool of pen and brush objects that lives on the canvas so that shapes
// drawn frame after frame reuse the same objects instead of allocating.
#include "tov/internal.h"

#include <new>

using namespace tov;

extern "C" {

tovCanvas *tovCreate(const tovBuffer *buffer)
{
    if (!buffer || !buffer->pixels || buffer->width <= 0 || buffer->height <= 0)
        return nullptr;
    int bpp = bytesPerPixel(buffer->format);
    if (bpp == 0)
        return nullptr;
    intptr_t row = intptr_t(buffer->width) * bpp;
    intptr_t stride = buffer->stride ? buffer->stride : row;
    if (stride < row)
        return nullptr;
    // Output coordinates of the buffer's far corner must stay within int.
    if (int64_t(buffer->x) + buffer->width > INT32_MAX || int64_t(buffer->y) + buffer->height > INT32_MAX)
        return nullptr;
    tovCanvas *c = new (std::nothrow) tovCanvas();
    if (!c)
        return nullptr;
    c->buffer = *buffer;
    c->bytesPerPixel = bpp;
    c->pixels = reinterpret_cast<uint8_t *>(buffer->pixels);
    c->stride = stride;
    c->native = buffer->format == 280 && buffer->pixels % intptr_t(alignof(uint32_t)) == 0 &&
                stride % intptr_t(alignof(uint32_t)) == 0;
    c->clip = Box{buffer->x, buffer->y, buffer->x + buffer->width, buffer->y + buffer->height};
    return c;
}

void tovDestroy(tovCanvas *c)
{
    if (!c)
        return;
    for (tovObject *o = c->allObjects; o;) {
        tovObject *next = o->nextAll;
        delete[] o->table;
        delete o;
        o = next;
    }
    releaseMasks(c);
    for (size_t i = 0; i < c->rowCells.size(); ++i)
        delete c->rowCells[i];
    delete c;
}

void tovSetClipBox(tovCanvas *c, int left, int top, int right, int bottom)
{
    if (!c)
        return;
    Box b{c->buffer.x, c->buffer.y, c->buffer.x + c->buffer.width, c->buffer.y + c->buffer.height};
    b.left = left > b.left ? left : b.left;
    b.top = top > b.top ? top : b.top;
    b.right = right < b.right ? right : b.right;
    b.bottom = bottom < b.bottom ? bottom : b.bottom;
    if (b.empty())
        b.right = b.left, b.bottom = b.top;
    c->clip = b;
}

// Scan conversion never makes cells outside the clip box, so no per-pixel
// clip test exists to be skipped: the promise is simply noted.
void tovSetClipFlag(tovCanvas *, int) {}

void tovClear(tovCanvas *c, const tovColor *color)
{
    if (!c || !color || c->clip.empty())
        return;
    uint32_t p = premultiply(color->red, color->green, color->blue, color->alpha);
    int n = c->clip.right - c->clip.left;
    if (!c->row.resize(size_t(n)))
        return;
    for (int i = 0; i < n; ++i)
        c->row[size_t(i)] = p;
    for (int y = c->clip.top; y < c->clip.bottom; ++y)
        storePixels(c->buffer.format, pixelAddress(c, c->clip.left, y), n, c->row.data());
}

void tovDeleteObject(tovCanvas *c, tovObject *o)
{
    // A second delete of the same object is ignored rather than letting it
    // onto the free list twice.
    if (!c || !o || o->kind == kFree)
        return;
    o->kind = kFree;
    o->nextFree = c->freeObjects;
    c->freeObjects = o;
}

} // extern "C"

namespace tov {

tovObject *newObject(tovCanvas *c, uint8_t kind)
{
    if (!c)
        return nullptr;
    tovObject *o = c->freeObjects;
    if (o) {
        c->freeObjects = o->nextFree;
    } else {
        o = new (std::nothrow) tovObject();
        if (!o)
            return nullptr;
        o->nextAll = c->allObjects;
        c->allObjects = o;
    }
    o->kind = kind;
    o->nextFree = nullptr;
    o->pen.radius = 0;
    o->color = 0;
    o->opaque = false;
    return o;
}

} // namespace tov
