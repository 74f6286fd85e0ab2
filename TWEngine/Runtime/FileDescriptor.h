#pragma once

#include <utility>

#include <unistd.h>

namespace tw {

/// Owns an open file descriptor.
class FileDescriptor {
public:
    /// Takes what open(2) returned; a negative value is no descriptor.
    explicit FileDescriptor(int descriptor = -1) noexcept : number(descriptor) {}

    FileDescriptor(FileDescriptor &&other) noexcept : number(std::exchange(other.number, -1)) {}

    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(number, other.number);
        return *this;
    }

    ~FileDescriptor()
    {
        if (number >= 0)
            ::close(number);
    }

    explicit operator bool() const noexcept { return number >= 0; }

    int get() const noexcept { return number; }

    /// Releases ownership: the caller closes the descriptor.
    int release() noexcept { return std::exchange(number, -1); }

private:
    int number;
};

} // namespace tw
