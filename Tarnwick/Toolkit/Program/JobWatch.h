#pragma once

#include "Tarnwick/Toolkit/Program/SleepInhibitor.h"
#include "Tarnwick/Transfers/JobList.h"

#include <functional>
#include <memory>

namespace tw {

/// What the desktop hears of work under way: meanwhile the machine is not to sleep, and the end of long work that the
/// user does not look at is announced.
///
/// Threads: main context only; nothing here waits for a bus.
class JobWatch final : public QObject {
    Q_OBJECT

public:
    /// `sessionBus` is asked for when there is something to announce.
    JobWatch(std::shared_ptr<JobList> list, std::function<QDBusConnection()> sessionBus);

    /// The machine's bus, which is known later than the window.
    void setSystemBus(QDBusConnection const &bus);

    /// Whether the user looks at the program; may be replaced by a test.
    std::function<bool()> isLookedAt;

private:
    void sync();
    void announce(JobList::End const &end) const;

    std::shared_ptr<JobList> const works;
    std::function<QDBusConnection()> const sessionBus;
    std::unique_ptr<SleepInhibitor> inhibitor; ///< null without a bus
};

} // namespace tw
