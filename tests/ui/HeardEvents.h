#pragma once

#include <QAccessible>

#include <string>
#include <vector>

namespace tw::test {

/// What a screen reader is notified of, from now on. Without one Qt notifies nobody.
class HeardEvents {
public:
    HeardEvents();
    ~HeardEvents();

    HeardEvents(HeardEvents const &) = delete;
    HeardEvents &operator=(HeardEvents const &) = delete;

    /// The names that were read at the events of this type, which concern `object` or a part of it.
    static std::vector<std::string> namesAt(QAccessible::Event type, QObject const &object);
};

} // namespace tw::test
