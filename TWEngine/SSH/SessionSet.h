#pragma once

#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/SSH/HostLife.h"
#include "TWEngine/Shell/RemoteShell.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace tw {

/// The sessions with a host that go over one connection, and are made with the same options.
///
/// Two sessions may change places: a session is its object, its role is where it stands.
///
/// Threads: used on the strand of its sessions.
class SessionSet {
public:
    using Role = HostLife::Role;
    using Shell = std::shared_ptr<RemoteShell>;

    static constexpr std::array roles{Role::first,      Role::background, Role::work,
                                      Role::secondWork, Role::thirdWork,  Role::spare};

    /// Makes the session that begins in `role`. `place` is what `roleOf` is asked for later.
    using Maker = std::function<Shell(Role role, std::size_t place)>;

    SessionSet(RemoteShellOptions with, Maker const &make) : options(std::move(with))
    {
        for (auto const role : roles)
            shells.at(index(role)) = make(role, index(role));
    }

    Shell const &shell(Role role) const { return shells.at(index(role)); }

    /// Where the session stands now that was made in `place`.
    Role roleOf(std::size_t place) const { return standing.at(place); }

    /// The spare session becomes the first, and the first the spare one.
    void swapFirstWithSpare()
    {
        std::swap(shells.at(index(Role::first)), shells.at(index(Role::spare)));
        for (auto &role : standing) {
            if (role == Role::first)
                role = Role::spare;
            else if (role == Role::spare)
                role = Role::first;
        }
        coming.at(index(Role::spare)).reset();
    }

    /// The connecting of a session, or of its last time.
    std::optional<SharedTask<void>> &comingUp(Role role) { return coming.at(index(role)); }

    HostLife::Busy busy() const { return {.isFirstHeldUp = shell(Role::first)->isHeldUp(), .work = loads}; }

    HostLife::Load &loadOf(Role workRole) { return loads.at(HostLife::workIndex(workRole)); }

    RemoteShellOptions const options;

private:
    static std::size_t index(Role role) { return static_cast<std::size_t>(role); }

    std::array<Shell, roles.size()> shells;
    std::array<Role, roles.size()> standing = roles;
    std::array<std::optional<SharedTask<void>>, roles.size()> coming;
    std::array<HostLife::Load, HostLife::workRoles.size()> loads = {};
};

} // namespace tw
