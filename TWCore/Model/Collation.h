#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// Sort keys for the names of one snapshot that are not in composed Unicode form (NFC).
///
/// Some file systems return decomposed names ("e" and a combining accent), which would sort apart from the same names
/// in composed form. A listing of ASCII names costs one scan of its bytes and has no keys.
class Collation {
public:
    /// The collation without keys.
    static Collation const &trivial();

    explicit Collation(DirectorySnapshot const &snapshot);

    bool isTrivial() const noexcept { return keys.empty(); }

    /// The key of entry `index`, or nothing if the stored name is its own key.
    std::optional<std::string_view> key(std::size_t index) const;

private:
    Collation() = default;

    std::vector<std::string> keys; ///< empty, or one for each entry; an empty key is no key
};

} // namespace tw
