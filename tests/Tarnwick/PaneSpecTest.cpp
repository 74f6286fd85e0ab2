#include "Tarnwick/Panes/PaneSpec.h"

#include <cstdlib>

namespace tw::test {

namespace {

/// $HOME for the length of a test.
class HomeVariable {
public:
    explicit HomeVariable(std::optional<std::string> const &value)
    {
        if (char const *const set = std::getenv("HOME"))
            before = set;
        put(value);
    }

    HomeVariable(HomeVariable const &) = delete;
    HomeVariable &operator=(HomeVariable const &) = delete;

    ~HomeVariable() { put(before); }

private:
    static void put(std::optional<std::string> const &value)
    {
        if (value)
            setenv("HOME", value->c_str(), 1);
        else
            unsetenv("HOME");
    }

    std::optional<std::string> before;
};

PaneSpec spec(std::string connection, std::string path, bool pathWasExplicit)
{
    return {.connection = std::move(connection), .path = std::move(path), .pathWasExplicit = pathWasExplicit};
}

PaneSpec::Sides sidesOf(std::vector<char const *> const &arguments)
{
    return PaneSpec::fromCommandLine(arguments);
}

} // namespace

TEST(PaneSpecTest, theLocalHomeIsTheHomeVariable)
{
    HomeVariable const home("/home/someone/");

    EXPECT_EQ(PaneSpec::localHome(), spec("local", "/home/someone", true));
}

TEST(PaneSpecTest, theLocalHomeIsTheRootWithoutAnAbsoluteHomeVariable)
{
    for (std::optional<std::string> const &value : {std::optional<std::string>(), {""}, {"relative/home"}}) {
        HomeVariable const home(value);
        EXPECT_EQ(PaneSpec::localHome(), spec("local", "/", true));
    }
}

TEST(PaneSpecTest, anAbsolutePathIsLocal)
{
    EXPECT_EQ(PaneSpec::parse("/srv"), spec("local", "/srv", true));
    EXPECT_EQ(PaneSpec::parse("/a:b"), spec("local", "/a:b", true));
    EXPECT_EQ(PaneSpec::parse("/"), spec("local", "/", true));
}

TEST(PaneSpecTest, aTextWithoutAColonIsAConnection)
{
    EXPECT_EQ(PaneSpec::parse("web"), spec("web", "/", false));
    EXPECT_EQ(PaneSpec::parse("local"), spec("local", "/", false));
}

TEST(PaneSpecTest, aPathMayStandBehindTheFirstColon)
{
    EXPECT_EQ(PaneSpec::parse("web:/srv"), spec("web", "/srv", true));
    EXPECT_EQ(PaneSpec::parse("web:/a:b"), spec("web", "/a:b", true));
    EXPECT_EQ(PaneSpec::parse("local:/srv"), spec("local", "/srv", true));
    EXPECT_EQ(PaneSpec::parse("web:srv"), spec("web", "srv", true));
}

TEST(PaneSpecTest, nothingBehindTheColonIsTheHomeOrTheRoot)
{
    HomeVariable const home("/home/someone");

    EXPECT_EQ(PaneSpec::parse("local:"), spec("local", "/home/someone", false));
    EXPECT_EQ(PaneSpec::parse("web:"), spec("web", "/", false));
}

TEST(PaneSpecTest, anEmptyTextOrConnectionIsNothing)
{
    EXPECT_EQ(PaneSpec::parse(""), std::nullopt);
    EXPECT_EQ(PaneSpec::parse(":/x"), std::nullopt);
    EXPECT_EQ(PaneSpec::parse(":"), std::nullopt);
}

TEST(PaneSpecTest, theCommandLineNamesASideEach)
{
    auto const sides = sidesOf({"--left", "/tmp", "--right", "web:/srv"});

    EXPECT_EQ(sides.left, spec("local", "/tmp", true));
    EXPECT_EQ(sides.right, spec("web", "/srv", true));
}

TEST(PaneSpecTest, otherArgumentsAreSkipped)
{
    auto const sides = sidesOf({"-v", "/ignored", "--right", "web", "--middle", "x"});

    EXPECT_EQ(sides.left, std::nullopt);
    EXPECT_EQ(sides.right, spec("web", "/", false));
}

TEST(PaneSpecTest, aLaterOptionForASideReplacesAnEarlierOne)
{
    EXPECT_EQ(sidesOf({"--left", "/a", "--left", "/b"}).left, spec("local", "/b", true));
}

TEST(PaneSpecTest, aTextThatNamesNoPlaceLeavesTheSideAsItWas)
{
    EXPECT_EQ(sidesOf({"--left", "/a", "--left", ":x"}).left, spec("local", "/a", true));
    EXPECT_EQ(sidesOf({"--left", ""}).left, std::nullopt);
}

TEST(PaneSpecTest, anOptionInLastPlaceIsIgnored)
{
    EXPECT_EQ(sidesOf({"--left"}).left, std::nullopt);
    EXPECT_EQ(sidesOf({"--left", "/a", "--left"}).left, spec("local", "/a", true));
    EXPECT_EQ(sidesOf({}).left, std::nullopt);
}

TEST(PaneSpecTest, whatStandsBehindAnOptionIsItsTextWhateverItLooksLike)
{
    auto const sides = sidesOf({"--left", "--right", "/a"});

    EXPECT_EQ(sides.left, spec("--right", "/", false));
    EXPECT_EQ(sides.right, std::nullopt);
}

} // namespace tw::test
