#include "TWCore/Async/Cancelled.h"
#include "tests/support/SSHProviderTest.h"

namespace tw::test {
namespace {

constexpr int files = 20'000;

/// A host behind a line of 4 Mbit/s with a folder of 4 MB of names.
class NarrowLineTest : public SSHProviderTest {
protected:
    NarrowLineTest()
    {
        std::string const stem(180, 'x');
        for (int index = 0; index < files; ++index)
            folder.file(stem + std::to_string(index));
        reach();
        line->setSpeed(500e3);
        provider = connected();
    }

    std::uint64_t delivered() const { return line->traffic().towardsClient.delivered; }

    Provider provider;
};

TEST_F(NarrowLineTest, aListingThatIsLeftIsBrokenOffOnTheHost)
{
    auto const before = delivered();
    auto const left = loop.start(provider->fetchWhole(folder.path(), {}));
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return delivered() > before + (200U << 10U);
    });
    left.stop();
    finish(left);
    EXPECT_THROW(left.value(), Cancelled);
    EXPECT_EQ(run(provider, "echo next"), "next\n");
    EXPECT_LT(delivered() - before, 2U << 20U) << "the next answer does not stand behind all of the names";
}

TEST_F(NarrowLineTest, aScanInTheBackgroundTakesLittleOfIt)
{
    auto const before = delivered();
    auto const listings = loop.run(provider->fetch(folder.path(), 3, FetchPriority::background));
    EXPECT_TRUE(listings.at(folder.path()).truncated());
    EXPECT_LT(delivered() - before, 1U << 20U);
}

} // namespace
} // namespace tw::test
