#pragma once

#include <string>

#include <sys/types.h>

/// Folders that one user owns and nobody else can enter, such as for a socket: a process that can write to a socket of
/// ours could act as the user.
namespace tw::PrivateFolder {

/// True if `folder` is private to `user` now. A link is not followed: its maker decides where it leads.
bool isPrivateTo(uid_t user, std::string const &folder);

/// Creates `folder` if it is missing. True if it is private to `user` now.
bool make(uid_t user, std::string const &folder);

} // namespace tw::PrivateFolder
