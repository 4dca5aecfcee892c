// `zelplay render` and `thumb`: pixels of the PNGs they write, checked at
// probe points for every pixel format, orientation, size option and
// background, and incremental drawing checked against full repaints.
#include "TestMovies.h"
#include "ToolHarness.h"

namespace {

using Rgba = std::array<int, 4>;
constexpr Rgba kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255}, kClear{0, 0, 0, 0};

class RenderTest : public ToolTest {
protected:
    Image RenderOne(const swf::Bytes& movie, std::vector<std::string> options) {
        std::vector<std::string> args{"render", Write("movie.swf", movie), "-o", Path("out.png"), "--frame", "1"};
        args.insert(args.end(), options.begin(), options.end());
        const RunResult r = Run(args);
        EXPECT_EQ(r.exitCode, 0) << r.err;
        return ReadPng("out.png");
    }
};

// Each row renders frame 1 of a rectangle movie with some options and probes
// the PNG. The rectangle covers pixels 20..59 x 10..49 of the 100 x 80 frame;
// each quarter turn keeps the whole frame in the image: a point (x, y) of the
// frame lands at (y, W - x), (W - x, H - y) and (H - y, x) for turns 1, 2, 3.
TEST_F(RenderTest, PicturesFollowTheOptions) {
    struct Probe {
        int x, y;
        Rgba colour;
    };
    struct Case {
        std::string name;
        movies::RectMovie movie;
        std::vector<std::string> options;
        int width, height;
        std::vector<Probe> probes;
    };
    const std::vector<Probe> rect{{40, 30, kRed}, {21, 11, kRed}, {5, 5, kBlue}, {70, 30, kBlue}, {40, 60, kBlue}};
    std::vector<Case> cases;
    for (const char* format : {"argb32", "rgb24", "bgr24", "bgr24b", "rgb565", "rgb555", "rgb444", "bgr565",
                               "280", "16"}) {
        cases.push_back({format, {}, {"--format", format}, 100, 80, rect});
    }
    movies::RectMovie away, bare, translucent;
    away.originX = -30;
    away.originY = 15;
    bare.background = false;
    translucent.fill = {255, 0, 0, 128};
    const Rgba green{0, 255, 0, 255}, white{255, 255, 255, 255};
    cases.insert(cases.end(), {
        {"turn 1", {}, {"--orientation", "1"}, 80, 100, {{30, 60, kRed}, {30, 20, kBlue}, {30, 40, kRed}, {30, 39, kBlue}, {0, 0, kBlue}, {79, 99, kBlue}}},
        {"turn 2", {}, {"--orientation", "2"}, 100, 80, {{60, 50, kRed}, {30, 20, kBlue}, {40, 50, kRed}, {39, 50, kBlue}, {99, 79, kBlue}}},
        {"turn 3", {}, {"--orientation", "3"}, 80, 100, {{50, 40, kRed}, {20, 70, kBlue}, {30, 40, kRed}, {29, 40, kBlue}, {0, 0, kBlue}}},
        {"frame away from the origin", away, {}, 100, 80, {{20, 10, kRed}, {19, 10, kBlue}}},
        {"frame away from the origin, turned", away, {"--orientation", "2"}, 100, 80, {{79, 69, kRed}, {80, 69, kBlue}}},
        {"scale", {}, {"--scale", "2"}, 200, 160, {{42, 22, kRed}, {118, 98, kRed}, {122, 102, kBlue}}},
        {"size fits and centres", {}, {"--size", "300x80"}, 300, 80, {{140, 30, kRed}, {40, 30, kBlue}}},
        {"background option", {}, {"--background", "00ff00"}, 100, 80, {{5, 5, green}, {40, 30, kRed}}},
        {"no background colour: white", bare, {}, 100, 80, {{5, 5, white}}},
        // PNG wants straight alpha, not the premultiplied dark red of the buffer.
        {"transparent", translucent, {"--background", "transparent"}, 100, 80, {{5, 5, kClear}, {40, 30, {255, 0, 0, 128}}}},
    });
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Image img = RenderOne(c.movie.Build(), c.options);
        ASSERT_EQ(img.width, c.width);
        ASSERT_EQ(img.height, c.height);
        for (const Probe& p : c.probes) EXPECT_EQ(img.At(p.x, p.y), p.colour) << p.x << ", " << p.y;
    }
}

