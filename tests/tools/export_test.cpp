// `zelplay render` to one animation file: an animated WebP decoded back with
// libwebp's demuxer (frames, merged durations, loop count, pixels equal to
// the PNGs of the same frames), videos checked with ffprobe and one decoded
// frame against its PNG, and failures that leave no file behind.
#include <webp/demux.h>

#include <csignal>
#include <cmath>
#include <cstdlib>
#include <sys/stat.h>

#include "ToolHarness.h"

namespace {

// A rectangle that stands still on frames 2 and 4 and moves on 3 and 5, at
// 12 frames per second.
swf::Bytes StopAndGo() {
    swf::Movie m;
    m.frame = swf::Rect{0, 2000, 0, 1600, 0};
    m.tags.Add(swf::SetBackgroundColor({0, 0, 255, 255}));
    swf::Shape s({swf::Fill::Solid({255, 0, 0, 255})});
    s.Fill1(1).MoveTo(0, 0).LineTo(400, 0).LineTo(400, 400).LineTo(0, 400).LineTo(0, 0);
    m.tags.Add(swf::DefineShape(1, {0, 400, 0, 400, 0}, s, 3));
    const int x[] = {100, 100, 600, 600, 1100};
    for (int f = 0; f < 5; ++f) {
        swf::Place2 p;
        p.depth = 1, p.move = f > 0, p.matrix = swf::Matrix::Translate(x[f], 300);
        if (f == 0) p.characterId = 1;
        m.tags.Add(swf::PlaceObject2(p)).Add(swf::ShowFrame());
    }
    return m.Build();
}

struct WebpFrame {
    Image image;
    int endMs;
};

class ExportTest : public ToolTest {
protected:
    std::vector<WebpFrame> DecodeWebp(const std::string& name, uint32_t* loops = nullptr) const {
        const std::string bytes = ReadFile(Path(name));
        WebPData data{reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()};
        WebPAnimDecoderOptions options;
        WebPAnimDecoderOptionsInit(&options);
        options.color_mode = MODE_RGBA;
        WebPAnimDecoder* decoder = WebPAnimDecoderNew(&data, &options);
        std::vector<WebpFrame> frames;
        if (!decoder) return frames;
        WebPAnimInfo info;
        WebPAnimDecoderGetInfo(decoder, &info);
        if (loops) *loops = info.loop_count;
        uint8_t* rgba;
        int timestamp;
        while (WebPAnimDecoderGetNext(decoder, &rgba, &timestamp)) {
            WebpFrame f{Image{int(info.canvas_width), int(info.canvas_height), {}}, timestamp};
            f.image.rgba.assign(rgba, rgba + size_t(info.canvas_width) * info.canvas_height * 4);
            frames.push_back(std::move(f));
        }
        WebPAnimDecoderDelete(decoder);
        return frames;
    }

    Image RenderPng(const std::string& movie, int frame) {
        const RunResult r = Run({"render", movie, "-o", Path("frame.png"), "--frame", std::to_string(frame), "-q"});
        EXPECT_EQ(r.exitCode, 0) << r.err;
        return ReadPng("frame.png");
    }

