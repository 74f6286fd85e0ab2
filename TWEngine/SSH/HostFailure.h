#pragma once

#include "TWEngine/Shell/RemoteShellError.h"

#include <string>
#include <vector>

namespace tw {

/// Why a host could not be reached, as read from what ssh and the host said.
struct HostFailure {
    enum class Cause {
        unknown,
        changedKey,      ///< the host shows another key than the stored one, which the command `subject` removes
        unknownKey,      ///< no key is stored for the host
        revokedKey,      ///< the host shows a key that is marked as revoked
        needsAnswers,    ///< the host takes a password or a code, and nobody was asked
        needsPassphrase, ///< the host takes the key `subject`, whose passphrase is missing
        agentRefused,    ///< the host takes the key `subject`, and the agent does not sign with it
        refusedKeys,     ///< the host takes none of the keys, and nothing else
        noKey,           ///< the host takes nothing but keys, and none was offered
        wrongPassword,   ///< a password or a code was given and refused
        wrongAnswers,    ///< three answers of the user were refused
        cancelledLogin,  ///< the user did not want to answer
        tooManyFailures, ///< the host ended the login after too many keys or passwords
        openKeyFile,     ///< ssh ignores the key `subject`, because other users may read it
        lockedKeyStore,  ///< the password lies in a key store that is locked
        expiredPassword,
        expiredAccount,
        closedForNow, ///< the host lets nobody in, such as during maintenance
        noSuchName,   ///< `subject` is not found
        noNameServer, ///< nobody could be asked for the name
        noRoute,
        refusedConnection,
        timedOut,          ///< in `stage`
        notSSH,            ///< what answers does not speak the protocol
        noCommonAlgorithm, ///< `subject` is the kind of algorithm, `offer` what the host has
        noShell,           ///< the account has none
        onlySftp,
        noSession, ///< the host opens no session, or no further one
        noBash,
        endedShell,       ///< the shell ended before it answered
        replacedShell,    ///< another program answers in place of the shell
        badConfiguration, ///< `subject` is what ssh says of it
        closed,           ///< the host closed the connection in `stage`
        windows,          ///< the host's shell is PowerShell
        noSSH             ///< ssh could not be started; `subject` is the reason
    };

    Cause cause = Cause::unknown;
    std::string host;
    ClientStage stage = ClientStage::reaching;
    bool isOnTheWay = false;                   ///< it happened to the jump host or proxy on the way
    std::string subject = {};                  ///< what it is about, as the cause says
    std::string offer = {};                    ///< the host's algorithms
    std::string shownFingerprint = {};         ///< of the key that the host shows, if it is another than the stored one
    std::string storedFingerprint = {};        ///< of the stored key; empty if it could not be read
    std::string storedAt = {};                 ///< the file and the line of the stored key, "FILE:LINE"
    std::string hostSays = {};                 ///< what the host said, or what is on the way to it; any bytes
    std::vector<std::string> offeredKeys = {}; ///< the paths or comments of the keys that were refused
    std::vector<std::string> offeredMethods = {}; ///< the ways to log in that the host takes

    static HostFailure of(RemoteShellError::ConnectFailed const &failure);

    /// Whether a login in which ssh may ask the user can succeed.
    bool canLogIn() const;

    /// Whether the host takes this way to log in.
    bool takes(std::string_view method) const;

    static constexpr std::size_t maxSaysBytes = 2048;
};

} // namespace tw
