#pragma once

#include <string>
#include <string_view>

namespace tw {

/// What a program writes to its standard error: the beginning and the end of it, however much it is.
class KeptWords {
public:
    static constexpr std::size_t mostAtFirst = 65536;
    static constexpr std::size_t mostAtLast = 8192;

    void hear(std::string_view bytes);

    /// UTF-8, without white space around it.
    std::string text() const;

private:
    std::string first;
    std::string last;
    bool hasGap = false;
};

} // namespace tw
