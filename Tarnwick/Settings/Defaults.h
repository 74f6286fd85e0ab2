#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// Where the user's settings are kept, as texts under their keys. What they mean is the table in Settings.h.
///
/// Threads: main context only.
class Defaults {
public:
    virtual ~Defaults() = default;

    virtual std::optional<std::string> text(std::string const &key) const = 0;

    /// Stores a text. Calls the observers of the key if the text has changed.
    void setText(std::string const &key, std::string const &value);

    /// What was set so far is kept from now on, even if the program ends at once. Blocks for a small file.
    virtual void flush() = 0;

    /// Ends an observation when it is destroyed. It may outlive the settings.
    using Subscription = std::shared_ptr<void>;

    /// Calls `changed` after each change of a key's text.
    [[nodiscard]] Subscription observe(std::string key, std::function<void()> changed);

protected:
    virtual void store(std::string const &key, std::string const &value) = 0;

private:
    struct Observer {
        std::string key;
        std::function<void()> changed;
    };

    std::vector<std::weak_ptr<Observer>> observers;
};

/// Settings that are forgotten with the object: for tests and benchmarks.
class MemoryDefaults final : public Defaults {
public:
    std::optional<std::string> text(std::string const &key) const override;

    void flush() override {}

protected:
    void store(std::string const &key, std::string const &value) override;

private:
    std::map<std::string, std::string> values;
};

} // namespace tw
