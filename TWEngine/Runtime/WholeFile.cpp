#include "TWEngine/Runtime/WholeFile.h"

#include "TWEngine/Runtime/Uninterrupted.h"

#include <algorithm>
#include <cerrno>

#include <unistd.h>

namespace tw::WholeFile {

namespace {

/// What a read grows its buffer by, so that a wish for a huge chunk of a small file costs a small buffer.
constexpr std::size_t readStep = 1U << 20U;

} // namespace

int write(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        auto const count = uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (count < 0)
            return errno;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return 0;
}

int readUpTo(int descriptor, std::size_t length, std::string &bytes)
{
    while (bytes.size() < length) {
        auto const filled = bytes.size();
        bytes.resize(filled + std::min(length - filled, readStep));
        auto const count =
            uninterrupted([&] { return ::read(descriptor, bytes.data() + filled, bytes.size() - filled); });
        auto const error = count < 0 ? errno : 0;
        bytes.resize(filled + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count <= 0)
            return error;
    }
    return 0;
}

int close(FileDescriptor file)
{
    // Not tried again: an interrupted close(2) has closed it, on Linux.
    return ::close(file.release()) == 0 || errno == EINTR ? 0 : errno;
}

} // namespace tw::WholeFile
