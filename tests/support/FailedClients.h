#pragma once

#include "TWEngine/SSH/ClientLog.h"
#include "TWEngine/Shell/RemoteShellError.h"

#include <string>
#include <string_view>

namespace tw::test {

/// What a client wrote to standard error, and the host to standard output, when it did not come up.
inline RemoteShellError::ConnectFailed failed(std::string_view errors, std::string printed = {})
{
    auto const log = ClientLog::maker()([](ClientStage) {});
    log->hear(errors);
    auto report = log->report();
    report.printed = std::move(printed);
    auto const detail = report.words.empty() ? "connection closed" : report.words;
    return {"web", detail, report};
}

/// The time was over while the client was still there.
inline RemoteShellError::ConnectFailed late(std::string_view errors)
{
    return {"web", "no response within 10s", failed(errors).report};
}

inline constexpr auto keyExchanged = "debug1: SSH2_MSG_NEWKEYS received\r\n";
inline constexpr auto loggedIn = "debug1: SSH2_MSG_NEWKEYS received\r\n"
                                 "Authenticated to web ([192.0.2.7]:22) using \"publickey\".\r\n";
inline constexpr auto changedKeyBox =
    "@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@\r\n"
    "@    WARNING: REMOTE HOST IDENTIFICATION HAS CHANGED!     @\r\n"
    "@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@\r\n"
    "IT IS POSSIBLE THAT SOMEONE IS DOING SOMETHING NASTY!\r\n"
    "Someone could be eavesdropping on you right now (man-in-the-middle attack)!\r\n"
    "It is also possible that a host key has just been changed.\r\n"
    "The fingerprint for the ED25519 key sent by the remote host is\n"
    "SHA256:LRCTOAcGZRkm/fgAmRwI0Et7Cie2V/vsuDqad5SLUI8.\r\n"
    "Please contact your system administrator.\r\n"
    "Add correct host key in /home/ann/.ssh/known_hosts to get rid of this message.\r\n"
    "Offending ECDSA key in /home/ann/.ssh/known_hosts:12\r\n"
    "  remove with:\r\n"
    "  ssh-keygen -f \"/home/ann/.ssh/known_hosts\" -R \"web\"\r\n"
    "Host key for web has changed and you have requested strict checking.\r\n"
    "Host key verification failed.\r\n";

} // namespace tw::test
