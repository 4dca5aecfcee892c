// Bad input and impossible requests: each fails with one stderr line naming
// the file and the cause, the documented exit code, and no output file.
#include "TestMovies.h"
#include "ToolHarness.h"

namespace {

constexpr int kUsage = 2, kInput = 3, kOutput = 4;

class ErrorTest : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        movies::RectMovie m;
        m.frames = 3;
        good_ = Write("good.swf", m.Build());
    }

    // Runs args and checks the failure; every mention must appear on stderr.
    void ExpectFailure(const std::vector<std::string>& args, int code,
                       const std::vector<std::string>& mentions) {
        const std::set<std::string> before = Files();
        const RunResult r = Run(args);
        EXPECT_EQ(r.exitCode, code) << r.err;
        EXPECT_TRUE(OneLine(r.err)) << r.err;
        for (const std::string& m : mentions) EXPECT_NE(r.err.find(m), std::string::npos) << r.err;
        EXPECT_EQ(Files(), before) << "files were left behind";
    }

    std::string good_;
};

TEST_F(ErrorTest, UnreadableOrInvalidMoviesAreInputErrors) {
    const swf::Bytes fws = movies::RectMovie{}.Build();
    swf::Bytes cutTags(fws.begin(), fws.end() - 6);  // last tags cut, header length fixed up
    cutTags[4] = uint8_t(cutTags.size());
    cutTags[5] = uint8_t(cutTags.size() >> 8);
    swf::Bytes corrupt = movies::Compress(fws);
    for (size_t i = 8; i < corrupt.size(); ++i) corrupt[i] ^= 0x5A;
    swf::Bytes bomb = movies::Compress(fws);
    bomb[4] = 0, bomb[5] = 0, bomb[6] = 0, bomb[7] = 0x40;  // 1 GiB declared
    swf::Bytes shortBody = movies::Compress(fws);
    shortBody.resize(shortBody.size() / 2);
    swf::Bytes longer = movies::Compress(fws);
    longer[4] = uint8_t(longer[4] - 1);  // inflates to one byte more than declared
    swf::Bytes emptyFrame = movies::RectMovie{}.Build();

    struct Case {
        std::string name;
        swf::Bytes bytes;
        std::string cause;
    } cases[] = {
        {"text.swf", swf::Bytes{'h', 'e', 'l', 'l', 'o', '\n'}, "not a SWF movie"},
        {"empty.swf", {}, "not a SWF movie"},
        {"header.swf", swf::Bytes{'F', 'W', 'S', 6, 20, 0}, "header is cut short"},
        {"cut.swf", swf::Bytes(fws.begin(), fws.end() - 10), "truncated"},
        {"tags.swf", cutTags, "runs past the end"},
        {"corrupt.swf", corrupt, "corrupt compressed data"},
        {"bomb.swf", bomb, "256 MiB"},
        {"short.swf", shortBody, "ends early"},
        {"longer.swf", longer, "more than the header's declared length"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = Write(c.name, c.bytes);
        ExpectFailure({"info", path}, kInput, {c.name + ": ", c.cause});
        ExpectFailure({"render", path, "-o", Path("o.png"), "--frame", "1"}, kInput, {c.name, c.cause});
    }
    ExpectFailure({"info", Path("missing.swf")}, kInput, {"missing.swf: No such file"});
    ExpectFailure({"render", dir_, "-o", Path("o.png")}, kInput, {"not a regular file"});
}

TEST_F(ErrorTest, MovieWithAnEmptyFrameIsRefused) {
    swf::Movie m;
    m.frame = {0, 0, 0, 1000, 0};
    m.tags.Add(swf::ShowFrame());
    ExpectFailure({"render", Write("flat.swf", m.Build()), "-o", Path("o.png")}, kInput, {"frame is empty"});
}

TEST_F(ErrorTest, ImpossibleRequestsAreUsageErrors) {
    const std::string out = Path("o.png");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"render", good_, "-o", Path("f_%d.png"), "--frames", "2-9"}, "which has frames 1-3"},
        {{"render", good_, "-o", out, "--frame", "0"}, "numbered from 1"},
        {{"render", good_, "-o", out, "--frames", "3-2"}, "frames 3-2"},
        {{"render", good_, "-o", out, "--frames", "x"}, "--frames"},
        {{"render", good_, "-o", out, "--size", "0x10"}, "outside 1..16384"},
        {{"render", good_, "-o", out, "--size", "20000x10"}, "outside 1..16384"},
        {{"render", good_, "-o", out, "--size", "16000x16000"}, "more than 67108864 pixels"},
        {{"render", good_, "-o", out, "--size", "big"}, "WIDTHxHEIGHT"},
        {{"render", good_, "-o", out, "--scale", "-1"}, "--scale"},
        {{"render", good_, "-o", out, "--scale", "500"}, "larger than 16384"},
        {{"render", good_, "-o", out, "--orientation", "4"}, "--orientation"},
        {{"render", good_, "-o", out, "--format", "rgb99"}, "rgb99"},
        {{"render", good_, "-o", out, "--background", "red"}, "--background"},
        {{"render", good_, "-o", out, "--background", "transparent", "--format", "rgb24"}, "alpha"},
        {{"render", good_, "-o", out}, "needs an output pattern"},
        {{"render", good_, "-o", "-"}, "needs an output pattern"},
        {{"render", good_, "-o", Path("%s.png"), "--frame", "1"}, "only %d"},
        {{"render", good_, "-o", Path("%d_%d.png")}, "more than one"},
        {{"render", good_, "-o", out, "--frame", "1", "--frames", "1-2"}, "excludes"},
        {{"render", good_}, "--output"},
        {{"thumb", good_, "-o", out, "--size", "0"}, "thumbnail size"},
        {{"frobnicate"}, "subcommand"},
        {{}, "subcommand"},
    };
    for (const auto& [args, mention] : cases) {
        SCOPED_TRACE(args.empty() ? "(none)" : args.back());
        ExpectFailure(args, kUsage, {mention});
    }
}

TEST_F(ErrorTest, UnwritableOutputIsAnOutputError) {
    const std::string notADir = Write("plain.txt", {'x'});
    ExpectFailure({"render", good_, "-o", notADir + "/o.png", "--frame", "1"}, kOutput, {"plain.txt/o.png"});
    ExpectFailure({"render", good_, "-o", Path("nowhere/f_%d.png")}, kOutput, {"nowhere/f_1.png"});
    ExpectFailure({"thumb", good_, "-o", Path("nowhere/t.png")}, kOutput, {"nowhere/t.png"});
    ExpectFailure({"render", good_, "-o", dir_ + "/", "--frame", "1"}, kOutput, {"directory"});
}

TEST_F(ErrorTest, FailedRenderKeepsAnEarlierFileOfTheSameName) {
    const std::string existing = Write("keep.png", {'o', 'l', 'd'});
    const std::string bad = Write("bad.swf", {'n', 'o', 'p', 'e', 0, 0, 0, 0, 0});
    EXPECT_EQ(Run({"render", bad, "-o", existing, "--frame", "1"}).exitCode, kInput);
    EXPECT_EQ(ReadFile(existing), "old");
}

}  // namespace
