#pragma once

#include "Tarnwick/Settings/Defaults.h"

#include <QSettings>

namespace tw {

/// The user's settings in a file: one INI file that a person can read and edit.
///
/// A file with lines that are none of an INI file is kept aside, with ".broken" behind its name: what is written back
/// are the settings that could be read.
///
/// A text that is not UTF-8 survives as it is. Written back by the event loop soon after a change, and when destroyed.
class QtDefaults final : public Defaults {
public:
    /// `Tarnwick/Tarnwick.ini` in $XDG_CONFIG_HOME.
    QtDefaults();

    explicit QtDefaults(QString const &file);

    std::optional<std::string> text(std::string const &key) const override;

    /// The copy of a file that could not be read whole; empty if there was none.
    std::string const &setAside() const noexcept { return broken; }

    void flush() override { settings.sync(); }

protected:
    void store(std::string const &key, std::string const &value) override;

private:
    QSettings settings;
    std::string broken;
};

} // namespace tw
