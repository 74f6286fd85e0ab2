#include "TWEngine/SSH/HostFailure.h"

#include "TWCore/Model/Trimmed.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tw {

namespace {

using Cause = HostFailure::Cause;

struct Clue {
    std::string_view words;
    Cause cause;
};

/// What hosts say of an account or a shell: PAM modules of the usual distributions, and shells.
constexpr std::array hostClues{
    Clue{"Password change required", Cause::expiredPassword},
    Clue{"assword has expired", Cause::expiredPassword},
    Clue{"required to change your password", Cause::expiredPassword},
    Clue{"ccount has expired", Cause::expiredAccount},
    Clue{"pam_nologin", Cause::closedForNow},
    Clue{"not permitted to log in", Cause::closedForNow},
    Clue{"ystem is going down", Cause::closedForNow},
    Clue{"sftp connections only", Cause::onlySftp},
    Clue{"This account is currently not available", Cause::noShell},
    Clue{"exec request failed on channel", Cause::noShell},
    Clue{"shell request failed on channel", Cause::noShell},
    Clue{"channel 0: open failed", Cause::noSession},
    Clue{"bash: command not found", Cause::noBash},
    Clue{"bash: Command not found", Cause::noBash},
    Clue{"bash: not found", Cause::noBash},
    Clue{"command not found: bash", Cause::noBash},
    Clue{"Unknown command: bash", Cause::noBash},
};

/// How a connection ends that was there.
constexpr std::array endClues{
    Clue{"Timeout, server", Cause::timedOut},        Clue{"Connection closed by", Cause::closed},
    Clue{"Connection reset by", Cause::closed},      Clue{"closed by remote host", Cause::closed},
    Clue{"Received disconnect from", Cause::closed}, Clue{"Broken pipe", Cause::closed},
};

/// What OpenSSH 8 to 10 says until the login is done. The first clue counts: ssh ends with a line that says less, such
/// as "Permission denied".
constexpr std::array clientClues{
    Clue{"Bad configuration option", Cause::badConfiguration},
    Clue{"Bad owner or permissions on", Cause::badConfiguration},
    Clue{"terminating, ", Cause::badConfiguration},
    Clue{"Missing argument", Cause::badConfiguration},
    Clue{"no argument after keyword", Cause::badConfiguration},
    Clue{"percent_expand: ", Cause::badConfiguration},
    Clue{"Can't open user config file", Cause::badConfiguration},
    Clue{"REMOTE HOST IDENTIFICATION HAS CHANGED", Cause::changedKey},
    Clue{"REVOKED HOST KEY DETECTED", Cause::revokedKey},
    Clue{"Host key verification failed", Cause::unknownKey},
    Clue{"host key is known for", Cause::unknownKey},
    Clue{"Too many authentication failures", Cause::tooManyFailures},
    Clue{"agent refused operation", Cause::agentRefused},
    Clue{"UNPROTECTED PRIVATE KEY FILE", Cause::openKeyFile},
    Clue{"Permission denied (", Cause::needsAnswers}, // decided by what the host takes
    Clue{"Unable to negotiate with", Cause::noCommonAlgorithm},
    Clue{"Temporary failure in name resolution", Cause::noNameServer},
    Clue{"Could not resolve hostname", Cause::noSuchName},
    Clue{"No route to host", Cause::noRoute},
    Clue{"Network is unreachable", Cause::noRoute},
    Clue{"Connection refused", Cause::refusedConnection},
    Clue{"Bad remote protocol version", Cause::notSSH},
    Clue{"invalid protocol identification", Cause::notSSH},
    Clue{"HTTP/1.", Cause::notSSH},
    Clue{"Bad packet length", Cause::notSSH},
    Clue{"timed out", Cause::timedOut},
    Clue{"Not allowed at this time", Cause::closed},
};

/// How a session describes what ssh says nothing of, or what was decided while ssh was still running.
constexpr std::string_view couldNotLaunch = "could not launch ssh: ";
constexpr std::array ownClues{
    Clue{couldNotLaunch, Cause::noSSH},
    Clue{"hosts with a POSIX shell only", Cause::windows},
    Clue{"the key store with the password of this host is locked", Cause::lockedKeyStore},
    Clue{"replaces the shell", Cause::replacedShell},
    Clue{"the login was cancelled", Cause::cancelledLogin},
    Clue{"answers were not accepted", Cause::wrongAnswers},
    Clue{"no response within", Cause::timedOut},
};

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

template <std::size_t Count>
std::optional<Cause> firstClue(std::array<Clue, Count> const &known, std::string_view text)
{
    auto const clue = std::ranges::find_if(known, [text](Clue const &each) { return contains(text, each.words); });
    return clue == known.end() ? std::nullopt : std::optional(clue->cause);
}

std::string_view takeLine(std::string_view &text)
{
    auto const end = std::min(text.find('\n'), text.size());
    auto const line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return trimmed(line);
}

/// The first line that holds `part`, or an empty text.
std::string_view lineWith(std::string_view part, std::string_view text)
{
    while (!text.empty()) {
        auto const line = takeLine(text);
        if (contains(line, part))
            return line;
    }
    return {};
}

/// What stands between two texts, or behind the first one if the second is empty or missing.
std::string between(std::string_view first, std::string_view second, std::string_view text)
{
    auto const start = text.find(first);
    if (start == std::string_view::npos)
        return {};
    auto const rest = text.substr(start + first.size());
    return std::string(trimmed(second.empty() ? rest : rest.substr(0, rest.find(second))));
}

/// A client that talks through a proxy or a jump host knows no address.
constexpr std::string_view unknownPeer = "UNKNOWN port 65535";

bool isOnTheWay(std::string_view words)
{
    return contains(words, unknownPeer) || contains(words, "stdio forwarding failed");
}

/// What the client of the jump host, or the proxy, said itself: the client behind it ends with lines that say less.
std::string wordsOfTheWay(std::string_view words)
{
    std::string own;
    while (!words.empty()) {
        auto const line = takeLine(words);
        constexpr std::array ofClientBehind = {"kex_exchange_identification:", "banner exchange:",
                                               "ssh_dispatch_run_fatal:",      "stdio forwarding failed",
                                               "Warning: Permanently added ",  "** "};
        auto const saysLess = [line](auto const *beginning) { return line.starts_with(beginning); };
        if (!contains(line, unknownPeer) && std::ranges::none_of(ofClientBehind, saysLess))
            own.append(line) += '\n';
    }
    return own;
}

/// Lines of ssh itself, its warnings among them, which are no words of the host.
bool isOfClient(std::string_view line)
{
    constexpr std::array beginnings = {"ssh: ",
                                       "ssh_",
                                       "kex_",
                                       "client_loop: ",
                                       "banner exchange: ",
                                       "Connection closed by ",
                                       "Connection reset by ",
                                       "Connection timed out",
                                       "Connection to ",
                                       "Received disconnect from ",
                                       "Disconnected from ",
                                       "Host key ",
                                       "Load key ",
                                       "Warning: ",
                                       "** ",
                                       "Unable to negotiate with ",
                                       "sign_and_send_pubkey: ",
                                       "mux_client_",
                                       "ControlSocket ",
                                       "ControlPath ",
                                       "Pseudo-terminal ",
                                       "Timeout, server ",
                                       "exec request failed ",
                                       "shell request failed ",
                                       "channel ",
                                       "no such identity: ",
                                       "Permission denied, please try again."};
    return std::ranges::any_of(beginnings, [=](auto const *beginning) { return line.starts_with(beginning); }) ||
           contains(line, ": Permission denied (");
}

std::string hostLines(std::string_view words)
{
    std::string lines;
    while (!words.empty()) {
        auto const line = takeLine(words);
        if (!line.empty() && !isOfClient(line))
            lines.append(lines.empty() ? "" : "\n").append(line);
    }
    return lines;
}

std::string saidByHost(ClientReport const &report, Cause cause)
{
    constexpr std::array silentCauses{Cause::badConfiguration, Cause::changedKey, Cause::revokedKey, Cause::unknownKey,
                                      Cause::openKeyFile,      Cause::noSuchName, Cause::noSSH,      Cause::windows};
    if (std::ranges::find(silentCauses, cause) != silentCauses.end())
        return {};
    auto said = hostLines(report.words);
    if (auto const printed = trimmed(report.printed); !printed.empty())
        said.append(said.empty() ? "" : "\n").append(printed);
    if (said.size() > HostFailure::maxSaysBytes)
        said.resize(HostFailure::maxSaysBytes);
    return said;
}

/// "publickey,password" in "ann@web: Permission denied (publickey,password)."
std::vector<std::string> methodsIn(std::string_view words)
{
    std::vector<std::string> methods;
    auto const list = between("Permission denied (", ")", words);
    for (std::string_view rest = list; !rest.empty();) {
        auto const end = std::min(rest.find(','), rest.size());
        methods.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return methods;
}

/// Why a login was denied.
Cause causeOfDenial(HostFailure const &failure, ClientReport const &report, std::string_view words)
{
    auto const takesAnswers = failure.takes("password") || failure.takes("keyboard-interactive");
    if (contains(words, "please try again") || report.triedMethod == "password" ||
        report.triedMethod == "keyboard-interactive")
        return Cause::wrongPassword;
    if (!report.acceptedKey.empty())
        return Cause::needsPassphrase;
    if (takesAnswers)
        return Cause::needsAnswers;
    return report.offeredKeys.empty() ? Cause::noKey : Cause::refusedKeys;
}

/// "/home/ann/.ssh/config line 3: Bad Match condition", and about a hundred other ends of such a line.
bool namesLineOfFile(std::string_view words)
{
    auto const line = takeLine(words);
    auto const number = line.find(" line ");
    return line.starts_with('/') && number != std::string_view::npos &&
           line.find_first_of("0123456789", number) == number + std::string_view(" line ").size();
}

Cause causeWithoutClue(HostFailure const &failure, ClientReport const &report, std::string_view words)
{
    if (failure.isOnTheWay)
        return Cause::closed;
    if (report.stage == ClientStage::waitingForShell)
        return Cause::endedShell;
    return report.stage == ClientStage::reaching && namesLineOfFile(words) ? Cause::badConfiguration : Cause::unknown;
}

Cause causeOf(HostFailure const &failure, ClientReport const &report, std::string_view words, std::string_view detail)
{
    if (auto const own = firstClue(ownClues, detail))
        return *own;
    if (auto const ofHost = firstClue(hostClues, std::string(words) + '\n' + report.printed))
        return *ofHost;
    // What a start file prints is nothing that the client has said.
    auto const ofClient = report.stage == ClientStage::waitingForShell ? std::nullopt : firstClue(clientClues, words);
    if (ofClient == Cause::needsAnswers)
        return causeOfDenial(failure, report, words);
    if (ofClient)
        return *ofClient;
    if (auto const end = firstClue(endClues, words))
        return *end;
    return causeWithoutClue(failure, report, words);
}

/// ssh gives the fingerprint a line of its own, with a full stop.
void takeKeys(HostFailure &failure, ClientReport const &report, std::string_view words)
{
    constexpr std::string_view announcement = "key sent by the remote host is";
    if (auto const found = words.find(announcement); found != std::string_view::npos) {
        auto rest = trimmed(words.substr(found + announcement.size()));
        failure.shownFingerprint = takeLine(rest);
    }
    if (failure.shownFingerprint.ends_with('.'))
        failure.shownFingerprint.pop_back();
    if (failure.isOnTheWay)
        failure.host = between("Host key for ", " has changed", words);
    failure.storedAt = between(" key in ", "", lineWith("Offending ", words));
    failure.storedFingerprint = report.storedFingerprint;
}

/// What the failure is about, in ssh's own words.
std::string subjectOf(Cause cause, ClientReport const &report, std::string_view words, std::string_view detail)
{
    switch (cause) {
    case Cause::badConfiguration:
        return std::string(takeLine(words)); // later lines only count the first ones
    case Cause::changedKey:
        return std::string(lineWith("ssh-keygen ", words));
    case Cause::needsPassphrase:
    case Cause::agentRefused:
        return report.acceptedKey;
    case Cause::openKeyFile:
        return between("for '", "'", lineWith("are too open", words));
    case Cause::noSuchName:
    case Cause::noNameServer:
        return between("Could not resolve hostname ", ":", words);
    case Cause::noCommonAlgorithm:
        return between("no matching ", " found", words);
    case Cause::noSSH:
        return std::string(detail.substr(std::min(detail.find(couldNotLaunch) + couldNotLaunch.size(), detail.size())));
    default:
        return {};
    }
}

} // namespace

HostFailure HostFailure::of(RemoteShellError::ConnectFailed const &failed)
{
    auto const &report = failed.report;
    auto words = report == ClientReport() ? failed.detail : report.words;

    HostFailure failure{.host = failed.host, .stage = report.stage};
    failure.isOnTheWay = tw::isOnTheWay(words);
    if (failure.isOnTheWay)
        words = wordsOfTheWay(words);
    failure.offeredKeys = report.offeredKeys;
    failure.offeredMethods = methodsIn(words);
    if (failure.offeredMethods.empty())
        failure.offeredMethods = report.offeredMethods;
    failure.cause = causeOf(failure, report, words, failed.detail);
    failure.subject = subjectOf(failure.cause, report, words, failed.detail);
    failure.offer = between("Their offer: ", "\n", words);
    if (failure.cause == Cause::changedKey)
        takeKeys(failure, report, words);
    failure.hostSays = failure.isOnTheWay ? words.substr(0, maxSaysBytes) : saidByHost(report, failure.cause);
    return failure;
}

bool HostFailure::takes(std::string_view method) const
{
    return std::ranges::find(offeredMethods, method) != offeredMethods.end();
}

bool HostFailure::canLogIn() const
{
    switch (cause) {
    case Cause::unknownKey:
    case Cause::needsAnswers:
    case Cause::needsPassphrase:
    case Cause::agentRefused:
    case Cause::noKey: // ssh offers a key in an old file format only when it has the passphrase
    case Cause::wrongPassword:
    case Cause::wrongAnswers:
    case Cause::cancelledLogin:
    case Cause::lockedKeyStore:
        return true;
    case Cause::openKeyFile:
    case Cause::tooManyFailures:
        return takes("password") || takes("keyboard-interactive");
    default:
        return false;
    }
}

} // namespace tw
