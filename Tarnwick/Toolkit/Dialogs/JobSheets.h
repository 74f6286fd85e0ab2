#pragma once

#include "Tarnwick/Toolkit/Dialogs/SheetQueue.h"
#include "Tarnwick/Transfers/JobList.h"

#include <chrono>

namespace tw {

class ProgressSheet;

/// Keeps a sheet on show for all work that is not in the background.
///
/// Threads: main context only.
class JobSheets final : public QObject {
public:
    /// Work that ends sooner has no sheet: one that comes and goes at once only startles.
    static constexpr std::chrono::milliseconds delay{300};

    JobSheets(std::shared_ptr<SheetQueue> queue, std::shared_ptr<JobList> works);

private:
    struct Shown {
        std::shared_ptr<Job> work;
        QPointer<ProgressSheet> sheet; ///< null when the window has closed
    };

    void sync();
    void removeOld();
    void add(std::shared_ptr<Job> const &work);
    void open(std::shared_ptr<Job> const &work);

    std::shared_ptr<SheetQueue> const queue;
    std::shared_ptr<JobList> const works;
    std::vector<Shown> shown;
};

} // namespace tw
