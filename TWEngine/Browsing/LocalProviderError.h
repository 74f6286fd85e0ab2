#pragma once

#include <exception>
#include <string>

namespace tw {

/// The system's text for an error number, as strerror(3) gives it.
std::string systemText(int errorNumber);

/// Thrown by LocalProvider when it lists.
class LocalProviderError : public std::exception {
public:
    class CannotOpen;
};

class LocalProviderError::CannotOpen final : public LocalProviderError {
public:
    CannotOpen(std::string where, int number);

    char const *what() const noexcept override { return description.c_str(); }

    /// As folderRefusal has it.
    std::string reason() const;

    std::string const path;
    int const errorNumber; ///< as errno had it

private:
    std::string const description; ///< path + ": " + the system's text
};

/// A failed system call that is passed up as it is.
class PlatformError final : public std::exception {
public:
    explicit PlatformError(int number);

    char const *what() const noexcept override { return description.c_str(); }

    int const errorNumber; ///< as errno had it

private:
    std::string const description;
};

} // namespace tw
