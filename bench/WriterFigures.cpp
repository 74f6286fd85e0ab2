// What it costs to move and delete 10,000 names, from the answered question on: on a host 50 ms away, and into the
// Trash of this machine.

#include "TWCore/Shell/FileCommands.h"
#include "TWCore/Shell/FolderQuestion.h"
#include "TWCore/Shell/MoveCommand.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "Tarnwick/Operations/CopyMove.h"
#include "Tarnwick/Operations/Delete.h"
#include "bench/FarHost.h"
#include "bench/Figure.h"

#include <filesystem>
#include <stdexcept>

namespace tw::bench {
namespace {

using test::TemporaryFolder;
using Paths = std::vector<std::string>;
using enum Figures::Yardstick;

constexpr int runs = 5;
constexpr int count = 10'000;
constexpr std::chrono::milliseconds roundTrip{50};

/// The work session sends thousands of names over a line whose window is still small.
constexpr double mostRoundTripsOfAMove = 5;

/// Beside one round trip and the time of the same command in a shell of this machine.
constexpr double largestDeleteRatio = 1.1;

/// The same names again and again.
Paths names()
{
    Paths all;
    for (int number = 0; number < count; ++number)
        all.push_back("a name of a common length " + std::to_string(number));
    return all;
}

Paths fill(TemporaryFolder const &folder, std::string const &below)
{
    folder.folder(below);
    Paths paths;
    for (auto const &name : names())
        paths.push_back(folder.file(below + '/' + name));
    return paths;
}

void runOrFail(std::string const &command)
{
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("failed: " + command);
}

/// Runs a request to a host in a shell of this machine, which reads it from a pipe as there, in milliseconds: the
/// host's own time.
double shellTime(std::string const &request)
{
    TemporaryFolder const folder;
    auto const script = folder.file("script", "( eval " + quote(ShellDialect::posix, request) + " )\n");
    return millisecondsOf([&] { runOrFail("cat '" + script + "' | bash -s >/dev/null"); });
}

/// A user who agrees to everything, and whom nothing may surprise.
class Agreeing final : public Dialogs {
public:
    Task<void> error(Text message, std::string /*words*/) override { return fail<void>(message.english()); }

    Task<void> details(Text title, std::string /*words*/) override { return fail<void>(title.english()); }

    Task<std::optional<std::string>> prompt(Prompt question) override { co_return question.initial; }

    Task<std::optional<PackTarget>> packPrompt(PackPrompt question) override
    {
        return fail<std::optional<PackTarget>>(question.title);
    }

    Task<Answer> confirm(Confirmation /*question*/) override { co_return Answer::ok; }

    Task<std::optional<std::size_t>> choose(Choice question) override
    {
        return fail<std::optional<std::size_t>>(question.title);
    }

    Task<std::optional<std::string>> chooseApplication(ApplicationChoice question) override
    {
        return fail<std::optional<std::string>>(question.file);
    }

    Task<Resolution> resolve(Conflicts question) override { return fail<Resolution>(question.title); }

    std::unique_ptr<Progress> progress(std::string /*title*/, std::function<void()> /*onCancel*/) override
    {
        class Unseen final : public Progress {
            void update(ProgressState const &state) override { keep(state); }
        };

        return std::make_unique<Unseen>();
    }

private:
    template <class T>
    static Task<T> fail(std::string what)
    {
        throw std::runtime_error(what);
        co_return T();
    }
};

/// Operations on a host, as from a pane.
class Pane {
public:
    explicit Pane(FarHost &on) : far(on)
    {
        far.loop.run(provider->connect());
        // The session that changes things comes up before the figures.
        far.loop.run(provider->runCommand({.text = "true", .session = CommandSession::work}));
    }

    ~Pane()
    {
        far.loop.run(browser->shutdown());
        far.loop.run(provider->disconnect());
    }

    Pane(Pane const &) = delete;
    Pane &operator=(Pane const &) = delete;

