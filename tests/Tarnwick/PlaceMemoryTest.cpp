#include "Tarnwick/Panes/PlaceMemory.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using Place = PlaceMemory::Place;

TEST(PlaceMemoryTest, aFolderIsRecalledAsItWasLeftLast)
{
    PlaceMemory places;
    places.remember("local", "/a", {"x", 3});
    places.remember("local", "/b", {"y", 4});
    places.remember("local", "/a", {"z", 5});
    EXPECT_EQ(places.recall("local", "/a"), (Place{"z", 5}));
    EXPECT_EQ(places.recall("local", "/b"), (Place{"y", 4}));
}

TEST(PlaceMemoryTest, anUnknownFolderIsRecalledAtItsTop)
{
    PlaceMemory places;
    places.remember("local", "/a", {"x", 3});
    EXPECT_EQ(places.recall("local", "/"), Place());
    EXPECT_EQ(places.recall("box", "/a"), Place()) << "of another machine";
}

TEST(PlaceMemoryTest, ofTooManyFoldersTheOneThatWasLeftFirstIsForgotten)
{
    PlaceMemory places;
    for (std::size_t number = 0; number < PlaceMemory::mostFolders; ++number)
        places.remember("local", std::to_string(number), {"x", 1});
    places.remember("local", "0", {"again", 2});
    places.remember("local", "one more", {"x", 1});
    EXPECT_EQ(places.recall("local", "1"), Place());
    EXPECT_EQ(places.recall("local", "0"), (Place{"again", 2}));
    EXPECT_EQ(places.recall("local", "2"), (Place{"x", 1}));
}

} // namespace
} // namespace tw::test
