#include "TWCore/Model/WindowsPath.h"

namespace tw::WindowsPath {

bool isRoot(std::string_view path) noexcept
{
    return path == root;
}

std::string toNative(std::string_view path)
{
    if (!path.empty())
        path.remove_prefix(1);
    return std::string(path);
}

std::string fromNative(std::string_view native)
{
    std::string path(root);
    path += native;
    std::ranges::replace(path, '\\', '/');
    return path;
}

std::string display(std::string_view path)
{
    constexpr std::size_t shortestDrive = 3; // "/C:"
    auto const native = toNative(path);
    // A drive is one letter.
    bool const hasDrive = path.size() >= shortestDrive && native.find(':') == 1;
    return hasDrive ? native : std::string(path);
}

} // namespace tw::WindowsPath
