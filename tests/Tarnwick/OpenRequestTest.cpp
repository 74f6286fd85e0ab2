#include "Tarnwick/Instance/OpenRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;

OpenRequest from(std::vector<char const *> const &arguments)
{
    return OpenRequest::from(arguments, "/home/me");
}

OpenRequest::Place on(std::optional<PaneSide> side, std::string const &connection, std::string const &path,
                      bool isExplicit = true)
{
    return {.side = side, .place = {.connection = connection, .path = path, .pathWasExplicit = isExplicit}};
}

TEST(OpenRequestTest, everySideThatIsNamedGetsItsPlace)
{
    EXPECT_THAT(from({"--left", "/usr", "--right", "web:/srv"}).places,
                ElementsAre(on(PaneSide::left, "local", "/usr"), on(PaneSide::right, "web", "/srv")));
}

TEST(OpenRequestTest, otherArgumentsArePlacesForTheActiveSide)
{
    EXPECT_THAT(from({"/usr", "web:", "web:srv"}).places,
                ElementsAre(on({}, "local", "/usr"), on({}, "web", "/", false), on({}, "web", "srv")));
}

TEST(OpenRequestTest, aRelativePathBeginsInTheFolderOfTheStart)
{
    EXPECT_THAT(
        from({"src", ".", "a/b:c"}).places,
        ElementsAre(on({}, "local", "/home/me/src"), on({}, "local", "/home/me"), on({}, "local", "/home/me/a/b:c")));
    char const *const word = "src";
    EXPECT_THAT(OpenRequest::from({&word, 1}, "/").places, ElementsAre(on({}, "local", "/src")));
}

TEST(OpenRequestTest, addressesOfFilesArePaths)
{
    EXPECT_THAT(from({"file:///a%20b/%C3%A9", "file://localhost/x", "file:///100%"}).places,
                ElementsAre(on({}, "local", "/a b/\xC3\xA9"), on({}, "local", "/x"), on({}, "local", "/100%")));
}

TEST(OpenRequestTest, whatNamesNoPlaceIsLeftOut)
{
    EXPECT_TRUE(from({"", "--left", ":", "--unknown", "file://", "--right"}).places.empty());
}

TEST(OpenRequestTest, comesOutOfItsMessageAsItWentIn)
{
    auto request = from({"--left", "/a\xff b", "--right", "web:", "/x", "local:"});
    request.activationToken = "token\xff=7";
    EXPECT_EQ(OpenRequest::decoded(request.encoded()), request);
    EXPECT_EQ(OpenRequest::decoded(OpenRequest().encoded()), OpenRequest());
}

TEST(OpenRequestTest, aMessageOfAnotherKindIsNone)
{
    using namespace std::string_literals;
    for (auto const &message : {""s, "\0\0"s, "tarnwick-open-1"s, "tarnwick-open-1\0left=/x\0"s, "tarnwick-open-2\0\0"s,
                                "tarnwick-open-10\0\0"s, "GET / HTTP/1.1\r\n\r\n"s})
        EXPECT_FALSE(OpenRequest::decoded(message)) << message;
}

TEST(OpenRequestTest, anOptionThatIsNotAboutPlacesAsksForAProcessOfItsOwn)
{
    auto const asks = [](std::vector<char const *> const &arguments) { return wantsOwnProcess(arguments); };
    EXPECT_FALSE(asks({}));
    EXPECT_FALSE(asks({"--left", "/usr", "/etc"}));
    EXPECT_TRUE(asks({"--new-instance", "/usr"}));
    EXPECT_TRUE(asks({"-platform", "offscreen"}));
}

TEST(OpenRequestTest, whatAnotherProgramHasShownIsATabForEachFolder)
{
    auto const shown = [](std::vector<std::string> const &addresses, OpenRequest::Show what) {
        std::vector<std::string> places;
        for (auto const &each : OpenRequest::showing(addresses, what).places)
            places.push_back(each.place.path + "|" + each.place.cursor);
        return places;
    };
    std::vector<std::string> const addresses{"file:///a/b%20c", "file:///a/d", "file:///e/", "file:///",
                                             "sftp://web/x",    "--left",      "/f",         "file://"};
    EXPECT_THAT(shown(addresses, OpenRequest::Show::items), testing::ElementsAre("/a|b c", "/|e"));
    EXPECT_THAT(shown(addresses, OpenRequest::Show::folders), testing::ElementsAre("/a/b c|", "/a/d|", "/e/|", "/|"));
    std::vector<std::string> many;
    for (std::size_t number = 0; number < 2 * OpenRequest::mostShown; ++number)
        many.push_back("file:///folder" + std::to_string(number));
    EXPECT_THAT(shown(many, OpenRequest::Show::folders), testing::SizeIs(OpenRequest::mostShown));
}

} // namespace
} // namespace tw::test
