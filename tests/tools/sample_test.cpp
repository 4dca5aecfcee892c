// The bundled sample: the committed samples/demo.swf is what make_sample
// writes, `info` describes it, and its frames render with every kind of
// content in place (probe pixels in the panel, morph, mask, text and field).
#include "ToolHarness.h"

namespace {

using Rgba = std::array<int, 4>;

class SampleTest : public ToolTest {};

TEST_F(SampleTest, CommittedSampleMatchesItsGenerator) {
    const RunResult r = RunProgram({MAKE_SAMPLE_PATH, Path("demo.swf")});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(ReadFile(Path("demo.swf")) == ReadFile(SAMPLE_PATH))
        << "samples/demo.swf is stale: rebuild it with the demo_swf target";
}

TEST_F(SampleTest, InfoDescribesTheSample) {
    const RunResult r = Run({"info", "--json", SAMPLE_PATH});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out.substr(r.out.find("\"signature\"")), R"("signature": "FWS",
  "compressed": false,
  "version": 6,
  "fileSize": 1754,
  "declaredLength": 1754,
  "frameTwips": [0, 0, 8000, 6000],
  "width": 400,
  "height": 300,
  "frameRate": 12,
  "frameCount": 24,
  "showFrames": 24,
  "background": "#2a3b4c",
  "tags": {"DefineEditText": 1, "DefineFont2": 2, "DefineMorphShape": 1, "DefineShape3": 5, "DefineSprite": 1, "DefineText2": 1, "End": 2, "PlaceObject2": 62, "SetBackgroundColor": 1, "ShowFrame": 32},
  "definitions": {"edit text": 1, "font": 2, "morph shape": 1, "shape": 5, "sprite": 1, "text": 1},
  "skippedByEngine": {},
  "notPlayed": {"scripts": false, "sounds": false, "bitmaps": false, "video": false},
  "endTag": true
}
)");
}

TEST_F(SampleTest, FramesShowEveryKindOfContent) {
    const RunResult r = Run({"render", SAMPLE_PATH, "-o", Path("f_%02d.png"), "--frames", "1-24", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Image first = ReadPng("f_01.png"), last = ReadPng("f_24.png");
    ASSERT_EQ(first.width, 400);
    ASSERT_EQ(first.height, 300);
    const Rgba background{0x2A, 0x3B, 0x4C, 255}, panel{0xF4, 0xF1, 0xE8, 255};
    EXPECT_EQ(first.At(5, 5), background);
    EXPECT_EQ(first.At(300, 230), panel);
    // The morph runs from red to blue.
    EXPECT_EQ(first.At(215, 140), (Rgba{0xE0, 0x30, 0x30, 255}));
    EXPECT_EQ(last.At(215, 140), (Rgba{0x30, 0x40, 0xE0, 255}));
    // The stripes show inside the sprite's circular mask and not outside it.
    const Rgba green{0x20, 0x90, 0x40, 255}, yellow{0xF0, 0xF0, 0x30, 255};
    const Rgba masked = first.At(310, 150);
    EXPECT_TRUE(masked == green || masked == yellow);
    EXPECT_EQ(first.At(310, 97), panel);
    // The E of the title, in the embedded glyph font.
    EXPECT_EQ(first.At(88, 55), (Rgba{0x30, 0x30, 0x40, 255}));
    // The edit field's border, drawn by the tool's text callback.
    EXPECT_EQ(first.At(215, 50), (Rgba{0, 0, 0, 255}));
}

}  // namespace
