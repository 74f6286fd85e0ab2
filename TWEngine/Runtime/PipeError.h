#pragma once

#include <exception>
#include <string>

namespace tw {

/// Thrown by a read from or a write to a child process.
class PipeError final : public std::exception {
public:
    explicit PipeError(int errorNumber);

    /// EPIPE: the child does not read any more. EBADF: this end is no pipe, or we have closed it.
    int errorNumber() const noexcept { return number; }

    /// The text of the system.
    char const *what() const noexcept override { return description.c_str(); }

private:
    int number;
    std::string description;
};

} // namespace tw
