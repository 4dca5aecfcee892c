// An output file that appears only when complete: data goes to a temporary
// file next to the target, renamed over it by Commit(). Anything that is not
// committed (an error, an exception, Ctrl-C) leaves no file behind.
#pragma once

#include <cstdio>
#include <string>

class OutputFile {
public:
    // Opens a temporary file in path's directory; "-" writes to stdout.
    // Throws ToolError (kExitOutput) when it cannot be created.
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    FILE* stream() const { return file_; }
    const std::string& path() const { return path_; }

    // Flushes, closes and renames into place; throws ToolError on failure.
    void Commit();

private:
    void Discard();

    std::string path_;
    std::string temp_;
    FILE* file_ = nullptr;
};

// Removes a pending temporary file when the process is interrupted.
void InstallOutputCleanupHandlers();
