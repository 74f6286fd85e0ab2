#include "TWEngine/Passwords/LoginKeyStore.h"

#include "TWEngine/Passwords/SSHPassword.h"

namespace tw {

namespace {

/// A person waits for the question behind it.
constexpr SSHPassword::Limit limit{2000};

} // namespace

LoginKeyStore LoginKeyStore::ofThisSession()
{
    return {.read = [](std::string const &account) { return SSHPassword::read(account, limit); },
            .isOpen = [] { return SSHPassword::canSave(limit); },
            .save = [](std::string_view text, std::string const &account) { SSHPassword::save(text, account); }};
}

} // namespace tw
