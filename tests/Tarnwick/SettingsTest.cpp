#include "Tarnwick/Settings/Settings.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

/// What a setting reads as with a stored text.
template <class T>
T stored(Setting<T> const &setting, std::string const &text)
{
    MemoryDefaults defaults;
    defaults.setText(setting.key, text);
    return setting.read(defaults);
}

/// What a setting reads as after it was written.
template <class T>
T written(Setting<T> const &setting, T const &value)
{
    MemoryDefaults defaults;
    setting.write(defaults, value);
    return setting.read(defaults);
}

TEST(SettingsTest, withoutAStoredTextADefaultCounts)
{
    MemoryDefaults const none;
    EXPECT_DOUBLE_EQ(Settings::paneFontSize.read(none), 12);
    EXPECT_EQ(Settings::folderPlacement.read(none), FolderPlacement::top);
    EXPECT_EQ(Settings::activeSide.read(none), PaneSide::left);
    EXPECT_EQ(Settings::columns.read(none), "");
    EXPECT_EQ(Settings::windowGeometry.read(none), "");
    EXPECT_EQ(Settings::leftShare.read(none), std::nullopt);
    EXPECT_FALSE(Settings::welcomeShown.read(none));
    EXPECT_EQ(Settings::toolTipDelay.read(none), 1400);
}

TEST(SettingsTest, theFontSizeIsWhatIsStored)
{
    EXPECT_DOUBLE_EQ(stored(Settings::paneFontSize, "15"), 15);
    EXPECT_DOUBLE_EQ(stored(Settings::paneFontSize, "10.5"), 10.5);
    EXPECT_DOUBLE_EQ(written(Settings::paneFontSize, 10.5), 10.5);
}

TEST(SettingsTest, theFontSizeStaysBetweenNineAndTwentyReadAndWritten)
{
    EXPECT_DOUBLE_EQ(stored(Settings::paneFontSize, "3"), 9);
    EXPECT_DOUBLE_EQ(stored(Settings::paneFontSize, "200"), 20);
    EXPECT_DOUBLE_EQ(stored(Settings::paneFontSize, "inf"), 20);
    MemoryDefaults defaults;
    Settings::paneFontSize.write(defaults, 21);
    EXPECT_EQ(defaults.text("tw.paneFontSize"), "20");
    Settings::paneFontSize.write(defaults, 8);
    EXPECT_EQ(defaults.text("tw.paneFontSize"), "9");
}

TEST(SettingsTest, whatIsNoSizeIsTheUsualSize)
{
    for (std::string const text : {"", "large", "12pt", "0", "-5", "nan", "1,5"})
        EXPECT_DOUBLE_EQ(stored(Settings::paneFontSize, text), 12) << text;
}

TEST(SettingsTest, anUnknownFolderPlacementMeansTop)
{
    for (auto const *const text : {"", "Bottom", "sideways"})
        EXPECT_EQ(stored(Settings::folderPlacement, text), FolderPlacement::top) << text;
}

TEST(SettingsTest, everyFolderPlacementIsStoredAsItsText)
{
    std::pair<FolderPlacement, char const *> const table[] = {
        {FolderPlacement::top, "top"}, {FolderPlacement::bottom, "bottom"}, {FolderPlacement::mixed, "mixed"}};
    for (auto const &[placement, text] : table) {
        MemoryDefaults defaults;
        Settings::folderPlacement.write(defaults, placement);
        EXPECT_EQ(defaults.text("tw.folderPlacement"), text);
        EXPECT_EQ(Settings::folderPlacement.read(defaults), placement);
    }
}

TEST(SettingsTest, filesAreEditedWithApplicationsUnlessATerminalIsChosen)
{
    EXPECT_EQ(stored(Settings::editor, "vi"), EditorChoice::application);
    EXPECT_EQ(stored(Settings::editor, "terminal"), EditorChoice::terminal);
    EXPECT_EQ(written(Settings::editor, EditorChoice::terminal), EditorChoice::terminal);
}

TEST(SettingsTest, theActiveSideIsLeftUnlessTheTextSaysRight)
{
    EXPECT_EQ(written(Settings::activeSide, PaneSide::right), PaneSide::right);
    EXPECT_EQ(stored(Settings::activeSide, "top"), PaneSide::left);
}

TEST(SettingsTest, theShareOfTheLeftPaneIsANumberOrNothing)
{
    EXPECT_EQ(written(Settings::leftShare, {421}), 421);
    EXPECT_EQ(stored(Settings::leftShare, "half"), std::nullopt);
}

TEST(SettingsTest, theToolTipDelayIsNeverNegative)
{
    EXPECT_EQ(stored(Settings::toolTipDelay, "0"), 0);
    EXPECT_EQ(stored(Settings::toolTipDelay, "900"), 900);
    EXPECT_EQ(stored(Settings::toolTipDelay, "-1"), 1400);
    EXPECT_EQ(stored(Settings::toolTipDelay, "soon"), 1400);
}

TEST(SettingsTest, anObserverIsCalledAfterEachChangeOfItsSetting)
{
    MemoryDefaults defaults;
    std::vector<double> sizes;
    auto const observation =
        Settings::paneFontSize.observe(defaults, [&] { sizes.push_back(Settings::paneFontSize.read(defaults)); });
    Settings::paneFontSize.write(defaults, 14);
    Settings::paneFontSize.write(defaults, 14);
    Settings::folderPlacement.write(defaults, FolderPlacement::bottom);
    Settings::paneFontSize.write(defaults, 15);
    EXPECT_EQ(sizes, (std::vector<double>{14, 15}));
}

TEST(SettingsTest, anObservationEndsWithItsSubscription)
{
    MemoryDefaults defaults;
    int calls = 0;
    Defaults::Subscription second;
    auto first = Settings::columns.observe(defaults, [&] {
        ++calls;
        second.reset();
    });
    second = Settings::columns.observe(defaults, [&] { calls += 100; });
    Settings::columns.write(defaults, "date:90");
    EXPECT_EQ(calls, 1) << "the first observer ended the second one";
    first.reset();
    Settings::columns.write(defaults, "date:80");
    EXPECT_EQ(calls, 1);
}

TEST(SettingsTest, aSubscriptionMayOutliveTheSettings)
{
    auto defaults = std::make_unique<MemoryDefaults>();
    auto const observation = Settings::columns.observe(*defaults, [] {});
    defaults.reset();
    EXPECT_NE(observation, nullptr);
}

} // namespace
} // namespace tw::test
