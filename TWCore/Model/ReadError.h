#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace tw {

/// Thrown by reading operations. `what` is the text for the user.
class ReadError : public std::exception {
public:
    class NotReadable;
    class TooLarge;

    char const *what() const noexcept override { return description.c_str(); }

protected:
    explicit ReadError(std::string text) : description(std::move(text)) {}

private:
    std::string description;
};

class ReadError::NotReadable final : public ReadError {
public:
    NotReadable(std::string path, std::string detail);

    std::string const path;
    std::string const detail;
};

class ReadError::TooLarge final : public ReadError {
public:
    /// `bytes` and `limit` are sizes in bytes.
    TooLarge(std::string path, std::int64_t bytes, std::int64_t limit);

    std::string const path;
    std::int64_t const bytes;
    std::int64_t const limit;
};

} // namespace tw
