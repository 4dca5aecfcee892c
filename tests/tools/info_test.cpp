// `zelplay info`: its report, in text and whole in JSON, of a movie that
// holds content the engine skips; the compressed form reports the same.
#include "TestMovies.h"
#include "ToolHarness.h"

namespace {

// Three frames, a shape, a sprite of two frames, a script, a bitmap, a sound
// and an unknown tag.
swf::Bytes BusyMovie() {
    swf::Tags inner;
    inner.Add(swf::ShowFrame()).Add(swf::ShowFrame());
    movies::RectMovie m;
    m.frames = 3;
    m.extraTags = {swf::DoAction({0}), swf::Tag(20, swf::Bytes(12, 0)), swf::Tag(14, swf::Bytes(8, 0)),
                   swf::Tag(200, {1, 2, 3}), swf::DefineSprite(7, inner)};
    return m.Build();
}

// The report with the file's name taken out.
std::string Report(const RunResult& r, const std::string& path) {
    std::string out = r.out;
    const size_t at = out.find(path);
    return at == std::string::npos ? out : out.erase(at, path.size());
}

class InfoTest : public ToolTest {};

TEST_F(InfoTest, ReportsHeaderCountsAndUnplayedContentInTextAndJson) {
    const std::string path = Write("busy.swf", BusyMovie());
    const RunResult text = Run({"info", path});
    ASSERT_EQ(text.exitCode, 0) << text.err;
    EXPECT_TRUE(text.err.empty()) << text.err;
    for (const char* line : {"signature:    FWS (uncompressed), version 6\n", "frames:       3 (3 ShowFrame tags)\n",
                             "tags (sprite timelines included):\n  DefineBitsLossless           1\n",
                             "skipped by the engine:\n  DefineBitsLossless           1\n  DefineSound                  1\n",
                             "not played:   scripts yes, sounds yes, bitmaps yes, video no\n"}) {
        EXPECT_NE(text.out.find(line), std::string::npos) << line;
    }
    const RunResult json = Run({"info", "--json", path});
    ASSERT_EQ(json.exitCode, 0) << json.err;
    EXPECT_EQ(Report(json, path), R"({
  "file": "",
  "signature": "FWS",
  "compressed": false,
  "version": 6,
  "fileSize": 136,
  "declaredLength": 136,
  "frameTwips": [0, 0, 2000, 1600],
  "width": 100,
  "height": 80,
  "frameRate": 12,
  "frameCount": 3,
  "showFrames": 3,
  "background": "#0000ff",
  "tags": {"DefineBitsLossless": 1, "DefineShape3": 1, "DefineSound": 1, "DefineSprite": 1, "DoAction": 1, "End": 2, "PlaceObject2": 3, "SetBackgroundColor": 1, "ShowFrame": 5, "Tag200": 1},
  "definitions": {"bitmap": 1, "shape": 1, "sound": 1, "sprite": 1},
  "skippedByEngine": {"DefineBitsLossless": 1, "DefineSound": 1, "DoAction": 1, "Tag200": 1},
  "notPlayed": {"scripts": true, "sounds": true, "bitmaps": true, "video": false},
  "endTag": true
}
)");
}

TEST_F(InfoTest, CompressedMovieReportsTheSameAsItsUncompressedForm) {
    const swf::Bytes fws = BusyMovie();
    const std::string plainPath = Write("plain.swf", fws), packedPath = Write("packed.swf", movies::Compress(fws));
    std::string plain = Report(Run({"info", "--json", plainPath}), plainPath);
    const std::string packed = Report(Run({"info", "--json", packedPath}), packedPath);
    const auto replace = [&plain](const std::string& from, const std::string& to) {
        plain.replace(plain.find(from), from.size(), to);
    };
    replace("\"FWS\"", "\"CWS\"");
    replace("\"compressed\": false", "\"compressed\": true");
    replace("\"fileSize\": " + std::to_string(fws.size()),
            "\"fileSize\": " + std::to_string(std::filesystem::file_size(packedPath)));
    EXPECT_EQ(packed, plain);
}

TEST_F(InfoTest, ScriptsInsidePlacementsAndButtonsAreReported) {
    swf::Place2 withActions;
    withActions.depth = 2;
    withActions.characterId = 1;
    withActions.clipActions = swf::Bytes{0, 0, 0, 0, 0, 0};
    swf::ButtonRecord up;
    up.characterId = 1;
    const swf::Bytes button = swf::DefineButton2(5, {up}, false, {0, 0});
    for (const swf::Bytes& tag : {swf::PlaceObject2(withActions), button}) {
        movies::RectMovie m;
        m.extraTags = {tag};
        const RunResult r = Run({"info", "--json", Write("m.swf", m.Build())});
        ASSERT_EQ(r.exitCode, 0) << r.err;
        EXPECT_NE(r.out.find("\"notPlayed\": {\"scripts\": true"), std::string::npos) << r.out;
    }
}

TEST_F(InfoTest, EveryCommandHasHelpAndTheToolHasAVersion) {
    for (const char* command : {"info", "render", "thumb"}) {
        const RunResult r = Run({command, "--help"});
        EXPECT_EQ(r.exitCode, 0) << command;
        EXPECT_NE(r.out.find("Exit codes"), std::string::npos) << command;
    }
    EXPECT_NE(Run({"render", "--help"}).out.find("--orientation"), std::string::npos);
    const RunResult v = Run({"--version"});
    EXPECT_EQ(v.exitCode, 0);
    EXPECT_EQ(v.out.rfind("zelplay ", 0), 0u) << v.out;
}

}  // namespace
