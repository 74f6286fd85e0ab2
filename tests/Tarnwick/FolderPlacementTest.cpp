#include "Tarnwick/Settings/FolderPlacement.h"

namespace tw::test {

namespace {

constexpr char const *key = "tw.folderPlacement";

} // namespace

TEST(FolderPlacementTest, anAbsentOrUnknownValueMeansTop)
{
    MemoryDefaults defaults;
    EXPECT_EQ(folderPlacement(defaults), FolderPlacement::top);
    for (auto const *const text : {"", "Bottom", "sideways"}) {
        defaults.setText(key, text);
        EXPECT_EQ(folderPlacement(defaults), FolderPlacement::top) << text;
    }
}

TEST(FolderPlacementTest, everyPlacementIsStoredAsItsText)
{
    std::pair<FolderPlacement, char const *> const table[] = {
        {FolderPlacement::top, "top"}, {FolderPlacement::bottom, "bottom"}, {FolderPlacement::mixed, "mixed"}};
    for (auto const &[placement, text] : table) {
        MemoryDefaults defaults;
        setFolderPlacement(defaults, placement);
        EXPECT_EQ(defaults.text(key), text);
        EXPECT_EQ(folderPlacement(defaults), placement);
    }
}

} // namespace tw::test
