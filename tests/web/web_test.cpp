// The web player against the native build. Frames that the WebAssembly
// engine draws in Node, and that the page shows in headless Chromium, equal
// `zelplay render --frame N` pixel for pixel, except inside device-text
// fields, whose glyphs come from the browser's fonts; bad files give the
// message zelplay gives and leave the page working.
#include <map>
#include <sstream>

#include "TestMovies.h"
#include "ToolHarness.h"

namespace {

using Box = std::array<int, 4>;  // left, top, right, bottom

class WebTest : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        if (::access((std::string(WEB_SITE) + "/zelengine.wasm").c_str(), R_OK) != 0) {
            GTEST_SKIP() << "no web build in " WEB_SITE " (scripts/web.sh builds it)";
        }
        if (::access("/usr/bin/node", X_OK) != 0) GTEST_SKIP() << "Node.js is not installed";
    }

    RunResult Node(std::vector<std::string> args) const {
        args.insert(args.begin(), "/usr/bin/node");
        return RunProgram(args);
    }

    // The native frame, straight RGBA.
    Image Native(const std::string& movie, int frame, int orientation) {
        const RunResult r = Run({"render", movie, "-o", Path("native.png"), "--frame", std::to_string(frame),
                                 "--orientation", std::to_string(orientation), "-q"});
        EXPECT_EQ(r.exitCode, 0) << r.err;
        return ReadPng("native.png");
    }

    static swf::Bytes Sample() {
        const std::string bytes = ReadFile(SAMPLE_PATH);
        return swf::Bytes(bytes.begin(), bytes.end());
    }

    // The scripts print "key value" lines; textBox and pageError repeat.
    static std::multimap<std::string, std::string> Fields(const std::string& out) {
        std::multimap<std::string, std::string> fields;
        std::istringstream in(out);
        for (std::string line; std::getline(in, line);) {
            const size_t space = line.find(' ');
            fields.emplace(line.substr(0, space), space == std::string::npos ? "" : line.substr(space + 1));
        }
        return fields;
    }

    static std::string Field(const std::multimap<std::string, std::string>& fields, const std::string& key) {
        const auto it = fields.find(key);
        return it == fields.end() ? "" : it->second;
    }

    static std::vector<Box> Boxes(const std::multimap<std::string, std::string>& fields) {
        std::vector<Box> boxes;
        const auto [from, to] = fields.equal_range("textBox");
        for (auto it = from; it != to; ++it) {
            Box b{};
            std::istringstream(it->second) >> b[0] >> b[1] >> b[2] >> b[3];
            boxes.push_back(b);
        }
        return boxes;
    }

    static bool Inside(const std::vector<Box>& boxes, int x, int y) {
        for (const Box& b : boxes) {
            if (x >= b[0] && x < b[2] && y >= b[1] && y < b[3]) return true;
        }
        return false;
    }

    // Pixels that differ outside the boxes; the first one is reported.
    static int Differences(const Image& expected, const std::string& rgba, const std::vector<Box>& skip,
                           std::string& first) {
        int count = 0;
        for (int y = 0; y < expected.height; ++y) {
            for (int x = 0; x < expected.width; ++x) {
                if (Inside(skip, x, y)) continue;
                const auto* p = reinterpret_cast<const uint8_t*>(&rgba[(size_t(y) * expected.width + x) * 4]);
                const auto e = expected.At(x, y);
                if (p[0] != e[0] || p[1] != e[1] || p[2] != e[2] || p[3] != e[3]) {
                    if (count++ == 0) {
                        first = "(" + std::to_string(x) + ", " + std::to_string(y) + "): " + std::to_string(p[0]) +
                                " " + std::to_string(p[1]) + " " + std::to_string(p[2]) + " " + std::to_string(p[3]) +
                                " instead of " + std::to_string(e[0]) + " " + std::to_string(e[1]) + " " +
                                std::to_string(e[2]) + " " + std::to_string(e[3]);
                    }
                }
            }
        }
        return count;
    }
};

