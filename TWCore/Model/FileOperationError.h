#pragma once

#include <exception>
#include <string>

namespace tw {

/// Thrown by writing operations. `what` is the text for the user.
class FileOperationError : public std::exception {
public:
    class Failed;
    class Unsupported;
    class Cancelled;

    char const *what() const noexcept override { return description.c_str(); }

protected:
    explicit FileOperationError(std::string text) : description(std::move(text)) {}

private:
    std::string description;
};

class FileOperationError::Failed final : public FileOperationError {
public:
    Failed(std::string operation, std::string path, std::string detail);

    std::string const operation;
    std::string const path;
    std::string const detail;
};

class FileOperationError::Unsupported final : public FileOperationError {
public:
    explicit Unsupported(std::string detail);

    std::string const detail; ///< what cannot be done, and why
};

class FileOperationError::Cancelled final : public FileOperationError {
public:
    Cancelled();
};

} // namespace tw
