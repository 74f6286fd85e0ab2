#pragma once

#include "TWEngine/Passwords/SecretText.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// The key store as a login uses it. By default there is none. Each function blocks, so it belongs on a worker.
struct LoginKeyStore {
    std::function<std::optional<SecretText>(std::string const &account)> read = {};
    /// True if `save` would store a text now.
    std::function<bool()> isOpen = {};
    std::function<void(std::string_view text, std::string const &account)> save = {};

    /// The key store of the session.
    static LoginKeyStore ofThisSession();
};

} // namespace tw