// Node has no canvas, so device text is left out there and its fields are
// not compared; everything else is drawn frame after frame through the
// update boxes, as the page does.
TEST_F(WebTest, WasmFramesEqualNativeFrames) {
    movies::RectMovie moving;
    moving.frames = 6;
    moving.stepX = 7;
    movies::RectMovie plain;
    plain.background = false;
    const struct Case {
        const char* name;
        swf::Bytes movie;
        int orientation;
        std::vector<int> frames;
    } cases[] = {
        {"sample", Sample(), 0, {1, 12, 24}},
        {"sample turned", Sample(), 1, {12}},
        {"sample upside down", Sample(), 2, {5}},
        {"compressed, moving", movies::Compress(moving.Build()), 0, {1, 2, 3, 4, 5, 6}},
        {"no background colour", plain.Build(), 3, {1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string movie = Write("movie.swf", c.movie);
        std::vector<std::string> args{WEB_TEST_DIR "/render_frames.mjs", WEB_SITE, movie, Path("wasm_"),
                                      std::to_string(c.orientation)};
        for (int f : c.frames) args.push_back(std::to_string(f));
        const RunResult r = Node(args);
        ASSERT_EQ(r.exitCode, 0) << r.err;
        const auto result = Fields(r.out);
        const std::vector<Box> text = Boxes(result);
        for (int f : c.frames) {
            SCOPED_TRACE("frame " + std::to_string(f));
            const Image native = Native(movie, f, c.orientation);
            ASSERT_EQ(std::to_string(native.width), Field(result, "width"));
            ASSERT_EQ(std::to_string(native.height), Field(result, "height"));
            std::string first;
            EXPECT_EQ(Differences(native, ReadFile(Path("wasm_" + std::to_string(f) + ".rgba")), text, first), 0)
                << first;
        }
    }
}

TEST_F(WebTest, BadFilesGiveTheToolsMessages) {
    swf::Bytes corrupt = movies::Compress(movies::RectMovie{}.Build());
    for (size_t i = 10; i < corrupt.size(); ++i) corrupt[i] ^= 0x5A;
    const swf::Bytes fws = movies::RectMovie{}.Build();
    const struct Case {
        swf::Bytes movie;
        const char* message;
    } cases[] = {
        {{'G', 'I', 'F', '8', '9', 'a'}, "not a SWF movie (no FWS or CWS signature)"},
        {{'F', 'W', 'S', 6}, "header is cut short"},
        {swf::Bytes(fws.begin(), fws.end() - 5), "truncated: header declares"},
        {corrupt, "compressed data"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        const RunResult r = Node({WEB_TEST_DIR "/render_frames.mjs", WEB_SITE, Write("bad.swf", c.movie),
                                  Path("unused_"), "0", "1"});
        EXPECT_EQ(r.exitCode, 3) << r.err;
        EXPECT_NE(Field(Fields(r.out), "error").find(c.message), std::string::npos) << r.out;
        EXPECT_NE(Run({"info", Path("bad.swf")}).err.find(c.message), std::string::npos);
    }
}

// The whole page in Chromium: the sample through the file input, played to
// frame 12; then a cut-short file, whose message shows while Step goes on.
// ZEL_WEB_SCREENSHOT=path keeps a picture of the page (the README's).
TEST_F(WebTest, ThePageShowsWhatZelplayRendersAndSurvivesABadFile) {
    if (::access(WEB_TEST_DIR "/../node_modules/puppeteer-core", R_OK) != 0) {
        GTEST_SKIP() << "puppeteer-core is not installed in web/ (scripts/web.sh installs it)";
    }
    if (::access("/usr/bin/chromium", X_OK) != 0) GTEST_SKIP() << "Chromium is not installed";
    const swf::Bytes sample = Sample();
    const std::string bad = Write("cut.swf", swf::Bytes(sample.begin(), sample.begin() + 300));
    std::vector<std::string> args{WEB_TEST_DIR "/browser.mjs", WEB_SITE, SAMPLE_PATH, "12", Path("page.rgba"), bad};
    if (const char* shot = std::getenv("ZEL_WEB_SCREENSHOT")) args.push_back(shot);
    const RunResult r = Node(args);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const auto result = Fields(r.out);
    EXPECT_EQ(Field(result, "frame"), "12");
    EXPECT_EQ(result.count("pageError"), 0u) << r.out;

    const Image native = Native(SAMPLE_PATH, 12, 0);
    ASSERT_EQ(std::to_string(native.width), Field(result, "width"));
    ASSERT_EQ(std::to_string(native.height), Field(result, "height"));
    const std::string page = ReadFile(Path("page.rgba"));
    const std::vector<Box> text = Boxes(result);
    ASSERT_FALSE(text.empty());
    std::string first;
    EXPECT_EQ(Differences(native, page, text, first), 0) << first;

    // Inside the field: the white field, its black frame (drawn exactly as
    // zelplay draws it) and glyphs in the field's dark blue.
    const Box& box = text[0];
    int frameDifferences = 0, inked = 0;
    for (int y = box[1]; y < box[3]; ++y) {
        for (int x = box[0]; x < box[2]; ++x) {
            const auto* p = reinterpret_cast<const uint8_t*>(&page[(size_t(y) * native.width + x) * 4]);
            const bool edge = x == box[0] || x == box[2] - 1 || y == box[1] || y == box[3] - 1;
            if (edge && (p[0] | p[1] | p[2]) != 0) ++frameDifferences;
            if (!edge && p[2] > p[0] + 40 && p[2] < 200) ++inked;
        }
    }
    EXPECT_EQ(frameDifferences, 0);
    EXPECT_GT(inked, 50);

    EXPECT_NE(Field(result, "error").find("cut.swf: truncated: header declares"), std::string::npos) << r.out;
    EXPECT_EQ(Field(result, "frameAfterError"), "13");
}

}  // namespace
