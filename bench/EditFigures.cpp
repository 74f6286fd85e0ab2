// How soon a save in an editor is on a host.

#include "Tarnwick/Editing/EditSessions.h"
#include "bench/FarHost.h"
#include "bench/Figure.h"

#include <filesystem>
#include <fstream>

namespace tw::bench {
namespace {

constexpr auto roundTrip = std::chrono::milliseconds(50);
constexpr int saves = 9;

Task<std::shared_ptr<Browser>> reached(std::shared_ptr<Browser> browser)
{
    co_return browser;
}

std::string contentNow(std::string const &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// An editor, and somebody on the host who looks at the file without a pause.
class Editing {
public:
    Editing()
    {
        std::ofstream(path) << "old";
        far.loop.run(provider->connect());
        edits = std::make_shared<EditSessions>(
            RemoteEditSession::Ports{.engine = far.engine,
                                     .mainContext = main,
                                     .clock = far.engine.clock(),
                                     .host = [this](std::string const & /*connection*/) { return reached(browser); }},
            EditStaging::Place{.base = folder.path("edits")});
        session = edits->add(far.loop.run(edits->fetch(provider, "far", path)));
    }

    Editing(Editing const &) = delete;
    Editing &operator=(Editing const &) = delete;

    ~Editing()
    {
        edits->leaveForNextStart();
        session.reset();
        edits.reset();
        main->runPending();
        far.loop.run(browser->shutdown());
        far.loop.run(provider->disconnect());
        main->runPending();
        far.engine.workers().waitUntilIdle();
    }

    /// From the end of a save until its content is the file's on the host.
    double save(std::string const &content)
    {
        std::ofstream(session->localPath(), std::ios::trunc) << content;
        auto const taken = millisecondsOf([&] {
            while (contentNow(path) != content)
                runFor(std::chrono::milliseconds(1));
        });
        while (session->isUnsaved())
            runFor(std::chrono::milliseconds(1));
        return taken;
    }

private:
    void runFor(std::chrono::milliseconds time)
    {
        if (woken.try_acquire_for(time))
            main->runPending();
    }

    test::TemporaryFolder folder;
    std::counting_semaphore<> woken{0};
    std::shared_ptr<MainContext> const main = std::make_shared<MainContext>([this] { woken.release(); });
    FarHost far{roundTrip};
    std::string const path = folder.path("there.txt");
    std::shared_ptr<SSHProvider> const provider = far.provider();
    std::shared_ptr<Browser> const browser = far.browser(provider);
    std::shared_ptr<EditSessions> edits;
    EditSessions::Session session;
};

void measure(Figures &figures)
{
    Editing editing;
    std::vector<double> times;
    for (int number = 0; number <= saves; ++number) {
        auto const taken = editing.save("save " + std::to_string(number));
        if (number > 0) // the first one warms up
            times.push_back(taken);
    }
    constexpr double settleTime = 1000;
    constexpr double limit = settleTime + 3 * 50 + 50;
    figures.report("save to uploaded, 50 ms away", median(times), Figures::Yardstick::limit, limit, "ms", 1);
}

} // namespace
} // namespace tw::bench

int main()
{
    tw::bench::Figures figures;
    tw::bench::measure(figures);
    return figures.exitCode();
}
