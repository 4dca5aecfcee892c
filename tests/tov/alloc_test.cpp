// alloc_test.cpp: drawing a scene a second time allocates nothing. Global
// operator new and delete are replaced here (for the whole test program) by
// versions that count calls; every allocation tov makes goes through them.
#include "tov_fixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> g_allocations{0};

void *countedAlloc(std::size_t n)
{
    ++g_allocations;
    return std::malloc(n ? n : 1);
}
} // namespace

void *operator new(std::size_t n)
{
    void *p = countedAlloc(n);
    if (!p)
        throw std::bad_alloc();
    return p;
}
void *operator new[](std::size_t n) { return operator new(n); }
void *operator new(std::size_t n, const std::nothrow_t &) noexcept { return countedAlloc(n); }
void *operator new[](std::size_t n, const std::nothrow_t &) noexcept { return countedAlloc(n); }
void operator delete(void *p) noexcept { std::free(p); }
void operator delete[](void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t) noexcept { std::free(p); }
void operator delete(void *p, const std::nothrow_t &) noexcept { std::free(p); }
void operator delete[](void *p, const std::nothrow_t &) noexcept { std::free(p); }

using namespace tovtest;

namespace {

// One frame as the engine draws it: per shape, brushes and pens are made,
// installed, drawn with and deleted; a clip layer masks part of the frame.
void drawFrame(tovCanvas *c)
{
    tovColor bg{255, 255, 255, 255};
    tovSetClipBox(c, 0, 0, 200, 150);
    tovClear(c, &bg);
    tovBeginCanvas(c, 2);
    tovObject *maskBrush = solid(c, 0, 0, 0);
    fillCircle(c, maskBrush, 100, 75, 60);
    tovDeleteObject(c, maskBrush);
    tovEndCanvas(c, 2);
    for (int i = 0; i < 20; ++i) {
        tovBeginCanvas(c, 1);
        tovGradientStop stops[2] = {{0, {255, 0, 0, 255}}, {255, {0, 0, 255, 128}}};
        double m[2][3] = {{0.05, 0.01, 10.0 * i}, {-0.01, 0.05, 7.0 * i}};
        tovObject *fills[2] = {solid(c, uint8_t(i * 12), 100, 50, 180),
                               tovCreateGradientBrush(c, 2 + i % 2, 2, stops, 1, m[0][2], m[1][2], m, nullptr)};
        beginFills(c, {fills[0], fills[1]});
        tovUseBrush(c, 0, 1);
        polygonPath(c, {{10.0 * i, 5.0 * i}, {10.0 * i + 40, 5.0 * i}, {10.0 * i, 5.0 * i + 60}});
        tovUseBrush(c, 1, 2);
        tovMoveTo(c, 10.0 * i + 40, 5.0 * i);
        tovCurveTo(c, 10.0 * i + 60, 5.0 * i + 30, 10.0 * i + 40, 5.0 * i + 60);
        tovLineTo(c, 10.0 * i, 5.0 * i + 60);
        tovEndShape(c);
        strokePolyline(c, 1.0 + i % 5, {0, 0, 0, 200}, {{10.0 * i, 5.0 * i}, {10.0 * i + 50, 5.0 * i + 9}, {5.0 * i, 80}});
        tovDeleteObject(c, fills[0]);
        tovDeleteObject(c, fills[1]);
        tovEndCanvas(c, 1);
    }
    tovDestroyMask(c);
}

TEST(TovAllocation, SecondFrameOfTheSameSceneAllocatesNothing)
{
    Surface s(200, 150);
    Canvas c(s);
    long before = g_allocations;
    drawFrame(c);
    long first = g_allocations - before;
    before = g_allocations;
    drawFrame(c);
    long second = g_allocations - before;
    EXPECT_GT(first, 0); // the counter does see tov's allocations
    EXPECT_EQ(second, 0);
}

} // namespace
