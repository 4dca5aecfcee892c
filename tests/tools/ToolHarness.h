// Test harness for zelplay end-to-end tests: runs the built tool in a fresh
// temporary directory, captures its exit code, stdout and stderr, writes test
// movies there and decodes the PNGs it produces.
#ifndef ZEL_TESTS_TOOLS_TOOLHARNESS_H
#define ZEL_TESTS_TOOLS_TOOLHARNESS_H

#include <gtest/gtest.h>
#include <fcntl.h>
#include <png.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "fixture/SwfBuilder.h"

extern char** environ;

struct RunResult {
    int exitCode = -1;
    std::string out, err;
};

struct Image {
    int width = 0, height = 0;
    std::vector<uint8_t> rgba;
    std::array<int, 4> At(int x, int y) const {
        const uint8_t* p = &rgba.at((size_t(y) * size_t(width) + size_t(x)) * 4);
        return {p[0], p[1], p[2], p[3]};
    }
};

class ToolTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/zelplay_test_XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        dir_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string Path(const std::string& name) const { return dir_ + "/" + name; }

    std::string Write(const std::string& name, const std::vector<uint8_t>& bytes) const {
        std::ofstream(Path(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        return Path(name);
    }

    static std::string ReadFile(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    // Runs zelplay with args, in the test directory, stdout and stderr to files.
    RunResult Run(std::vector<std::string> args) const {
        args.insert(args.begin(), ZELPLAY_PATH);
        return RunProgram(args);
    }

    // env: the environment the program gets (default: this process's).
    RunResult RunProgram(const std::vector<std::string>& args, const std::vector<std::string>* env = nullptr) const {
        std::vector<char*> argv;
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        const std::string outPath = dir_ + "/.stdout", errPath = dir_ + "/.stderr";
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        RunResult r;
        pid_t pid;
        std::vector<char*> envp;
        if (env) {
            for (const std::string& e : *env) envp.push_back(const_cast<char*>(e.c_str()));
            envp.push_back(nullptr);
        }
        if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), env ? envp.data() : environ) == 0) {
            int status = 0;
            ::waitpid(pid, &status, 0);
            r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        posix_spawn_file_actions_destroy(&actions);
        r.out = ReadFile(outPath);
        r.err = ReadFile(errPath);
        std::filesystem::remove(outPath);
        std::filesystem::remove(errPath);
        return r;
    }

    // Names in the test directory, hidden capture files excluded.
    std::set<std::string> Files() const {
        std::set<std::string> names;
        for (const auto& e : std::filesystem::directory_iterator(dir_)) {
            const std::string name = e.path().filename().string();
            if (name != ".stdout" && name != ".stderr") names.insert(name);
        }
        return names;
    }

    static Image DecodePng(const std::string& bytes) {
        Image img;
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) return img;
        image.format = PNG_FORMAT_RGBA;
        img.width = int(image.width);
        img.height = int(image.height);
        img.rgba.resize(PNG_IMAGE_SIZE(image));
        if (!png_image_finish_read(&image, nullptr, img.rgba.data(), 0, nullptr)) return Image{};
        return img;
    }

    Image ReadPng(const std::string& name) const { return DecodePng(ReadFile(Path(name))); }

    std::string dir_;
};

// One line on stderr, naming what failed.
inline bool OneLine(const std::string& s) {
    return !s.empty() && s.back() == '\n' && s.find('\n') == s.size() - 1;
}

#endif
