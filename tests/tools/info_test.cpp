// `zelplay info`: header facts, tag and definition counts, and the content
// the engine skips or does not play, in text and in JSON parsed back.
#include "JsonReader.h"
#include "TestMovies.h"
#include "ToolHarness.h"

namespace {

// Three frames, a shape, a script, a bitmap, a sound and an unknown tag.
swf::Bytes BusyMovie() {
    movies::RectMovie m;
    m.frames = 3;
    m.extraTags = {swf::DoAction({0}), swf::Tag(20, swf::Bytes(12, 0)), swf::Tag(14, swf::Bytes(8, 0)),
                   swf::Tag(200, {1, 2, 3})};
    return m.Build();
}

class InfoTest : public ToolTest {};

TEST_F(InfoTest, TextReportsHeaderCountsAndUnplayedContent) {
    const RunResult r = Run({"info", Write("busy.swf", BusyMovie())});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("FWS (uncompressed), version 6"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("100 x 80 pixels"), std::string::npos);
    EXPECT_NE(r.out.find("frame rate:   12 fps"), std::string::npos);
    EXPECT_NE(r.out.find("frames:       3 (3 ShowFrame tags)"), std::string::npos);
    EXPECT_NE(r.out.find("background:   #0000ff"), std::string::npos);
    EXPECT_NE(r.out.find("not played:   scripts yes, sounds yes, bitmaps yes, video no"),
              std::string::npos);
    EXPECT_NE(r.out.find("Tag200"), std::string::npos);
    EXPECT_TRUE(r.err.empty()) << r.err;
}

TEST_F(InfoTest, JsonParsesBackWithTheSameFacts) {
    const RunResult r = Run({"info", "--json", Write("busy.swf", BusyMovie())});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Json j = JsonReader::Parse(r.out);
    EXPECT_EQ(j["signature"].string, "FWS");
    EXPECT_FALSE(j["compressed"].boolean);
    EXPECT_EQ(j["version"].number, 6);
    EXPECT_EQ(j["width"].number, movies::kWidth);
    EXPECT_EQ(j["height"].number, movies::kHeight);
    EXPECT_EQ(j["frameRate"].number, 12);
    EXPECT_EQ(j["frameCount"].number, 3);
    EXPECT_EQ(j["background"].string, "#0000ff");
    EXPECT_EQ(j["tags"]["ShowFrame"].number, 3);
    EXPECT_EQ(j["tags"]["PlaceObject2"].number, 3);
    EXPECT_EQ(j["definitions"]["shape"].number, 1);
    EXPECT_EQ(j["definitions"]["bitmap"].number, 1);
    EXPECT_EQ(j["definitions"]["sound"].number, 1);
    // The engine's frame loop skips these; it reads the shape and placements.
    EXPECT_EQ(j["skippedByEngine"]["DoAction"].number, 1);
    EXPECT_EQ(j["skippedByEngine"]["DefineBitsLossless"].number, 1);
    EXPECT_EQ(j["skippedByEngine"]["DefineSound"].number, 1);
    EXPECT_EQ(j["skippedByEngine"]["Tag200"].number, 1);
    EXPECT_EQ(j["skippedByEngine"].object.count("DefineShape3"), 0u);
    EXPECT_TRUE(j["notPlayed"]["scripts"].boolean);
    EXPECT_TRUE(j["notPlayed"]["sounds"].boolean);
    EXPECT_TRUE(j["notPlayed"]["bitmaps"].boolean);
    EXPECT_FALSE(j["notPlayed"]["video"].boolean);
    EXPECT_TRUE(j["endTag"].boolean);
}

TEST_F(InfoTest, CompressedMovieReportsTheSameCountsAsItsUncompressedForm) {
    const swf::Bytes fws = BusyMovie();
    const RunResult plain = Run({"info", "--json", Write("plain.swf", fws)});
    const RunResult packed = Run({"info", "--json", Write("packed.swf", movies::Compress(fws))});
    ASSERT_EQ(packed.exitCode, 0) << packed.err;
    const Json a = JsonReader::Parse(plain.out), b = JsonReader::Parse(packed.out);
    EXPECT_EQ(b["signature"].string, "CWS");
    EXPECT_TRUE(b["compressed"].boolean);
    EXPECT_LT(b["fileSize"].number, b["declaredLength"].number);
    EXPECT_EQ(b["declaredLength"].number, a["declaredLength"].number);
    EXPECT_EQ(b["tags"].object.size(), a["tags"].object.size());
    EXPECT_EQ(b["frameCount"].number, a["frameCount"].number);
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
        EXPECT_TRUE(JsonReader::Parse(r.out)["notPlayed"]["scripts"].boolean);
    }
}

TEST_F(InfoTest, SpriteTimelinesAreCountedButNotAsMainFrames) {
    swf::Tags inner;
    inner.Add(swf::ShowFrame()).Add(swf::ShowFrame());
    movies::RectMovie m;
    m.extraTags = {swf::DefineSprite(7, inner)};
    const RunResult r = Run({"info", "--json", Write("m.swf", m.Build())});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Json j = JsonReader::Parse(r.out);
    EXPECT_EQ(j["showFrames"].number, 1);
    EXPECT_EQ(j["tags"]["ShowFrame"].number, 3);
    EXPECT_EQ(j["definitions"]["sprite"].number, 1);
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
