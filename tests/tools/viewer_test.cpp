// zelview under a real X server (an Xvfb started here): the window's
// screenshot after N frames equals `zelplay render --frame N`, a bad movie
// keeps the window and exits with its code, and the desktop integration
// files: the .desktop entry passes desktop-file-validate and the
// thumbnailer's command writes a PNG of the requested size.
#include <csignal>
#include <fstream>
#include <regex>

#include "ToolHarness.h"

namespace {

class ViewerTest : public ToolTest {
protected:
    static void SetUpTestSuite() {
        if (::access("/usr/bin/Xvfb", X_OK) != 0) return;
        int fds[2];
        if (::pipe(fds) != 0) return;
        const std::string fd = std::to_string(fds[1]);
        std::vector<std::string> args{"/usr/bin/Xvfb", "-displayfd", fd, "-screen", "0", "1280x1024x24", "-nolisten",
                                      "tcp"};
        std::vector<char*> argv;
        for (std::string& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        if (posix_spawn(&server_, argv[0], nullptr, nullptr, argv.data(), environ) != 0) server_ = 0;
        ::close(fds[1]);
        char number[16] = {};
        const ssize_t n = server_ ? ::read(fds[0], number, sizeof number - 1) : 0;
        ::close(fds[0]);
        if (n > 0) display_ = ":" + std::string(number, size_t(n - (number[n - 1] == '\n')));
    }
    static void TearDownTestSuite() {
        if (server_ > 0) ::kill(server_, SIGTERM), ::waitpid(server_, nullptr, 0);
    }
    void SetUp() override {
        ToolTest::SetUp();
        if (display_.empty()) GTEST_SKIP() << "no X server could be started (Xvfb from Debian's xvfb is needed)";
    }

    RunResult View(const std::vector<std::string>& args) const {
        std::vector<std::string> all{ZELVIEW_PATH};
        all.insert(all.end(), args.begin(), args.end());
        // SDL loads and unloads the X11 and D-Bus client libraries itself; what
        // they keep shows as leaks from unknown modules under LeakSanitizer.
        // The engine's own memory is checked by the other suites.
        const std::vector<std::string> env{"DISPLAY=" + display_, "HOME=" + dir_, "PATH=/usr/bin:/bin",
                                           "ASAN_OPTIONS=detect_leaks=0:abort_on_error=1"};
        return RunProgram(all, &env);
    }

    static pid_t server_;
    static std::string display_;
};
pid_t ViewerTest::server_ = 0;
std::string ViewerTest::display_;

TEST_F(ViewerTest, TheWindowShowsWhatZelplayRenders) {
    for (int frame : {1, 12, 24}) {
        const RunResult r = View({SAMPLE_PATH, "--frames", std::to_string(frame), "--screenshot", Path("window.png")});
        ASSERT_EQ(r.exitCode, 0) << r.err;
        ASSERT_EQ(Run({"render", SAMPLE_PATH, "-o", Path("render.png"), "--frame", std::to_string(frame), "-q"}).exitCode, 0);
        const Image window = ReadPng("window.png"), render = ReadPng("render.png");
        ASSERT_EQ(window.width, render.width);
        ASSERT_EQ(window.height, render.height);
        int worst = 0;
        for (size_t i = 0; i < render.rgba.size(); ++i)
            worst = std::max(worst, std::abs(int(window.rgba[i]) - int(render.rgba[i])));
        EXPECT_LE(worst, 1) << "frame " << frame;
    }
}

TEST_F(ViewerTest, ABadMovieKeepsTheWindowAndExitsWithItsCode) {
    const struct {
        const char* what;
        std::vector<uint8_t> bytes;
    } cases[] = {{"not a movie", {'h', 'e', 'l', 'l', 'o'}}, {"truncated", {'F', 'W', 'S', 6, 200, 0, 0, 0}}};
    for (const auto& c : cases) {
        const RunResult r = View({Write("bad.swf", c.bytes), "--frames", "3", "--screenshot", Path("window.png")});
        EXPECT_EQ(r.exitCode, 3) << c.what;
        EXPECT_TRUE(OneLine(r.err)) << c.what << ": " << r.err;
        EXPECT_EQ(ReadPng("window.png").width, 640) << c.what; // the window was there
    }
}

TEST_F(ViewerTest, DesktopEntryIsValidAndTheThumbnailerWritesThumbnails) {
    const RunResult valid = RunProgram({"/usr/bin/desktop-file-validate", DESKTOP_DIR "/zelview.desktop"});
    EXPECT_EQ(valid.exitCode, 0) << valid.out << valid.err;
    const std::string thumbnailer = ReadFile(DESKTOP_DIR "/zelplay.thumbnailer");
    std::smatch exec;
    ASSERT_TRUE(std::regex_search(thumbnailer, exec, std::regex("\\nExec=zelplay (.*)\\n"))) << thumbnailer;
    EXPECT_NE(thumbnailer.find("MimeType=application/vnd.adobe.flash.movie;"), std::string::npos);
    std::vector<std::string> args{ZELPLAY_PATH};
    std::istringstream words(exec[1].str());
    for (std::string w; words >> w;)
        args.push_back(w == "%i" ? SAMPLE_PATH : w == "%o" ? Path("thumb.png") : w == "%s" ? "96" : w);
    ASSERT_EQ(RunProgram(args).exitCode, 0);
    const Image thumb = ReadPng("thumb.png");
    EXPECT_EQ(std::max(thumb.width, thumb.height), 96);
}

}  // namespace
