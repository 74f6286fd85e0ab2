#pragma once

#include "TWEngine/Passwords/SecretText.h"

#include <string>

namespace tw {

/// A question that ssh asks while it logs in, as read from its prompt, or a like one.
struct LoginQuestion {
    enum class Kind {
        password,
        passphrase, ///< of the key `keyPath`
        hostKey,    ///< whether the unknown key of a host is right; answered with "yes" or "no"
        confirm,    ///< yes or no, such as for the use of a key in an agent
        archive,    ///< the password of the archive `host`
        notice,     ///< nothing to answer, such as "touch your key"; it goes by itself
        other       ///< a one-time code, or whatever else a host asks
    };

    Kind kind = Kind::other;
    std::string host;        ///< as the user calls it
    std::string prompt;      ///< ssh's own words, UTF-8, cleaned of control characters, at most 2 KiB
    std::string keyPath;     ///< of a passphrase
    std::string keyType;     ///< of a host key, such as "ED25519"
    std::string fingerprint; ///< of a host key, such as "SHA256:…"
    int attempt = 1;         ///< counts how often ssh has asked this in this login
    /// The answer may be kept in the key store.
    bool canBeRemembered = false;
};

/// What the user answered.
struct LoginAnswer {
    SecretText text{""};
    bool remember = false;
};

} // namespace tw
