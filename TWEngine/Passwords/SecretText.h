#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include <string.h>

namespace tw {

/// A text that leaves no copy in memory: its bytes never move, and the destructor overwrites them.
class SecretText {
public:
    explicit SecretText(std::string_view text) : size(text.size()), bytes(std::make_unique<char[]>(text.size()))
    {
        text.copy(bytes.get(), size);
    }

    SecretText(SecretText &&) noexcept = default;

    SecretText &operator=(SecretText &&other) noexcept
    {
        std::swap(size, other.size);
        std::swap(bytes, other.bytes);
        return *this;
    }

    ~SecretText()
    {
        if (bytes)
            ::explicit_bzero(bytes.get(), size);
    }

    /// Valid as long as this object.
    std::string_view text() const noexcept { return {bytes.get(), bytes ? size : 0}; }

private:
    std::size_t size;
    std::unique_ptr<char[]> bytes;
};

} // namespace tw
