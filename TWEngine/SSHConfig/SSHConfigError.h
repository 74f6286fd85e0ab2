#pragma once

#include <exception>
#include <string>

namespace tw {

/// Why the user's ssh configuration was not read or written. `what` is the text for the user.
class SSHConfigError : public std::exception {
public:
    class NotReadable;
    class NotWritable;
    class ChangedMeanwhile;

    char const *what() const noexcept override { return description.c_str(); }

protected:
    explicit SSHConfigError(std::string text) : description(std::move(text)) {}

private:
    std::string const description;
};

/// It is there, and is no file that can be read, or is too large for one.
class SSHConfigError::NotReadable final : public SSHConfigError {
public:
    NotReadable(std::string where, std::string const &why);

    std::string const path;
};

/// The file is as it was.
class SSHConfigError::NotWritable final : public SSHConfigError {
public:
    NotWritable(std::string where, std::string const &why);

    std::string const path;
};

/// Somebody else wrote it since it was read. It is as they left it.
class SSHConfigError::ChangedMeanwhile final : public SSHConfigError {
public:
    explicit ChangedMeanwhile(std::string where);

    std::string const path;
};

} // namespace tw
