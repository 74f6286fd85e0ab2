#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace tw {

/// The user's settings: texts under the keys `tw.*`. Each reader carries its own default.
///
/// Threads: main context only.
class Defaults {
public:
    virtual ~Defaults() = default;

    virtual std::optional<std::string> text(std::string const &key) const = 0;
    virtual void setText(std::string const &key, std::string const &value) = 0;

    /// What was set so far is kept from now on, even if the program ends at once. Blocks for a small file.
    virtual void flush() = 0;
};

/// Settings that are forgotten with the object: for tests and benchmarks.
class MemoryDefaults final : public Defaults {
public:
    std::optional<std::string> text(std::string const &key) const override;
    void setText(std::string const &key, std::string const &value) override;

    void flush() override {}

private:
    std::map<std::string, std::string> values;
};

} // namespace tw
