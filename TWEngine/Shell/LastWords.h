#pragma once

#include "TWEngine/Shell/ClientWords.h"

namespace tw {

/// Keeps the end of what a client writes to its standard error, as it is.
class LastWords final : public ClientWords {
public:
    /// The last words are the reason of an end; what stood before them is not needed.
    static constexpr std::size_t maxBytes = 8192;

    void hear(std::string_view bytes) override
    {
        heard += bytes;
        if (heard.size() > maxBytes)
            heard.erase(0, heard.size() - maxBytes);
    }

    ClientReport report() const override
    {
        ClientReport report;
        report.words = heard;
        return report;
    }

private:
    std::string heard;
};

} // namespace tw