    std::string Probe(const std::string& name) const {
        return RunProgram({"/usr/bin/ffprobe", "-v", "error", "-count_frames", "-select_streams", "v:0",
                           "-show_entries", "stream=codec_name,width,height,r_frame_rate,nb_read_frames", "-of",
                           "default=noprint_wrappers=1", Path(name)})
            .out;
    }
};

TEST_F(ExportTest, AnimatedWebpHasTheMoviesFramesDurationsAndPixels) {
    const std::string movie = Write("movie.swf", StopAndGo());
    RunResult r = Run({"render", movie, "-o", Path("movie.webp"), "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    uint32_t loops = 99;
    const std::vector<WebpFrame> frames = DecodeWebp("movie.webp", &loops);
    // Frames 2 and 4 repeat 1 and 3: they only lengthen them. At 12 frames
    // per second frames end at 167, 333 and 417 ms from the start.
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(loops, 0u);
    const int ends[] = {167, 333, 417}, shown[] = {1, 3, 5};
    for (size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].endMs, ends[i]) << i;
        const Image png = RenderPng(movie, shown[i]);
        EXPECT_EQ(frames[i].image.width, png.width);
        EXPECT_EQ(frames[i].image.height, png.height);
        EXPECT_EQ(frames[i].image.rgba, png.rgba) << "frame " << shown[i];
    }
    // Options: a loop count, a repeated timeline, a range of frames, lossy.
    r = Run({"render", movie, "-o", Path("twice.webp"), "--loop", "3", "--repeat", "2", "--frames", "3-5",
             "--quality", "60", "--scale", "0.5", "-q"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::vector<WebpFrame> twice = DecodeWebp("twice.webp", &loops);
    EXPECT_EQ(loops, 3u);
    ASSERT_EQ(twice.size(), 4u); // 3 (4), 5, 3 (4), 5
    EXPECT_EQ(twice.back().endMs, 500);
    EXPECT_EQ(twice[0].image.width, 50);
}

TEST_F(ExportTest, VideosHaveTheCodecSizeRateAndFramesAndShowTheMovie) {
    const std::string movie = Write("movie.swf", StopAndGo());
    const struct {
        const char *name, *codec, *size;
        std::vector<std::string> options;
        int frames;
    } cases[] = {
        {"movie.mp4", "h264", "width=102\nheight=82", {"--size", "101x81"}, 5},
        {"movie.webm", "vp9", "width=100\nheight=80", {"--repeat", "2"}, 10},
        {"movie.mkv", "h264", "width=100\nheight=80", {"--crf", "18"}, 5},
    };
    for (const auto& c : cases) {
        std::vector<std::string> args{"render", movie, "-o", Path(c.name), "-q"};
        args.insert(args.end(), c.options.begin(), c.options.end());
        const RunResult r = Run(args);
        ASSERT_EQ(r.exitCode, 0) << c.name << ": " << r.err;
        const std::string probe = Probe(c.name);
        EXPECT_NE(probe.find(std::string("codec_name=") + c.codec), std::string::npos) << c.name << "\n" << probe;
        EXPECT_NE(probe.find(c.size), std::string::npos) << c.name << "\n" << probe;
        EXPECT_NE(probe.find("r_frame_rate=12/1"), std::string::npos) << c.name << "\n" << probe;
        EXPECT_NE(probe.find("nb_read_frames=" + std::to_string(c.frames)), std::string::npos) << c.name << "\n" << probe;
    }
    // Frame 3 (index 2) of the sample decoded from H.264 at crf 18 is close
    // to its PNG: a peak signal-to-noise ratio above 30 dB (36.6 measured;
    // the loss is mostly the halved colour resolution of yuv420p at edges).
    ASSERT_EQ(Run({"render", SAMPLE_PATH, "-o", Path("sample.mkv"), "--crf", "18", "-q"}).exitCode, 0);
    ASSERT_EQ(RunProgram({"/usr/bin/ffmpeg", "-v", "error", "-i", Path("sample.mkv"), "-vf", "select=eq(n\\,2)",
                          "-vframes", "1", Path("decoded.png")})
                  .exitCode,
              0);
    const Image decoded = ReadPng("decoded.png"), png = RenderPng(SAMPLE_PATH, 3);
    ASSERT_EQ(decoded.rgba.size(), png.rgba.size());
    double squares = 0;
    for (size_t i = 0; i < png.rgba.size(); ++i)
        if (i % 4 != 3) squares += std::pow(double(decoded.rgba[i]) - png.rgba[i], 2);
    const double psnr = 10 * std::log10(255.0 * 255.0 / (squares / double(png.rgba.size() * 3 / 4) + 1e-9));
    EXPECT_GT(psnr, 30.0);
}

TEST_F(ExportTest, FailuresExitWithTheirCodeAndLeaveNoFile) {
    const std::string movie = Write("movie.swf", StopAndGo());
    ::mkdir(Path("bin").c_str(), 0755);
    std::ofstream(Path("bin/ffmpeg")) << "#!/bin/sh\n/usr/bin/head -c 1000 >/dev/null\necho 'encoder exploded' >&2\nexit 1\n";
    ::chmod(Path("bin/ffmpeg").c_str(), 0755);
    ::mkdir(Path("empty").c_str(), 0755);
    const std::vector<std::string> dying{"PATH=" + Path("bin")}, noFfmpeg{"PATH=" + Path("empty")};
    const struct {
        const char* what;
        std::string output;
        const std::vector<std::string>* env;
        int code;
        const char* message;
    } cases[] = {
        {"unwritable directory", Path("missing/movie.webp"), nullptr, 4, "missing/movie.webp"},
        {"unwritable video directory", Path("missing/movie.mp4"), nullptr, 4, "missing/movie.mp4"},
        {"no ffmpeg", Path("movie.mp4"), &noFfmpeg, 2, "apt-get install ffmpeg"},
        {"ffmpeg dies", Path("movie.webm"), &dying, 4, "ffmpeg failed: encoder exploded"},
    };
    const std::set<std::string> before = Files();
    for (const auto& c : cases) {
        const RunResult r = RunProgram({ZELPLAY_PATH, "render", movie, "-o", c.output, "-q"}, c.env);
        EXPECT_EQ(r.exitCode, c.code) << c.what << ": " << r.err;
        EXPECT_TRUE(OneLine(r.err)) << c.what << ": " << r.err;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << c.what << ": " << r.err;
        EXPECT_EQ(Files(), before) << c.what;
    }
}

// Ctrl-C in the middle of a video stops ffmpeg and removes the partial file.
TEST_F(ExportTest, InterruptingAVideoLeavesNoFileNorFfmpeg) {
    ::mkdir(Path("bin").c_str(), 0755);
    std::ofstream(Path("bin/ffmpeg")) << "#!/bin/sh\necho $$ > " << Path("ffmpeg.pid") << "\nexec /bin/cat >/dev/null\n";
    ::chmod(Path("bin/ffmpeg").c_str(), 0755);
    const std::set<std::string> before = Files();
    const std::string path = "PATH=" + Path("bin");
    std::vector<std::string> args{ZELPLAY_PATH, "render", SAMPLE_PATH, "-o", Path("long.mp4"), "--repeat", "1000", "-q"};
    std::vector<char*> argv, envp{const_cast<char*>(path.c_str()), nullptr};
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid;
    ASSERT_EQ(posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), envp.data()), 0);
    for (int i = 0; i < 500 && ReadFile(Path("ffmpeg.pid")).empty(); ++i) ::usleep(10000);
    const pid_t child = std::atoi(ReadFile(Path("ffmpeg.pid")).c_str());
    ASSERT_GT(child, 0);
    ::kill(pid, SIGINT);
    int status = 0;
    ::waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
    bool gone = false;
    for (int i = 0; i < 200 && !gone; ++i, ::usleep(10000)) gone = ::kill(child, 0) != 0;
    EXPECT_TRUE(gone);
    std::set<std::string> after = Files();
    after.erase("ffmpeg.pid");
    EXPECT_EQ(after, before);
}

}  // namespace
