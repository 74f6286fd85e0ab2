#pragma once

#include "TWEngine/Runtime/Completion.h"
#include "Tarnwick/Clipboard/Clipboard.h"

#include <optional>
#include <utility>
#include <vector>

namespace tw::test {

/// A clipboard that answers at once, or when the test lets it.
class FakeClipboard final : public Clipboard {
public:
    std::optional<FileDrag> offered; ///< by the program
    ClipboardContent content;        ///< what is read; nothing else than what the test puts here
    bool isSilent = false;
    std::vector<std::uint64_t> cleared;

    void offer(FileDrag files) override { offered = std::move(files); }

    Task<std::optional<ClipboardContent>> read() override
    {
        co_return isSilent ? std::nullopt : std::optional(content);
    }

    void clear(std::uint64_t version) override { cleared.push_back(version); }

    /// Somebody else copies something.
    void take()
    {
        offered.reset();
        onOfferGone();
    }
};

} // namespace tw::test
