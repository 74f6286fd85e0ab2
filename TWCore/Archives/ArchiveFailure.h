#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>

/// What the words mean with which archive tools fail.
namespace tw::ArchiveFailure {

/// ArchivePasswordError if a password is missing or wrong. Unsupported if the tool asks for one at a terminal only.
/// Otherwise Failed with the words.
std::exception_ptr of(std::string const &operation, std::string const &path, std::string_view words);

/// How often bsdtar has asked for a password. It goes on asking ten thousand times, which takes it half a minute.
std::size_t questionsIn(std::string_view words);

} // namespace tw::ArchiveFailure
