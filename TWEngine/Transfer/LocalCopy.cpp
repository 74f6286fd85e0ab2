#include "TWEngine/Transfer/LocalCopy.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Runtime/OpenFolder.h"
#include "TWEngine/Runtime/TimeOut.h"
#include "TWEngine/Transfer/ArrivedNames.h"
#include "TWEngine/Transfer/CopyingChild.h"
#include "TWEngine/Transfer/Measuring.h"
#include "TWEngine/Transfer/TransferChild.h"

#include <cerrno>
#include <ctime>
#include <span>
#include <unordered_set>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw::LocalCopy {

namespace {

/// As often as a person can read it.
constexpr std::chrono::milliseconds timeBetweenLooks{100};

/// A count looks at each file, at the cost of the copy. So it rests between two, and ten times as long as it takes.
constexpr std::chrono::milliseconds leastBetweenCounts{500};
constexpr int restOfCounting = 10;

constexpr std::chrono::milliseconds noPatience{0};

/// A person waits for the end of a cancel, and a disk may be dead.
constexpr std::chrono::seconds patienceWithCount{3};

/// A person sees the whole of a small copy from its beginning; a large one does not wait for it.
constexpr std::chrono::milliseconds timeToMeasure{1};

/// Names that one cp copies.
struct Step {
    std::size_t first = 0;
    std::size_t count = 0;
};

struct Running {
    TransferWork::Shared work;
    Step step;
    TransferChild::Shared child;
    timespec begun = {};    ///< as files get their times
    std::int64_t bytes = 0; ///< of this step
    std::int64_t files = 0; ///< of this step, as they were counted last
};

using Run = std::shared_ptr<Running>;

/// So many folders have a cp each, so that one that fails is copied as far as it can be. To start a program takes some
/// milliseconds, and for thousands of names that would be most of the time.
constexpr std::size_t fewNames = 64;

struct Look {
    std::shared_ptr<FileDescriptor const> folder;
    std::vector<bool> isFolder;    ///< of each; empty: there are too many
    std::vector<Measure> measures; ///< of each; fewer if there was no time
};

Look lookAt(std::string const &folder, std::vector<std::string> const &paths)
{
    FileDescriptor opened(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened)
        throw FileOperationError::Failed("copy", folder, systemText(errno));
    Look found{.folder = std::make_shared<FileDescriptor const>(std::move(opened)), .isFolder = {}, .measures = {}};
    if (paths.size() > fewNames)
        return found;
    auto const until = Measure::Clock::now() + timeToMeasure;
    bool isInTime = true;
    for (auto const &path : paths) {
        struct stat status;
        found.isFolder.push_back(::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode));
        auto const measure = isInTime ? Measure::here(path, {}, until) : std::nullopt;
        isInTime = measure.has_value();
        if (isInTime)
            found.measures.push_back(*measure);
    }
    return found;
}

/// Looks for what cp must not write to: a link leads to another file, a pipe waits for a reader, and the file of
/// somebody else would not get its times. Only what has the name of something that is copied is looked at.
class ExistingFiles {
public:
    explicit ExistingFiles(std::stop_token const &stopped) : stop(stopped) {}

    /// Whether there is such a thing at the `names` of the folder `to`, or below them.
    bool mustGo(int from, std::string const &to, std::vector<std::string> const &names) const
    {
        auto const folder = opened(AT_FDCWD, to.c_str(), 0);
        if (!folder)
            return true;
        auto const number = ::dirfd(folder.get());
        if (names.size() <= fewNames)
            return std::ranges::any_of(names, [&](auto const &name) { return mustGo(from, number, name.c_str(), 0); });
        // A new folder has none of thousands of names, and says so at once.
        std::unordered_set<std::string_view> wanted;
        while (auto const *const entry = nextEntry(folder)) {
            if (wanted.empty())
                wanted.insert(names.begin(), names.end());
            if (wanted.contains(entry->d_name) && mustGo(from, number, entry->d_name, 0))
                return true;
        }
        return errno != 0;
    }

private:
    static OpenFolder opened(int parent, char const *name, int flags)
    {
        return openFolder(FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags)));
    }

    bool mustGo(int from, int to, char const *name, int level) const
    {
        struct stat status;
        if (::fstatat(to, name, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0)
            return errno != ENOENT;
        if (S_ISREG(status.st_mode))
            return user != 0 && status.st_uid != user;
        if (!S_ISDIR(status.st_mode) || level == mostLevels || stop.stop_requested())
            return true;
        auto const source = opened(from, name, O_NOFOLLOW);
        if (!source)
            return false; // cp cannot copy what is in it either
        auto const target = opened(to, name, O_NOFOLLOW);
        if (!target)
            return true;
        while (auto const *const entry = nextEntry(source)) {
            if (mustGo(::dirfd(source.get()), ::dirfd(target.get()), entry->d_name, level + 1))
                return true;
        }
        return false;
    }

    /// Each holds two descriptors.
    static constexpr int mostLevels = 100;

    std::stop_token const &stop;
    uid_t const user = ::geteuid();
};

