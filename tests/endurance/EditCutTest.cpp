// Uploads of edited files over a line that is cut at every of many places.

#include "tests/support/EditCutTest.h"

namespace tw::test {
namespace {

constexpr std::size_t editCuts = 100;

TEST_F(EditCutTest, aSmallFileIsWholeAtAHundredCuts)
{
    constexpr std::size_t bytes = 3000;
    expectWholeAfterEveryCut({.bytes = bytes, .cut = "session", .places = editCuts, .most = 2 * bytes});
}

TEST_F(EditCutTest, aLargeFileIsWholeAtAHundredCuts)
{
    constexpr auto bytes = 4 * EditCommand::mostContentInRequest;
    expectWholeAfterEveryCut({.bytes = bytes, .cut = "upload", .places = editCuts, .most = bytes});
}

} // namespace
} // namespace tw::test
