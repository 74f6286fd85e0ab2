#pragma once

#include <exception>
#include <string>

namespace tw {

/// Thrown by reading from or writing to a child process.
class PipeError final : public std::exception {
public:
    explicit PipeError(int errorNumber);

    /// EPIPE: the child does not read any more. EBADF: this end is no pipe, or was closed on our side.
    int errorNumber() const noexcept { return number; }

    /// The system's words.
    char const *what() const noexcept override { return description.c_str(); }

private:
    int number;
    std::string description;
};

} // namespace tw
