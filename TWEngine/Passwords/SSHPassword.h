#pragma once

#include "TWEngine/Passwords/SecretText.h"

#include <chrono>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

/// The passwords of hosts and the passphrases of keys, kept in the key store of the session (the Secret Service): never
/// in a file of ours, in an argument, a variable or a log.
///
/// Each is an item with the attributes "service" and "account". The account of a password is the host; that of a
/// passphrase is the absolute path of the key's file. Only `unlock` waits for a person; every other operation fails on
/// a locked key store.
///
/// Threads: may be called from anywhere. Every operation blocks for up to its limit, so it belongs on a worker.
/// Errors: none; without a session bus or a key store there are no passwords.
namespace tw::SSHPassword {

inline constexpr auto service = "Tarnwick SSH";

/// How long a call may take. Starting a key store on demand takes some tenths of a second; a key store that does not
/// answer must not keep ssh waiting until the host drops the connection.
using Limit = std::chrono::milliseconds;
inline constexpr Limit usualLimit{5000};

/// How long the prompt of the desktop may wait for its answer: a person looks up a password, or has left the room.
inline constexpr Limit promptLimit = std::chrono::minutes(2);

/// What the key store has for a host.
enum class Presence {
    none,
    readable,
    locked ///< there is a password, and the key store has to be unlocked before it can be read
};

/// Replaces the password that is saved for the host; an empty password removes it. True on success.
bool save(std::string_view password, std::string const &host, Limit limit = usualLimit);

/// Nothing if there is no password, if it is locked, or if it is not UTF-8.
std::optional<SecretText> read(std::string const &host, Limit limit = usualLimit);

/// The password does not leave the key store.
Presence presence(std::string const &host, Limit limit = usualLimit);

struct Found {
    Presence presence = Presence::none;
    std::string account; ///< empty if there is none
};

/// The first of `accounts` whose password can be read; if there is none, the first with a locked one.
Found find(std::vector<std::string> const &accounts, Limit limit = usualLimit);

/// True if there is a password, locked or not.
bool exists(std::string const &host, Limit limit = usualLimit);

/// Asks the desktop to unlock the password of the host, which shows the desktop's own prompt if the key store is
/// locked. True if the password can be read afterwards.
///
/// Cancellation: `giveUp` and the limit take the prompt from the screen.
bool unlock(std::string const &host, std::stop_token giveUp, Limit limit = promptLimit);

/// True if the key store would save a new password now: it is there and not locked.
bool canSave(Limit limit = usualLimit);

/// True if there was a password and it is removed.
bool remove(std::string const &host, Limit limit = usualLimit);

} // namespace tw::SSHPassword
