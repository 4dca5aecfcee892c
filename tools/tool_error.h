// The one error type zelplay throws: a message for stderr and the exit code
// that tells scripts which kind of failure happened (documented in --help and
// the README, so the values are part of the tool's interface).
#pragma once

#include <stdexcept>
#include <string>

enum ExitCode : int {
    kExitOk = 0,
    kExitInternal = 1,  // unexpected failure (out of memory, engine refusal)
    kExitUsage = 2,     // bad command line, impossible size or frame range
    kExitInput = 3,     // missing, unreadable, truncated or corrupt movie
    kExitOutput = 4,    // an output file could not be written
};

class ToolError : public std::runtime_error {
public:
    ToolError(ExitCode code, const std::string& message)
        : std::runtime_error(message), code_(code) {}
    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};
