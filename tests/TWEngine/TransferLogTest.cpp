#include "TWEngine/Transfer/TransferLog.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using Arrival = TransferLog::Arrival;

TEST(TransferLogTest, aStreamThatWasReadToItsEndAndNotPassedOnHasArrivedNowhere)
{
    TransferLog log({"a", "b"});
    log.begin("a", 0, 0);
    log.begin("b", 1024, 1);
    log.end(10'240, 2);
    for (auto const arrival : {Arrival::everything, Arrival::allButInFlight}) {
        EXPECT_THAT(log.summary(arrival).complete, ElementsAre());
        EXPECT_THAT(log.summary(arrival).partial, ElementsAre("a", "b"));
    }
    log.passed(10'240, 2);
    EXPECT_THAT(log.summary(Arrival::everything).complete, ElementsAre("a", "b"));
    EXPECT_EQ(log.summary(Arrival::everything).files, 2);
}

} // namespace
} // namespace tw::test
