#pragma once

#include "TWEngine/Passwords/SecretText.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

/// The passwords of hosts that refuse keys, in the key store of the session (the Secret Service): never in a file of
/// ours, in an argument, a variable or a log.
///
/// A password is an item with the attributes "service" and "account". It is never waited for a person: what would need
/// a question first, such as a key store that is locked, fails.
///
/// Threads: all of it may be called from anywhere, and blocks for up to the limit: for a worker.
/// Errors: none; without a session bus or a key store there are no passwords.
namespace tw::SSHPassword {

inline constexpr auto service = "Tarnwick SSH";

/// How long a call may take. A key store that does not answer must not keep ssh waiting until the host gives it up; to
/// start one on demand takes some tenths of a second.
using Limit = std::chrono::milliseconds;
inline constexpr Limit usualLimit{5000};

/// Replaces what is saved for the host; an empty password forgets it. Whether it worked.
bool save(std::string_view password, std::string const &host, Limit limit = usualLimit);

/// Nothing if there is none, or if it is no UTF-8.
std::optional<SecretText> read(std::string const &host, Limit limit = usualLimit);

/// Whether there is one, locked or not. It does not leave the key store.
bool exists(std::string const &host, Limit limit = usualLimit);

/// Whether there was one and it is gone.
bool remove(std::string const &host, Limit limit = usualLimit);

} // namespace tw::SSHPassword