    double timeOf(Operation operation, std::string const &path, std::string const &other)
    {
        OperationContext context{
            .operands = {browser, "far", path, names()},
            .pane = {},
            .panes = {},
            .dialogs = std::make_shared<Agreeing>(),
            .target = {browser, "far", other, {}},
            .makeTransfer = [this] { return std::make_shared<TransferEngine>(far.engine, TransferTools::find()); },
            .claims = std::make_shared<ClaimedNames>()};
        return millisecondsOf([&] { far.loop.run(operation(std::move(context))); });
    }

private:
    FarHost &far;
    std::shared_ptr<SSHProvider> const provider = far.provider();
    std::shared_ptr<Browser> const browser = far.browser(provider);
};

void measureMove(Figures &figures, Pane &pane)
{
    TemporaryFolder const folder;
    fill(folder, "from");
    folder.folder("to");
    auto const from = folder.path("from");
    auto const to = folder.path("to");
    std::vector<FileSystemWriter::Move> back;
    for (auto const &name : names())
        back.push_back({to + '/' + name, from + '/' + name});
    auto const hostsOwn = [&] {
        auto const questions = shellTime(FolderQuestion::text(ShellDialect::posix, from, names())) +
                               shellTime(FolderQuestion::text(ShellDialect::posix, to, names()));
        return questions + shellTime(MoveCommand::text(ShellDialect::posix, back, FileSystemWriter::Existing::stays));
    };
    auto const medians = takeTurns(
        runs,
        [&] {
            auto const time = pane.timeOf(&moveOperands, from, to);
            if (!std::filesystem::is_empty(from))
                throw std::runtime_error("not all names have moved");
            return time;
        },
        hostsOwn);
    auto const roundTrips = (medians.subject - medians.peer) / static_cast<double>(roundTrip.count());
    figures.report("move of 10,000 names on a host, beside the host's own time", roundTrips, limit,
                   mostRoundTripsOfAMove, "round trips", 1.0);
}

void measureDelete(Figures &figures, Pane &pane)
{
    TemporaryFolder const folder;
    auto const medians = takeTurns(
        runs,
        [&] {
            fill(folder, "deleted");
            auto const time = pane.timeOf(&deleteOperands, folder.path("deleted"), folder.path());
            if (!std::filesystem::is_empty(folder.path("deleted")))
                throw std::runtime_error("not all names were deleted");
            return time;
        },
        [&] {
            auto const paths = fill(folder, "deleted");
            return static_cast<double>(roundTrip.count()) + shellTime(FileCommands::remove(ShellDialect::posix, paths));
        });
    figures.report("delete of 10,000 names on a host, beside a round trip and the host's own time", medians.subject,
                   peer, medians.peer, "ms", largestDeleteRatio);
}

/// For comparison only: both wait for the same journal of the disk.
void showTrash()
{
    EngineRuntime engine;
    BenchLoop loop;
    LocalProvider provider(engine);
    TemporaryFolder const folder;
    auto const byHand = "find '" + folder.path() + "/thrown' -type f -print0 | xargs -0 gio trash";
    auto const medians = takeTurns(
        runs,
        [&] {
            auto const paths = fill(folder, "thrown");
            return millisecondsOf([&] { loop.run(provider.remove(paths)); });
        },
        [&] {
            fill(folder, "thrown");
            return millisecondsOf([&] { runOrFail(byHand); });
        });
    std::printf("10,000 files to the Trash: %.3f ms, gio trash %.3f ms\n", medians.subject, medians.peer);
}

int measureAll()
{
    // The Trash of these runs, on the file system of their files. Before GLib looks for the user's.
    TemporaryFolder const data;
    ::setenv("XDG_DATA_HOME", data.path().c_str(), 1);
    Figures figures;
    {
        FarHost far(roundTrip);
        Pane pane(far);
        measureMove(figures, pane);
        measureDelete(figures, pane);
    }
    showTrash();
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::measureAll();
}
