#pragma once

#include "Tarnwick/Operations/OperationContext.h"
#include "Tarnwick/Operations/TransferJob.h"
#include "Tarnwick/Panes/Alarm.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tw {

/// Copies of dragged files of a host, for another program that they are dropped on.
///
/// The paths of the copies are known while the drag goes on, and programs ask for them then. The files are fetched once
/// they have been dropped, and the other program hears of the drop when they are there. So a program cannot have a
/// fetch begun by asking.
///
/// Threads: main context only.
/// Lifetime: shared; a fetch in flight keeps it.
class DragFetch : public std::enable_shared_from_this<DragFetch> {
public:
    enum class End { arrived, missed };

    /// Makes an empty folder of this machine and answers its path.
    using MakeFolder = std::function<Task<std::string>()>;

    struct Limits {
        std::chrono::seconds time{180};                          ///< nobody waits longer in front of a drop
        std::int64_t askAbove = std::int64_t{256} * 1024 * 1024; ///< bytes
    };

    /// The operands of the context are the files; its pane is where they come from.
    DragFetch(OperationContext context, std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock,
              Limits limits);

    /// Makes the folder for the copies.
    void prepare(MakeFolder const &makeFolder);

    /// Where the copies are or will be; nothing before there is a folder, and after a drop that did not come about.
    std::vector<std::string> paths() const;

    /// The files have been dropped. `onEnd` is called once, unless the fetch is called off. What has failed is shown to
    /// the user.
    void start(std::function<void(End end)> onEnd);

    /// The drag is over. Unless all has arrived, the fetch ends, and what there is of the copies is removed.
    void finish();

private:
    using Self = std::shared_ptr<DragFetch>;

    static Task<void> makeFolder(std::weak_ptr<DragFetch> weak, Task<std::string> making);
    static Task<void> run(Self self);
    static Task<bool> isWanted(OperationContext context, std::int64_t askAbove);
    static Task<TransferEnd> copy(Self self);
    static Task<void> removeCopies(std::shared_ptr<Browser> local, std::string folder);
    void end(End how);
    void remove(std::string what) const;

    OperationContext const context;
    std::shared_ptr<Executor> const executor;
    Limits const limits;
    Alarm timeUp;
    std::string folder;
    std::function<void(End end)> onEnd;
    std::stop_source asking;                 ///< ends the task until it copies
    std::optional<std::stop_source> copying; ///< ends the copy, which tidies up after itself
    bool hasArrived = false;
    bool isOver = false;
    bool tookTooLong = false;
};

} // namespace tw
