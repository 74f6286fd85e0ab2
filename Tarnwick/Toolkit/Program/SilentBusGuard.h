#pragma once

#include <QByteArray>

#include <optional>

namespace tw {

/// Keeps the toolkit away from a session bus that does not answer: a toolkit looks there on the main thread, for a
/// global menu and for assistive programs, and would wait for its own time-out of 25 s.
///
/// Made before QApplication: waits at most 500 ms for the bus, and hides a bus that does not answer in that time. The
/// window then has no native menus and does not follow the desktop's dark mode. Destroyed behind QApplication's
/// construction: the toolkit has no bus for the rest of its life, and the environment is again what everything else of
/// the program, and its children, find the bus by.
///
/// Threads: main thread, while no other thread reads the environment.
class SilentBusGuard {
public:
    SilentBusGuard();
    ~SilentBusGuard();

    SilentBusGuard(SilentBusGuard const &) = delete;
    SilentBusGuard &operator=(SilentBusGuard const &) = delete;

private:
    bool isHidden = false;
    std::optional<QByteArray> address; ///< as it was in the environment
};

} // namespace tw
