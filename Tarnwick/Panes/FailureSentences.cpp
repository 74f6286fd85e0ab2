#include "Tarnwick/Panes/FailureSentences.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/Trimmed.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tw {

namespace {

using Cause = HostFailure::Cause;

/// A strip of three lines has room for about twice as much.
constexpr std::size_t maxQuotedBytes = 160;

/// A sentence, and the same for where the host is named by "HOST says: …" behind it.
struct Sentence {
    char const *withHost;
    char const *besideItsWords = nullptr; ///< null: the words of the host say nothing more
};

Text joined(Text first, Text second)
{
    return {"%@ %@", {std::move(first), std::move(second)}};
}

std::string hostName(HostFailure const &failure)
{
    return withNothingHidden(failure.host);
}

std::string fileName(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

/// "id_ed25519, id_rsa"
std::string keyNames(HostFailure const &failure)
{
    constexpr std::size_t mostNamed = 3; // all of them are among the details
    std::string names;
    for (std::size_t i = 0; i < std::min(failure.offeredKeys.size(), mostNamed); ++i)
        names += (names.empty() ? "" : ", ") + withNothingHidden(fileName(failure.offeredKeys[i]));
    return failure.offeredKeys.size() > mostNamed ? names + ", …" : names;
}

Text refusedKeysText(HostFailure const &failure)
{
    return {failure.offeredKeys.size() == 1 ? "It refused the key %@." : "It refused the keys %@.",
            {keyNames(failure)}};
}

Text neededAnswers(HostFailure const &failure)
{
    auto const *const wants = !failure.takes("keyboard-interactive") ? "%@ wants a password."
                              : failure.takes("password")            ? "%@ wants a password or a code."
                                                          : "%@ wants an answer, such as a password or a code.";
    Text const wanted{wants, {hostName(failure)}};
    if (failure.offeredKeys.empty())
        return joined(wanted, "Log in to give it.");
    return joined(joined(wanted, refusedKeysText(failure)), "Log in to answer.");
}

Text refusedKeys(HostFailure const &failure)
{
    auto const *const refused = failure.offeredKeys.size() == 1 ? "%@ refused the key %@." : "%@ refused the keys %@.";
    return joined({refused, {hostName(failure), keyNames(failure)}},
                  "Add one to ~/.ssh/authorized_keys there, or name the right one in ~/.ssh/config.");
}

Text missingKey(HostFailure const &failure)
{
    if (failure.takes("publickey") || failure.offeredMethods.empty())
        return {"%@ takes only keys, and ssh had none to offer. Make one with ssh-keygen, or name it in ~/.ssh/config.",
                {hostName(failure)}};
    return {"%@ takes none of the usual ways to log in, only %@.",
            {hostName(failure), withNothingHidden(failure.offeredMethods.front())}};
}

Text changedKey(HostFailure const &failure)
{
    Text changed{"The key of %@ has changed. This happens when it was installed anew, or when somebody stands in "
                 "between.",
                 {hostName(failure)}};
    if (failure.storedAt.empty())
        return changed;
    return joined(changed, {"The old key is in %@.", {fileName(failure.storedAt)}});
}

Sentence timedOut(ClientStage stage)
{
    switch (stage) {
    case ClientStage::reaching:
        return {"%@ does not answer. It may be switched off, or a firewall may be in between."};
    case ClientStage::loggingIn:
        return {"%@ did not finish the login in time. It may be busy; try again later."};
    case ClientStage::waitingForShell:
        break;
    }
    return {"The shell of %@ does not answer. A start file such as .bashrc may wait, or start another program.",
            "You are logged in, but the shell does not answer."};
}

Sentence closed(ClientStage stage)
{
    switch (stage) {
    case ClientStage::reaching:
        return {"%@ closed the connection at once. It may have too many, or shut this computer out for a while.",
                "The connection was closed at once."};
    case ClientStage::loggingIn:
        return {"%@ closed the connection during the login. Try again later.",
                "The connection was closed during the login."};
    case ClientStage::waitingForShell:
        break;
    }
    return {"%@ closed the connection before its shell answered. Try again.",
            "The connection was closed before the shell answered."};
}

struct Row {
    Cause cause;
    Sentence sentence;
};

/// Of the causes that need nothing but the name of the host.
constexpr std::array sentences{
    Row{Cause::unknown, {"%@ could not be reached. The details have what is known."}},
    Row{Cause::unknownKey, {"The key of %@ is not known yet. Log in to see it and to decide."}},
    Row{Cause::revokedKey, {"The key of %@ is marked as revoked. Ask for its new key before you go on."}},
    Row{Cause::wrongPassword, {"%@ refused the password or code. Log in to give another one."}},
    Row{Cause::wrongAnswers, {"%@ accepted none of three answers. Log in to try again."}},
    Row{Cause::cancelledLogin, {"The login to %@ was cancelled. Log in to be asked again."}},
    Row{Cause::tooManyFailures,
        {"%@ ended the login after too many tries. Name the right key in ~/.ssh/config, with IdentitiesOnly yes."}},
    Row{Cause::lockedKeyStore, {"The password for %@ is in a key store that is locked. Unlock it, or log in."}},
    Row{Cause::expiredPassword, {"Your password on %@ has expired. Log in with ssh in a terminal to set a new one."}},
    Row{Cause::expiredAccount, {"Your account on %@ has expired. Only those who run the host can renew it."}},
    Row{Cause::closedForNow, {"%@ lets nobody in at the moment. Try again later.", "Nobody is let in at the moment."}},
    Row{Cause::noRoute, {"There is no way to %@ from here. Check the network, or the VPN."}},
    Row{Cause::refusedConnection,
        {"%@ refuses connections. Its ssh server is not running, or listens on another port."}},
    Row{Cause::notSSH, {"What answers at %@ is no ssh server. Check the port in ~/.ssh/config."}},
    Row{Cause::noShell,
        {"Your account on %@ has no shell. Those who run the host can give it one.", "Your account has no shell."}},
    Row{Cause::onlySftp, {"%@ gives your account no shell, only sftp. Tarnwick needs a shell there."}},
    Row{Cause::noSession, {"%@ lets you in, but opens no session. It may have too many; try again later."}},
    Row{Cause::noBash, {"%@ has no bash, which Tarnwick needs there. It has to be installed first."}},
    Row{Cause::endedShell,
        {"The shell of %@ ended before it answered. A start file such as .bashrc may end it.",
         "The shell ended before it answered."}},
    Row{Cause::replacedShell,
        {"A start file on %@ replaces the shell by another program. Let it do so only in terminals."}},
    Row{Cause::windows, {"%@ runs Windows. Folders of such hosts cannot be shown yet."}},
};

Sentence sentenceFor(HostFailure const &failure)
{
    if (failure.cause == Cause::timedOut)
        return timedOut(failure.stage);
    if (failure.cause == Cause::closed)
        return closed(failure.stage);
    auto const *const row = std::ranges::find(sentences, failure.cause, &Row::cause);
    return row != sentences.end() ? row->sentence : sentences.front().sentence;
}

/// The text of a cause that is about more than the host, or nothing.
std::optional<Text> textWithSubject(HostFailure const &failure)
{
    switch (failure.cause) {
    case Cause::changedKey:
        return changedKey(failure);
    case Cause::needsAnswers:
        return neededAnswers(failure);
    case Cause::refusedKeys:
        return refusedKeys(failure);
    case Cause::noKey:
        return missingKey(failure);
    case Cause::needsPassphrase:
        return Text{"The key %@ for %@ needs its passphrase. Log in to give it, or add the key to your agent.",
                    {fileName(failure.subject), hostName(failure)}};
    case Cause::agentRefused:
        return Text{"Your agent did not use the key %@ for %@. Unlock the agent, or confirm when it asks.",
                    {fileName(failure.subject), hostName(failure)}};
    case Cause::openKeyFile:
        return Text{"ssh ignores the key %@, because other users may read it. Take that right from them: chmod 600.",
                    {failure.subject}};
    case Cause::badConfiguration:
        return Text{"ssh does not accept its configuration: %@", {quotedOnOneLine(failure.subject)}};
    case Cause::noSuchName:
        return Text{"There is no host with the name %@. Check the name, or HostName in ~/.ssh/config.",
                    {withNothingHidden(failure.subject)}};
    case Cause::noNameServer:
        return Text{"The name %@ could not be looked up. Check the network of this computer.",
                    {withNothingHidden(failure.subject)}};
    case Cause::noCommonAlgorithm:
        return Text{"ssh and %@ have no %@ in common. The host has only %@, which ~/.ssh/config would have to allow.",
                    {hostName(failure), failure.subject, quotedOnOneLine(failure.offer)}};
    case Cause::unknown:
        if (auto const words = quotedOnOneLine(failure.hostSays); !words.empty())
            return Text{"%@ could not be reached. The last words were: %@", {hostName(failure), words}};
        break;
    case Cause::noSSH:
        return Text{"ssh could not be started: %@. Install the OpenSSH client.", {failure.subject}};
    default:
        break;
    }
    return std::nullopt;
}

Text onTheWay(HostFailure const &failure)
{
    Text const failed{"The jump host or proxy on the way to %@ failed.", {hostName(failure)}};
    auto const said = quotedOnOneLine(failure.hostSays);
    constexpr std::string_view unreached = "open failed: connect failed: ";
    if (auto const reason = said.find(unreached); reason != std::string::npos)
        return {"The jump host does not reach %@: %@.", {hostName(failure), said.substr(reason + unreached.size())}};
    auto const text = said.empty() ? failed : joined(failed, {"It says: %@", {said}});
    return failure.canLogIn() ? joined(text, "Log in to answer its questions.") : text;
}

} // namespace

std::string quotedOnOneLine(std::string_view words)
{
    std::string quoted;
    words = trimmed(words);
    for (int lines = 0; lines < 2 && !words.empty(); ++lines) {
        auto const end = std::min(words.find('\n'), words.size());
        quoted.append(quoted.empty() ? "" : " ").append(withNothingHidden(trimmed(words.substr(0, end))));
        words = trimmed(words.substr(end));
    }
    auto const isLong = quoted.size() > maxQuotedBytes;
    if (isLong) {
        auto end = maxQuotedBytes;
        while ((static_cast<unsigned char>(quoted[end]) & 0xC0U) == 0x80U)
            --end; // not inside a character
        quoted.resize(end);
    }
    return isLong || !words.empty() ? quoted + "…" : quoted;
}

Text failureSentences(HostFailure const &failure)
{
    if (failure.isOnTheWay && failure.cause != Cause::changedKey)
        return onTheWay(failure);
    if (auto const text = textWithSubject(failure))
        return *text;
    auto const sentence = sentenceFor(failure);
    auto const said = sentence.besideItsWords ? quotedOnOneLine(failure.hostSays) : std::string();
    if (said.empty())
        return {sentence.withHost, {hostName(failure)}};
    return {"%@ %@ says: %@", {sentence.besideItsWords, hostName(failure), said}};
}

} // namespace tw
