#pragma once

#include <string>
#include <string_view>

/// The paths of a Windows host.
///
/// Windows has a tree for each drive and none above them. Here they hang below a root of our own, so that a path of any
/// host is absolute and has "/" between its parts: "C:\Users\ann" is "/C:/Users/ann", and the entries of "/" are the
/// drives.
namespace tw::WindowsPath {

inline constexpr std::string_view root = "/";

bool isRoot(std::string_view path) noexcept;

/// As the host knows it, with its slashes forward: "C:/Users/ann". The root, which the host does not know, is empty.
std::string toNative(std::string_view path);

std::string fromNative(std::string_view native);

/// What a person is shown for a path of any host: a drive without the slash before it, everything else as it is.
std::string display(std::string_view path);

} // namespace tw::WindowsPath
