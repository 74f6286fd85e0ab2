#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <string>
#include <string_view>

namespace tw {

/// Takes off the bytes of a download the words behind them, by which the host says that all have come.
///
/// A start file of the host that puts another program in place of the login shell makes the command end with success,
/// and print nothing. A Windows host has no such start file, and says nothing.
class DownloadEnd {
public:
    /// What a POSIX host prints behind the file.
    static constexpr std::string_view words = "tw-end-of-file\n";

    explicit DownloadEnd(ShellDialect hostSpeaks) : isExpected(hostSpeaks == ShellDialect::posix) {}

    /// What of the bytes so far is certainly of the file, and was not returned before.
    std::string contentOf(std::string_view bytes)
    {
        if (!isExpected)
            return std::string(bytes);
        kept += bytes;
        if (kept.size() <= words.size())
            return {};
        auto content = kept.substr(0, kept.size() - words.size());
        kept.erase(0, content.size());
        return content;
    }

    bool hasCome() const { return !isExpected || kept == words; }

private:
    bool const isExpected;
    std::string kept; ///< the last bytes
};

} // namespace tw