std::vector<std::string> namesOf(TransferWork const &work, Step const &step)
{
    auto const first = work.names.begin() + static_cast<std::ptrdiff_t>(step.first);
    return {first, first + static_cast<std::ptrdiff_t>(step.count)};
}

/// In the lane of both folders, since it asks for the size of a file there.
Task<CopyingChild> lookAtChild(TransferWork::Shared work, pid_t process)
{
    auto const from = work->from.path();
    auto const to = work->to.path();
    return work->engine.files().runBetween(from, to, FileLanes::LastLink::follow, WorkPriority::background,
                                           [process, from, to] { return CopyingChild::look(process, from, to); });
}

Task<void> watch(Run run)
{
    auto const work = run->work;
    std::string item = work->names[run->step.first];
    for (;;) {
        co_await work->engine.clock()->sleep(timeBetweenLooks);
        auto look = co_await lookAtChild(work, run->child->process().processId());
        if (!look.item.empty())
            item = std::move(look.item);
        run->bytes = std::max(run->bytes, look.written);
        work->reportStep(run->bytes, run->files, item);
    }
}

Task<ArrivedNames> arrivedSoFar(Run run, Blamed blamed, WorkPriority priority)
{
    auto const &work = *run->work;
    return ArrivedNames::find(work.engine, work.from.path(), work.to.path(),
                              {.names = namesOf(work, run->step), .begun = run->begun, .blamed = std::move(blamed)},
                              priority);
}

Task<void> countFiles(Run run)
{
    auto const clock = run->work->engine.clock();
    std::chrono::nanoseconds rest = leastBetweenCounts;
    for (;;) {
        co_await clock->sleep(rest);
        auto const begun = clock->steadyNow();
        auto const arrived = co_await arrivedSoFar(run, {}, WorkPriority::background);
        run->files = std::max(run->files, arrived.files);
        rest = std::max<std::chrono::nanoseconds>(leastBetweenCounts, restOfCounting * (clock->steadyNow() - begun));
    }
}

/// The exit of cp. It is reported on meanwhile.
Task<ExitStatus> untilExit(Run run)
{
    auto const context = co_await currentContext();
    auto const watching = ChildTask<void>::start(context, watch(run));
    auto const counting = ChildTask<void>::start(context, countFiles(run));
    auto const status = co_await TransferChild::end(run->child);
    co_return status;
}

/// What of a step that was not finished has arrived goes into the summary. Returns the name that was under way.
Task<std::string> account(Run run)
{
    auto const &work = *run->work;
    auto blamed = Blamed::inCopy(run->child->words(), namesOf(work, run->step), work.to.path());
    auto arrived = co_await arrivedSoFar(run, std::move(blamed), WorkPriority::interactive);
    auto first = arrived.firstMissing.value_or(work.label);
    auto &summary = run->work->summary;
    summary.files += arrived.files;
    std::ranges::move(arrived.complete, std::back_inserter(summary.complete));
    std::ranges::move(arrived.partial, std::back_inserter(summary.partial));
    std::ranges::move(arrived.untouched, std::back_inserter(summary.untouched));
    co_return first;
}

/// Where nobody says in time what has arrived, anything of the step may have.
Task<std::string> accountInTime(Run run, bool isCancelled)
{
    auto counting = account(run);
    if (isCancelled)
        counting = withTimeOut(run->work->engine.clock(), patienceWithCount, std::move(counting)).withStop({});
    auto const counted = co_await outcomeOf(std::move(counting));
    if (counted.value)
        co_return *counted.value;
    auto &summary = run->work->summary;
    summary.areFilesKnown = false;
    std::ranges::move(namesOf(*run->work, run->step), std::back_inserter(summary.partial));
    co_return run->work->label;
}

void addUntouched(TransferWork &work, std::size_t from)
{
    work.summary.untouched.insert(work.summary.untouched.end(), work.names.begin() + static_cast<std::ptrdiff_t>(from),
                                  work.names.end());
}

/// A step that ends before the measuring has come to it is small, or was no work.
Task<std::vector<Measure>> measuresOf(Run run)
{
    auto const &work = *run->work;
    auto const first = static_cast<std::ptrdiff_t>(run->step.first);
    auto const last = first + static_cast<std::ptrdiff_t>(run->step.count);
    if (!work.measures.empty())
        co_return std::vector(work.measures.begin() + first, work.measures.begin() + last);
    std::vector<std::string> paths;
    for (auto const &name : namesOf(work, run->step))
        paths.push_back(TransferCommands::pathOf(work.from.path(), name));
    auto look =
        co_await work.engine.files().run(work.from.path(), FileLanes::LastLink::follow, WorkPriority::interactive,
                                         [paths](std::string const & /*place*/) {
                                             std::vector<Measure> measures;
                                             for (auto const &path : paths)
                                                 measures.push_back(Measure::here(path, {}).value_or(Measure()));
                                             return measures;
                                         });
    co_return look;
}

