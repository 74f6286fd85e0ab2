#pragma once

#include <string>
#include <string_view>

/// The paths of a Windows host.
///
/// Windows has one tree for each drive and no common root. We put the drives below a root of our own, so that every
/// path is absolute and has "/" between its parts: "C:\Users\ann" is "/C:/Users/ann", and the entries of "/" are the
/// drives.
namespace tw::WindowsPath {

inline constexpr std::string_view root = "/";

bool isRoot(std::string_view path) noexcept;

/// The path as the host knows it, with forward slashes: "C:/Users/ann". Empty for the root, which the host does not
/// know.
std::string toNative(std::string_view path);

std::string fromNative(std::string_view native);

/// A path of any host for display: a drive without the slash before it, every other path unchanged.
std::string display(std::string_view path);

} // namespace tw::WindowsPath
