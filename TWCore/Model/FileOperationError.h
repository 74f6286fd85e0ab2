#pragma once

#include <exception>
#include <string>

namespace tw {

/// Thrown by writing operations. `what` is the text for the user.
class FileOperationError : public std::exception {
public:
    class Failed;
    class OtherFileSystem;
    class NoTrash;
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

/// A name that was to be renamed leads to another file system, where it has to be copied.
class FileOperationError::OtherFileSystem final : public FileOperationError {
public:
    explicit OtherFileSystem(std::string path);

    std::string const path; ///< what was to be renamed
};

/// The place of `path` has no Trash, or a file is too far from it. Deleting for good may still work.
class FileOperationError::NoTrash final : public FileOperationError {
public:
    NoTrash(std::string path, std::string detail);

    std::string const path; ///< the first that could not be moved; those before it are in the Trash
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
