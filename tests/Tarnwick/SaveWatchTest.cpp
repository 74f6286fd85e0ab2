#include "Tarnwick/Editing/SaveWatch.h"

#include <gtest/gtest.h>

#include <vector>

namespace tw::test {
namespace {

TEST(SaveWatchTest, aSaveHasEndedWhenTheFileIsUnchangedForASecond)
{
    using Finding = SaveWatch::Finding;
    using Stamp = EditStaging::Stamp;

    struct Look {
        std::optional<Stamp> stamp;
        std::chrono::milliseconds time;
        Finding finding;
    };

    Stamp const old{.size = 3, .mtime = 10};
    Stamp const first{.size = 4, .mtime = 20};
    Stamp const earlier{.size = 4, .mtime = 5}; // the machine's clock was set back
    SaveWatch watch(old);
    for (auto const &[stamp, time, finding] : std::vector<Look>{
             {old, std::chrono::milliseconds(0), Finding::nothing},
             {first, std::chrono::milliseconds(1000), Finding::changed},
             {earlier, std::chrono::milliseconds(1500), Finding::changed}, // the wait begins again
             {earlier, std::chrono::milliseconds(2400), Finding::nothing},
             {std::nullopt, std::chrono::milliseconds(2450), Finding::nothing}, // in the midst of a replacement
             {earlier, std::chrono::milliseconds(2500), Finding::settled},
             {earlier, std::chrono::milliseconds(9000), Finding::nothing},
             {std::nullopt, std::chrono::milliseconds(9100), Finding::nothing},
             {first, std::chrono::milliseconds(9200), Finding::changed}, // made anew
             {first, std::chrono::milliseconds(10200), Finding::settled},
         })
        EXPECT_EQ(watch.tick(stamp, SaveWatch::Time(time)), finding) << time.count();
}

TEST(SaveWatchTest, aChangeHasWhatIsLeftOfItsSecond)
{
    using std::chrono::milliseconds;
    using Time = SaveWatch::Time;
    EditStaging::Stamp const saved{.size = 4, .mtime = 20};
    SaveWatch watch(EditStaging::Stamp{.size = 3, .mtime = 10});
    EXPECT_EQ(watch.untilSettled(Time(milliseconds(1000))), std::nullopt);
    watch.tick(saved, Time(milliseconds(1000)));
    EXPECT_EQ(watch.untilSettled(Time(milliseconds(1000))), milliseconds(1000));
    watch.tick(saved, Time(milliseconds(1900)));
    EXPECT_EQ(watch.untilSettled(Time(milliseconds(1900))), milliseconds(100));
    EXPECT_EQ(watch.untilSettled(Time(milliseconds(2000))), std::nullopt) << "the file is missing since";
}

} // namespace
} // namespace tw::test