TEST_F(RenderTest, IncrementalFramesEqualFullRepaints) {
    movies::RectMovie m;
    m.frames = 5;
    m.stepX = 7;
    const std::string movie = Write("moving.swf", m.Build());
    for (const char* background : {"ff8000", "transparent"}) {
        SCOPED_TRACE(background);
        ASSERT_EQ(Run({"render", movie, "-o", Path("inc_%d.png"), "--background", background}).exitCode, 0);
        ASSERT_EQ(Run({"render", movie, "-o", Path("full_%d.png"), "--full", "--background", background})
                      .exitCode,
                  0);
        for (int f = 1; f <= 5; ++f) {
            const Image inc = ReadPng("inc_" + std::to_string(f) + ".png");
            const Image full = ReadPng("full_" + std::to_string(f) + ".png");
            ASSERT_EQ(inc.width, movies::kWidth) << f;
            EXPECT_TRUE(inc.rgba == full.rgba) << "frame " << f;
        }
        // The rectangle really moved: its left edge is 28 pixels on by frame 5.
        const Image last = ReadPng("inc_5.png");
        EXPECT_EQ(last.At(48, 30), kRed);
        EXPECT_NE(last.At(47, 30), kRed);
    }
}

TEST_F(RenderTest, FrameRangeWritesExactlyThoseFrames) {
    movies::RectMovie m;
    m.frames = 4;
    m.stepX = 5;
    const RunResult r = Run({"render", Write("m.swf", m.Build()), "-o", Path("f_%04d.png"), "--frames", "2-3"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Files(), (std::set<std::string>{"m.swf", "f_0002.png", "f_0003.png"}));
    EXPECT_NE(r.out.find("rendered 2 frames"), std::string::npos) << r.out;
    // Frame 3 is drawn after a frame that was skipped, from a full repaint.
    EXPECT_EQ(ReadPng("f_0003.png").At(31, 30), kRed);
    EXPECT_EQ(ReadPng("f_0003.png").At(29, 30), kBlue);
}

TEST_F(RenderTest, DashWritesOnePngToStdoutAndTheSummaryToStderr) {
    const RunResult r = Run({"render", Write("m.swf", movies::RectMovie{}.Build()), "-o", "-", "--frame", "1"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Image img = DecodePng(r.out);
    ASSERT_EQ(img.width, movies::kWidth);
    EXPECT_EQ(img.At(40, 30), kRed);
    EXPECT_NE(r.err.find("rendered 1 frame"), std::string::npos);
    const RunResult quiet =
        Run({"render", Path("m.swf"), "-o", "-", "--frame", "1", "--quiet"});
    EXPECT_TRUE(quiet.err.empty()) << quiet.err;
}

TEST_F(RenderTest, CompressedMovieRendersLikeItsUncompressedForm) {
    const swf::Bytes fws = movies::RectMovie{}.Build();
    const Image plain = RenderOne(fws, {});
    const Image packed = RenderOne(movies::Compress(fws), {});
    EXPECT_TRUE(plain.rgba == packed.rgba);
    EXPECT_EQ(packed.At(40, 30), kRed);
}

TEST_F(RenderTest, ThumbFitsTheFrameIntoTheSquare) {
    const RunResult r = Run({"thumb", Write("m.swf", movies::RectMovie{}.Build()), "-o", Path("t.png"),
                             "--size", "50"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Image img = ReadPng("t.png");
    EXPECT_EQ(img.width, 50);
    EXPECT_EQ(img.height, 40);
    EXPECT_EQ(img.At(20, 15), kRed);
    EXPECT_EQ(img.At(2, 2), kBlue);
}

TEST_F(RenderTest, ThumbPicksTheFrameWithTheMostDrawn) {
    // Frame 1 empty, frame 2 a small rectangle, frame 3 a large one.
    swf::Movie m;
    m.frame = {0, 2000, 0, 2000, 0};
    m.tags.Add(swf::SetBackgroundColor(movies::kBlue));
    for (uint16_t id : {1, 2}) {
        const int32_t side = id == 1 ? 200 : 1600;
        swf::Shape s({swf::Fill::Solid(movies::kRed)});
        s.Fill1(1).MoveTo(0, 0).LineTo(side, 0).LineTo(side, side).LineTo(0, side).LineTo(0, 0);
        m.tags.Add(swf::DefineShape(id, {0, side, 0, side}, s, 3));
    }
    swf::Place2 small, large;
    small.characterId = 1;
    large.characterId = 2;
    large.depth = 2;
    m.tags.Add(swf::ShowFrame()).Add(swf::PlaceObject2(small)).Add(swf::ShowFrame());
    m.tags.Add(swf::RemoveObject2(1)).Add(swf::PlaceObject2(large)).Add(swf::ShowFrame());
    m.tags.Add(swf::RemoveObject2(2)).Add(swf::ShowFrame());
    ASSERT_EQ(Run({"thumb", Write("m.swf", m.Build()), "-o", Path("t.png"), "--size", "100"}).exitCode, 0);
    EXPECT_EQ(ReadPng("t.png").At(70, 70), kRed);
}

// A movie whose only content is an edit field in the device font "_sans",
// placed at (10, 10) pixels, black text on the blue background.
swf::Bytes FieldMovie(int width, int height, const std::string& text, uint8_t align, bool wrap,
                      bool border) {
    movies::RectMovie m;
    m.left = m.right = 0;
    swf::Font2 font;
    font.id = 20;
    font.name = "_sans";
    swf::EditText field;
    field.id = 21;
    field.bounds = {0, width * 20, 0, height * 20};
    field.flags = uint16_t((border ? swf::kEditBorder : 0) | (wrap ? swf::kEditWordWrap : 0));
    field.font = {{20, 300}};
    field.color = swf::Rgba{0, 0, 0, 255};
    field.layout = swf::EditLayout{align, 0, 0, 0, 0};
    field.text = text;
    swf::Place2 place;
    place.depth = 5;
    place.characterId = 21;
    place.matrix = swf::Matrix::Translate(200, 200);
    m.extraTags = {swf::DefineFont2(font), swf::DefineEditText(field), swf::PlaceObject2(place)};
    return m.Build();
}

// Dark pixels (the glyphs) inside [x0, x1) x [y0, y1): their count and mean x.
std::pair<int, double> Ink(const Image& img, int x0, int y0, int x1, int y1) {
    int n = 0;
    double sumX = 0;
    for (int y = y0; y < y1; ++y) {
        for (int x = x0; x < x1; ++x) {
            const Rgba p = img.At(x, y);
            if (p[0] < 100 && p[1] < 100 && p[2] < 100) {
                ++n;
                sumX += x;
            }
        }
    }
    return {n, n ? sumX / n : 0};
}

TEST_F(RenderTest, DeviceTextAndBorderAreDrawnInEveryPixelFormat) {
    for (const char* format : {"argb32", "rgb24", "rgb565", "bgr565"}) {
        SCOPED_TRACE(format);
        const Image img = RenderOne(FieldMovie(80, 40, "WWWW", 0, false, true), {"--format", format});
        // The field spans pixels 10..89 x 10..49: a black frame around a white field.
        EXPECT_EQ(img.At(10, 30), (Rgba{0, 0, 0, 255}));
        EXPECT_EQ(img.At(50, 10), (Rgba{0, 0, 0, 255}));
        EXPECT_EQ(img.At(85, 45), (Rgba{255, 255, 255, 255}));
        EXPECT_GT(Ink(img, 12, 12, 88, 48).first, 40);
        EXPECT_EQ(img.At(5, 5), kBlue);
    }
}

TEST_F(RenderTest, DeviceTextFollowsTheFieldsAlignment) {
    struct Case {
        uint8_t align;
        double minX, maxX;  // where the glyphs' mean x must fall
    } cases[] = {{0, 10, 40}, {2, 40, 60}, {1, 60, 90}};
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.align));
        const Image img = RenderOne(FieldMovie(80, 30, "ab", c.align, false, false), {});
        const auto [count, meanX] = Ink(img, 10, 10, 90, 40);
        ASSERT_GT(count, 10);
        EXPECT_GT(meanX, c.minX);
        EXPECT_LT(meanX, c.maxX);
    }
}

TEST_F(RenderTest, DeviceTextWrapsOnlyWhenTheFieldAsksForIt) {
    const std::string text = "one two three four five six";
    const Image wrapped = RenderOne(FieldMovie(60, 60, text, 0, true, false), {});
    const Image single = RenderOne(FieldMovie(60, 60, text, 0, false, false), {});
    // Line 1 sits in the top 20 pixels of the field; wrapped text goes below it.
    EXPECT_GT(Ink(wrapped, 10, 10, 70, 30).first, 20);
    EXPECT_GT(Ink(wrapped, 10, 30, 70, 70).first, 20);
    EXPECT_GT(Ink(single, 10, 10, 70, 30).first, 20);
    EXPECT_EQ(Ink(single, 10, 30, 70, 70).first, 0);
}

}  // namespace
