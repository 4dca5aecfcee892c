// Temporary-then-rename output files. The pending temporary name is also kept
// in a fixed buffer so that a signal handler can unlink it (unlink is safe to
// call from a handler; nothing else there is).
#include "output_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "tool_error.h"

namespace {

char g_pendingTemp[4096];
volatile pid_t g_pendingChild = 0;

void OnSignal(int signo) {
    if (g_pendingChild > 0) ::kill(g_pendingChild, SIGKILL);
    if (g_pendingTemp[0]) ::unlink(g_pendingTemp);
    std::signal(signo, SIG_DFL);
    std::raise(signo);
}

void SetPending(const std::string& temp) {
    const size_t n = temp.size() < sizeof g_pendingTemp - 1 ? temp.size() : 0;
    std::memcpy(g_pendingTemp, temp.data(), n);
    g_pendingTemp[n] = '\0';
}

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    throw ToolError(kExitOutput, path + ": " + cause);
}

}  // namespace

void SetPendingChild(pid_t child) { g_pendingChild = child; }

void InstallOutputCleanupHandlers() {
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
    std::signal(SIGHUP, OnSignal);
}

OutputFile::OutputFile(const std::string& path, bool keepExtension) : path_(path) {
    if (path == "-") {
        file_ = stdout;
        return;
    }
    const size_t slash = path.rfind('/');
    const std::string dir = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    if (base.empty()) Fail(path, "output name is a directory");
    const size_t dot = base.rfind('.');
    const std::string suffix = keepExtension && dot != std::string::npos ? base.substr(dot) : "";
    std::string pattern = dir + "." + base + ".XXXXXX" + suffix;
    const int fd = ::mkstemps(pattern.data(), int(suffix.size()));
    if (fd < 0) Fail(path, std::string("cannot create output: ") + std::strerror(errno));
    temp_ = pattern;
    SetPending(temp_);
    // mkstemp makes the file private (0600); give it the usual permissions.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);
    file_ = ::fdopen(fd, "wb");
    if (!file_) {
        ::close(fd);
        Discard();
        Fail(path, std::string("cannot open output: ") + std::strerror(errno));
    }
}

OutputFile::~OutputFile() { Discard(); }

void OutputFile::CloseStream() {
    if (file_ && file_ != stdout) std::fclose(file_);
    file_ = nullptr;
}

void OutputFile::Discard() {
    if (file_ && file_ != stdout) std::fclose(file_);
    file_ = nullptr;
    if (!temp_.empty()) {
        ::unlink(temp_.c_str());
        temp_.clear();
        g_pendingTemp[0] = '\0';
    }
}

void OutputFile::Commit() {
    if (file_ == stdout) {
        if (std::fflush(stdout) != 0) Fail("<stdout>", std::strerror(errno));
        file_ = nullptr;
        return;
    }
    const bool written = !file_ || std::ferror(file_) == 0;
    const int closed = file_ ? std::fclose(file_) : 0;
    file_ = nullptr;
    if (!written || closed != 0) {
        const int err = errno;
        Discard();
        Fail(path_, std::string("write error: ") + std::strerror(err ? err : EIO));
    }
    if (::rename(temp_.c_str(), path_.c_str()) != 0) {
        const int err = errno;
        Discard();
        Fail(path_, std::string("cannot rename into place: ") + std::strerror(err));
    }
    temp_.clear();
    g_pendingTemp[0] = '\0';
}
