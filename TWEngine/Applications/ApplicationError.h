#pragma once

#include <exception>
#include <string>

namespace tw {

/// Thrown where a file is opened with a program. `what` is the text for the user.
class ApplicationError : public std::exception {
public:
    class NothingOpens;
    class CannotStart;

    char const *what() const noexcept override { return description.c_str(); }

protected:
    explicit ApplicationError(std::string text) : description(std::move(text)) {}

private:
    std::string description;
};

/// No program of this machine says that it opens files of this kind.
class ApplicationError::NothingOpens final : public ApplicationError {
public:
    explicit NothingOpens(std::string const &path) : ApplicationError("no application opens " + path) {}
};

class ApplicationError::CannotStart final : public ApplicationError {
public:
    CannotStart(std::string program, std::string reason)
        : ApplicationError("cannot start " + program + ": " + reason),
          name(std::move(program)),
          detail(std::move(reason))
    {
    }

    std::string const name;
    std::string const detail;
};

} // namespace tw
