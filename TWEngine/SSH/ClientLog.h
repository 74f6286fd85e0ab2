#pragma once

#include "TWEngine/Shell/ClientWords.h"

namespace tw {

/// Reads what an OpenSSH client writes with `LogLevel=DEBUG1`: the log tells how far the client has got, and everything
/// else is for the user.
///
/// A host can write lines that look like the log. It can thereby only claim a stage, and every stage has its time
/// limit.
///
/// Threads: as ClientWords. Blocks for a read of known_hosts if a host's key has changed.
class ClientLog final : public ClientWords {
public:
    explicit ClientLog(std::function<void(ClientStage)> onStage);

    static ClientWords::Maker maker();

    void hear(std::string_view bytes) override;
    ClientReport report() const override;

    static constexpr std::size_t maxWordBytes = 8192;
    /// A client logs its lines in at most 1024 bytes. A longer line is no log line.
    static constexpr std::size_t maxLineBytes = 4096;
    /// A user with more keys than this is refused by every host before the last one.
    static constexpr std::size_t maxListed = 32;

private:
    void endLine();
    void readLogLine(std::string_view text);
    void takeStoredKey(std::string_view words);
    void reach(ClientStage stage);
    void keepWords(std::string_view text);

    std::function<void(ClientStage)> const onStage;

    ClientReport known;
    std::string line;        ///< what has arrived of it
    bool lineIsLong = false; ///< its beginning is among the words already
};

} // namespace tw
