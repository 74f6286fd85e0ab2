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

/// The configuration exists, but is no readable file, or is too large.
class SSHConfigError::NotReadable final : public SSHConfigError {
public:
    NotReadable(std::string where, std::string const &why);

    std::string const path;
};

/// The file is unchanged.
class SSHConfigError::NotWritable final : public SSHConfigError {
public:
    NotWritable(std::string where, std::string const &why);

    std::string const path;
};

/// Another program has written the file since it was read. The file is unchanged.
class SSHConfigError::ChangedMeanwhile final : public SSHConfigError {
public:
    explicit ChangedMeanwhile(std::string where);

    std::string const path;
};

} // namespace tw
