#pragma once

#include "Tarnwick/Settings/Defaults.h"

#include <optional>
#include <string>

namespace tw {

/// One row of the table of settings: a typed value with its key and its default.
template <class T>
struct Setting {
    char const *key;
    T usual; ///< counts if nothing is stored, or a text that makes no sense
    std::optional<T> (*fromText)(std::string const &text);
    std::string (*toText)(T const &value);

    T read(Defaults const &defaults) const
    {
        auto const stored = defaults.text(key);
        return stored ? fromText(*stored).value_or(usual) : usual;
    }

    void write(Defaults &defaults, T const &value) const { defaults.setText(key, toText(value)); }

    /// Calls `changed` after each change, until the answer is destroyed.
    [[nodiscard]] Defaults::Subscription observe(Defaults &defaults, std::function<void()> changed) const
    {
        return defaults.observe(key, std::move(changed));
    }
};

} // namespace tw
