#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Settings/Defaults.h"
#include "Tarnwick/Toolkit/Program/AppDelegate.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::EndsWith;

TEST(QuittingTest, itWaitsOnceForTwoSecondsAfterItsLastNote)
{
    TemporaryFolder const folder;
    EngineRuntime engine;
    QtMainContext mainContext;
    MemoryDefaults defaults;
    ConnectionRegistry connections(
        {.engine = engine, .mainContext = mainContext.context(), .sshProgram = "/bin/false"});
    std::vector<std::chrono::nanoseconds> waits;
    std::string logged;
    auto isShutDown = false;
    Scratch::Place const scratch{.base = folder.path("scratch")};
    auto const copies = Scratch::directory("open", scratch);
    AppDelegate delegate({.engine = engine,
                          .mainContext = mainContext.context(),
                          .defaults = defaults,
                          .connections = connections,
                          .lifeLog = folder.path("life.log"),
                          .version = "1",
                          .scratch = scratch,
                          .edits = {.base = scratch.base + "-edits"},
                          .waitForShutdown = [&](std::binary_semaphore &done, std::chrono::nanoseconds limit) {
                              waits.push_back(limit);
                              logged = contentOf(folder.path("life.log"));
                              isShutDown = done.try_acquire();
                          }});
    delegate.applicationWillTerminate();
    EXPECT_THAT(waits, ElementsAre(2s)) << "neither more nor less, and not twice";
    EXPECT_THAT(logged, EndsWith("quit\n"));
    engine.workers().waitUntilIdle();
    EXPECT_FALSE(std::filesystem::exists(copies)) << "local copies end with the program";
    EXPECT_FALSE(isShutDown) << "the shutdown needs the thread that waits, so a host cannot make it longer";
    mainContext.context()->close(); // with the shutdown in it, which a real end of the program leaves as it is
}

} // namespace
} // namespace tw::test
