#include "Tarnwick/Toolkit/Appearance/ColorScheme.h"

#include "Tarnwick/Toolkit/Appearance/Palettes.h"
#include "tests/ui/FakePortal.h"
#include "tests/ui/PrivateBus.h"
#include "tests/ui/QtLoop.h"

#include <QApplication>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>

namespace tw::test {
namespace {

using Preference = ColorScheme::Preference;

/// Longer than any test runs.
constexpr std::chrono::hours endless{1};

class ColorSchemeTest : public ::testing::Test {
protected:
    ~ColorSchemeTest() override { QApplication::setPalette(QPalette()); }

    void startPortal(FakePortal::Answers answers, uint value)
    {
        portal.emplace(bus.connect(), answers);
        portal->setScheme(value);
    }

    void start(std::chrono::milliseconds patience)
    {
        scheme.emplace(bus.connect(), patience);
        scheme->start([this] { windowShown = windowColor(); });
    }

    void waitForWindow()
    {
        processUntil([this] { return windowShown.has_value(); });
    }

    void waitFor(Preference preference)
    {
        processUntil([&] { return scheme->preference() == preference; });
    }

    static QColor windowColor() { return QApplication::palette().color(QPalette::Window); }

    static QColor darkColor() { return Palettes::dark().color(QPalette::Window); }

    static QColor lightColor() { return Palettes::light().color(QPalette::Window); }

    PrivateBus bus;
    QColor const platformColor = windowColor();
    std::optional<FakePortal> portal;
    std::optional<ColorScheme> scheme;
    std::optional<QColor> windowShown; ///< with its background, when it would have been shown
};

TEST_F(ColorSchemeTest, onADarkDesktopTheWindowIsDarkWhenItIsShown)
{
    startPortal(FakePortal::Answers::atOnce, 1);
    start(endless);
    EXPECT_FALSE(windowShown); // nobody waited
    waitForWindow();
    EXPECT_EQ(*windowShown, darkColor());
    EXPECT_EQ(portal->questions(), 1U);
}

TEST_F(ColorSchemeTest, onALightDesktopTheWindowIsLightWhenItIsShown)
{
    startPortal(FakePortal::Answers::atOnce, 2);
    start(endless);
    waitForWindow();
    EXPECT_EQ(*windowShown, lightColor());
}

TEST_F(ColorSchemeTest, aDesktopWithoutAPreferenceKeepsThePlatformsColours)
{
    startPortal(FakePortal::Answers::atOnce, 0);
    start(endless);
    waitForWindow();
    EXPECT_EQ(*windowShown, platformColor);
    EXPECT_EQ(scheme->preference(), Preference::none);
}

TEST_F(ColorSchemeTest, aPortalThatDoesNotAnswerHoldsTheWindowUpForAMomentOnly)
{
    startPortal(FakePortal::Answers::whenTold, 1);
    start(ColorScheme::usualPatience);
    waitForWindow();
    EXPECT_EQ(*windowShown, platformColor);

    processUntil([this] { return portal->questions() == 1; });
    portal->answerNow();
    waitFor(Preference::dark);
    EXPECT_EQ(windowColor(), darkColor());
}

TEST_F(ColorSchemeTest, withoutAPortalThePlatformDecidesAndNobodyWaits)
{
    start(endless);
    waitForWindow();
    EXPECT_EQ(*windowShown, platformColor);
    EXPECT_EQ(scheme->preference(), Preference::none);
}

TEST_F(ColorSchemeTest, withoutABusThePlatformDecidesAndNobodyWaits)
{
    scheme.emplace(QDBusConnection(QString()), endless);
    scheme->start([this] { windowShown = windowColor(); });
    EXPECT_FALSE(windowShown); // never inside the call
    waitForWindow();
    EXPECT_EQ(*windowShown, platformColor);
}

TEST_F(ColorSchemeTest, aChangeInTheDesktopIsFollowed)
{
    startPortal(FakePortal::Answers::atOnce, 1);
    start(endless);
    waitForWindow();
    portal->change(2);
    waitFor(Preference::light);
    EXPECT_EQ(windowColor(), lightColor());
    portal->change(0);
    waitFor(Preference::none);
    EXPECT_EQ(windowColor(), platformColor);
}

TEST_F(ColorSchemeTest, otherSettingsChangeNothing)
{
    startPortal(FakePortal::Answers::atOnce, 2);
    start(endless);
    waitForWindow();
    portal->changeSomethingElse(1);
    portal->change(0); // comes behind the others
    processUntil([this] {
        EXPECT_NE(scheme->preference(), Preference::dark);
        return scheme->preference() == Preference::none;
    });
}

TEST_F(ColorSchemeTest, aChangeIsNotUndoneByAnAnswerThatWasOnItsWay)
{
    startPortal(FakePortal::Answers::whenTold, 1);
    start(endless);
    processUntil([this] { return portal->questions() == 1; });
    portal->change(2);
    waitFor(Preference::light);
    portal->setScheme(1);
    portal->answerNow();
    waitForWindow(); // which is told by the answer
    EXPECT_EQ(scheme->preference(), Preference::light);
    EXPECT_EQ(*windowShown, lightColor());
}

TEST_F(ColorSchemeTest, aValueOfALaterPortalIsNoPreference)
{
    startPortal(FakePortal::Answers::atOnce, 7);
    start(endless);
    waitForWindow();
    EXPECT_EQ(scheme->preference(), Preference::none);
    EXPECT_EQ(*windowShown, platformColor);
}

} // namespace
} // namespace tw::test
