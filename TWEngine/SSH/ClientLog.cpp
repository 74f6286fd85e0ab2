#include "TWEngine/SSH/ClientLog.h"

#include "TWEngine/SSH/StoredHostKey.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tw {

namespace {

constexpr std::string_view logPrefix = "debug1: ";

/// Lines of the log that have no prefix: the greeting of the program, and what the level VERBOSE adds.
bool isBareLogLine(std::string_view text)
{
    constexpr std::array beginnings = {"OpenSSH_", "Authenticated to ", "Authenticated using ", "Transferred: sent ",
                                       "Bytes per second: sent "};
    return std::ranges::any_of(beginnings, [=](auto const *beginning) { return text.starts_with(beginning); });
}

/// What follows `beginning`, if the text begins with it.
std::optional<std::string_view> after(std::string_view beginning, std::string_view text)
{
    if (!text.starts_with(beginning))
        return std::nullopt;
    return text.substr(beginning.size());
}

/// The path or comment in "PATH TYPE SHA256:… source", or in "TYPE SHA256:… PATH" as clients before 7.8 have it.
std::string keyName(std::string_view text)
{
    auto const hash = text.find(" SHA256:");
    if (hash == std::string_view::npos)
        return std::string(text);
    auto const before = text.substr(0, hash);
    auto const type = before.rfind(' ');
    if (type != std::string_view::npos)
        return std::string(before.substr(0, type));
    auto const path = text.find(' ', hash + 1);
    return std::string(path == std::string_view::npos ? text : text.substr(path + 1));
}

std::vector<std::string> splitAtCommas(std::string_view text, std::size_t most)
{
    std::vector<std::string> parts;
    while (!text.empty() && parts.size() < most) {
        auto const end = std::min(text.find(','), text.size());
        if (end > 0)
            parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

} // namespace

ClientLog::ClientLog(std::function<void(ClientStage)> tellStage) : onStage(std::move(tellStage)) {}

ClientWords::Maker ClientLog::maker()
{
    return [](std::function<void(ClientStage)> onStage) { return std::make_unique<ClientLog>(std::move(onStage)); };
}

void ClientLog::hear(std::string_view bytes)
{
    while (!bytes.empty()) {
        auto const end = bytes.find('\n');
        auto const piece = bytes.substr(0, end);
        line += piece;
        if (line.size() > maxLineBytes) {
            keepWords(line);
            line.clear();
            lineIsLong = true;
        }
        if (end == std::string_view::npos)
            return;
        endLine();
        bytes.remove_prefix(end + 1);
    }
}

ClientReport ClientLog::report() const
{
    auto report = known;
    // The last words of a host need no line end. The part of a log line that has arrived says nothing.
    bool const mayBeLog = !lineIsLong && (line.starts_with(logPrefix.substr(0, line.size())) || isBareLogLine(line));
    if (!mayBeLog) {
        report.words += line;
        report.words.erase(0, report.words.size() - std::min(report.words.size(), maxWordBytes));
    }
    return report;
}

void ClientLog::endLine()
{
    if (!lineIsLong && line.ends_with('\r'))
        line.pop_back();
    // A log line may follow words of the host that have no line end.
    auto const log = lineIsLong ? std::string::npos : line.find(logPrefix);
    auto const words = std::string_view(line).substr(0, log);
    if (log != std::string::npos)
        readLogLine(std::string_view(line).substr(log + logPrefix.size()));
    if (!lineIsLong && isBareLogLine(words)) {
        if (words.starts_with("Authenticated to "))
            reach(ClientStage::waitingForShell);
    } else if (!words.empty() || log == std::string::npos) {
        takeStoredKey(words);
        keepWords(words);
        keepWords("\n");
    }
    line.clear();
    lineIsLong = false;
}

void ClientLog::readLogLine(std::string_view text)
{
    if (text == "SSH2_MSG_NEWKEYS received") {
        reach(ClientStage::loggingIn);
    } else if (text.starts_with("Authentication succeeded") || // clients before 8.9
               text.starts_with("mux_client_request_session: master session id") ||
               text.starts_with("mux_client_hello_exchange: master version")) {
        reach(ClientStage::waitingForShell);
    } else if (auto const key = after("Offering public key: ", text)) {
        if (known.offeredKeys.size() < maxListed)
            known.offeredKeys.push_back(keyName(*key));
    } else if (auto const accepted = after("Server accepts key: ", text)) {
        known.acceptedKey = keyName(*accepted);
    } else if (auto const methods = after("Authentications that can continue: ", text)) {
        known.offeredMethods = splitAtCommas(*methods, maxListed);
        known.acceptedKey.clear(); // it was used, and did not suffice
    } else if (auto const method = after("Next authentication method: ", text)) {
        known.triedMethod = *method;
    } else if (auto const refusal = after("kex_exchange_identification: banner line ", text)) {
        // What a host says before it speaks the protocol, such as "Not allowed at this time".
        auto const colon = refusal->find(": ");
        if (colon != std::string_view::npos) {
            keepWords(refusal->substr(colon + 2));
            keepWords("\n");
        }
    }
}

/// "Offending ED25519 key in FILE:LINE": the client tells where the key is, and only the fingerprint of the host's own.
void ClientLog::takeStoredKey(std::string_view words)
{
    constexpr std::string_view beforePlace = " key in ";
    auto const place = words.find(beforePlace);
    // The host cannot say this: it has no words before the key exchange. The client has just read the file, so a read
    // does not wait for a dead mount.
    if (known.stage == ClientStage::reaching && words.starts_with("Offending ") && place != std::string_view::npos)
        known.storedFingerprint = StoredHostKey::fingerprintAt(words.substr(place + beforePlace.size()));
}

void ClientLog::reach(ClientStage stage)
{
    if (stage <= known.stage)
        return;
    known.stage = stage;
    onStage(stage);
}

void ClientLog::keepWords(std::string_view text)
{
    auto &words = known.words;
    words += text;
    words.erase(0, words.size() - std::min(words.size(), maxWordBytes));
}

} // namespace tw