Task<void> addComplete(Run run)
{
    auto &work = *run->work;
    auto const names = namesOf(work, run->step);
    work.summary.complete.insert(work.summary.complete.end(), names.begin(), names.end());
    auto const measures = co_await outcomeOf(measuresOf(run));
    if (!measures.value) {
        work.summary.areFilesKnown = false;
        co_return;
    }
    for (auto const &each : *measures.value) {
        work.bytesBefore += each.bytes;
        work.filesBefore += each.files.value_or(0);
    }
    work.summary.files = work.filesBefore;
    work.reportStep(0, 0, names.back());
}

Task<TransferCommands::Existing> existingAt(TransferWork::Shared work, std::shared_ptr<FileDescriptor const> from,
                                            std::vector<std::string> names)
{
    auto const context = co_await currentContext();
    auto const to = work->to.path();
    auto const mustGo = co_await work->engine.files().runBetween(
        work->from.path(), to, FileLanes::LastLink::follow, WorkPriority::interactive,
        [from, to, names, stop = context.stop] { return ExistingFiles(stop).mustGo(from->get(), to, names); });
    co_return mustGo ? TransferCommands::Existing::removed : TransferCommands::Existing::opened;
}

Task<void> runStep(TransferWork::Shared work, std::shared_ptr<FileDescriptor const> from, Step step)
{
    auto const context = co_await currentContext();
    if (context.stop.stop_requested()) {
        addUntouched(*work, step.first);
        throw Cancelled();
    }
    work->reportStep(0, 0, work->names[step.first]);
    auto const run = std::make_shared<Running>(Running{.work = work, .step = step, .child = nullptr});
    auto const names = namesOf(*work, step);
    // A cp of many names would go on behind one that fails, and on a full disk leave an empty file for each.
    auto const atFirstLine = step.count > 1 ? TransferChild::AtFirstLine::end : TransferChild::AtFirstLine::goOn;
    auto const existing = co_await outcomeOf(existingAt(work, from, names));
    if (!existing.value) {
        addUntouched(*work, step.first);
        std::rethrow_exception(existing.failure);
    }
    ::clock_gettime(CLOCK_REALTIME_COARSE, &run->begun);
    auto command = TransferCommands::copyHere(work->tools, std::move(from), names, work->to.path(), *existing.value);
    run->child = co_await TransferChild::start(work->engine, std::move(command), atFirstLine);
    auto const exit = co_await outcomeOf(untilExit(run));
    if (exit.value && exit.value->isSuccess()) {
        co_await addComplete(run);
        co_return;
    }

    if (!exit.value)
        co_await TransferChild::endSoon(run->child, noPatience).withStop({});
    auto const failing = co_await accountInTime(run, !exit.value);
    addUntouched(*work, step.first + step.count);
    work->summary.words = run->child->words();
    if (!exit.value)
        std::rethrow_exception(exit.failure);
    auto const &words = work->summary.words;
    throw FileOperationError::Failed("copy", failing, words.empty() ? exit.value->text() : words);
}

/// In order. `isFolder` says which names have a step alone; empty: none has.
std::vector<Step> steps(std::span<std::string const> names, std::vector<bool> const &isFolder)
{
    auto const isAlone = [&isFolder](std::size_t index) { return !isFolder.empty() && isFolder[index]; };
    std::vector<Step> steps;
    std::size_t first = 0;
    while (first < names.size()) {
        std::size_t together = 0;
        while (first + together < names.size() && !isAlone(first + together))
            ++together;
        // A folder that fails in the middle ends the copy as a whole.
        Step step{.first = first, .count = 1};
        if (together > 0)
            step.count = TransferCommands::fittingFrontHere(names.subspan(first, together)).size();
        steps.push_back(step);
        first += step.count;
    }
    return steps;
}

} // namespace

Task<void> run(TransferWork::Shared work)
{
    auto look =
        co_await work->engine.files().run(work->from.path(), FileLanes::LastLink::follow, WorkPriority::interactive,
                                          [from = work->from.path(), paths = work->sources()](
                                              std::string const & /*place*/) { return lookAt(from, paths); });
    auto const context = co_await currentContext();
    std::optional<ChildTask<void>> measuring;
    if (look.measures.size() == work->names.size())
        work->setMeasures(std::move(look.measures));
    else
        measuring.emplace(ChildTask<void>::start(context, Measuring::run(work)));
    auto const all = steps(work->names, look.isFolder);
    for (auto const &step : all)
        co_await runStep(work, look.folder, step);
}

} // namespace tw::LocalCopy
