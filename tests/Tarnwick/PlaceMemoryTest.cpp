#include "Tarnwick/Panes/PlaceMemory.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using Place = PlaceMemory::Place;

TEST(PlaceMemoryTest, aFolderIsRecalledAsItWasLeftLast)
{
    PlaceMemory places;
    places.remember("/a", {"x", 3});
    places.remember("/b", {"y", 4});
    places.remember("/a", {"z", 5});
    EXPECT_EQ(places.recall("/a"), (Place{"z", 5}));
    EXPECT_EQ(places.recall("/b"), (Place{"y", 4}));
}

TEST(PlaceMemoryTest, anUnknownFolderIsRecalledAtItsTop)
{
    PlaceMemory places;
    places.remember("/a", {"x", 3});
    EXPECT_EQ(places.recall("/"), Place());
    places.clear();
    EXPECT_EQ(places.recall("/a"), Place());
}

TEST(PlaceMemoryTest, ofTooManyFoldersTheOneThatWasLeftFirstIsForgotten)
{
    PlaceMemory places;
    for (std::size_t number = 0; number < PlaceMemory::mostFolders; ++number)
        places.remember(std::to_string(number), {"x", 1});
    places.remember("0", {"again", 2});
    places.remember("one more", {"x", 1});
    EXPECT_EQ(places.recall("1"), Place());
    EXPECT_EQ(places.recall("0"), (Place{"again", 2}));
    EXPECT_EQ(places.recall("2"), (Place{"x", 1}));
}

} // namespace
} // namespace tw::test
