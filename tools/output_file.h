// An output file that appears only when complete: data goes to a temporary
// file next to the target, renamed over it by Commit(). Anything that is not
// committed (an error, an exception, Ctrl-C) leaves no file behind, and a
// child process writing it (ffmpeg) is stopped on Ctrl-C too.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>

class OutputFile {
public:
    // Opens a temporary file in path's directory; "-" writes to stdout. With
    // keepExtension the temporary name ends in path's extension (for a
    // program that picks its format by name). Throws ToolError (kExitOutput)
    // when it cannot be created.
    explicit OutputFile(const std::string& path, bool keepExtension = false);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    FILE* stream() const { return file_; }
    const std::string& path() const { return path_; }
    // The temporary file's name, for another process to write; after
    // CloseStream this object only renames or removes it.
    const std::string& temp() const { return temp_; }
    void CloseStream();

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
// A child process (0: none) to be killed, too, when the process is interrupted.
void SetPendingChild(pid_t child);
