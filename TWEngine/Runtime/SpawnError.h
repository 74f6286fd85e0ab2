#pragma once

#include <exception>
#include <string>

namespace tw {

/// Why a child process could not be started.
class SpawnError final : public std::exception {
public:
    /// `subject` is the cause: the program, its working directory, or a file for one of its ends.
    SpawnError(int errorNumber, std::string subject);

    /// As the system calls name it: ENOENT, EACCES and so on.
    int errorNumber() const noexcept { return number; }

    std::string const &subject() const noexcept { return failedAt; }

    /// The text of the system without the subject.
    std::string reason() const;

    /// The subject and the reason.
    char const *what() const noexcept override { return description.c_str(); }

private:
    int number;
    std::string failedAt;
    std::string description;
};

} // namespace tw
