#include "Tarnwick/Clipboard/FileFormats.h"

#include <gmock/gmock.h>

#include <map>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

using Formats = std::map<std::string, std::string, std::less<>>;

Formats formatsOf(FileDrag const &files)
{
    Formats formats;
    for (auto const type : FileFormats::all())
        formats.emplace(type, FileFormats::render(files, type).value());
    return formats;
}

std::optional<FileFormats::Offered> readFrom(Formats const &formats)
{
    return FileFormats::read([&formats](std::string_view type) -> std::optional<std::string> {
        auto const found = formats.find(type);
        return found == formats.end() ? std::nullopt : std::optional(found->second);
    });
}

/// What another program finds, which does not know the private format.
std::optional<FileFormats::Offered> readByOthers(FileDrag const &files)
{
    auto formats = formatsOf(files);
    formats.erase(formats.find(FileDrag::mimeType));
    return readFrom(formats);
}

TEST(FileFormatsTest, pathsHaveOneSlashBehindTheFolder)
{
    EXPECT_THAT((FileDrag{.connection = "local", .directory = "/", .names = {"name"}}).paths(), ElementsAre("/name"));
    EXPECT_THAT((FileDrag{.connection = "local", .directory = "/a/", .names = {"name"}}).paths(),
                ElementsAre("/a/name"));
    EXPECT_THAT((FileDrag{.connection = "local", .directory = "/a", .names = {"x", "y"}}).paths(),
                ElementsAre("/a/x", "/a/y"));
}

TEST(FileFormatsTest, everyNameComesBackAsItWas)
{
    std::string every;
    for (auto byte = 1; byte < 256; ++byte)
        every += byte == '/' ? '_' : static_cast<char>(byte);
    for (auto const isMove : {false, true}) {
        FileDrag const files{.connection = "ann@web 1",
                             .directory = "/srv/\xff",
                             .names = {every, "a b", "%41", "ä", "\xc3", "-", "#?&=+"},
                             .isMove = isMove};
        auto local = files;
        local.connection = "local";
        EXPECT_EQ(readByOthers(local), (FileFormats::Offered{.paths = local.paths(), .isMove = isMove}));
        EXPECT_EQ(readFrom(formatsOf(local)), (FileFormats::Offered{.own = local, .isMove = isMove}));
    }
}

TEST(FileFormatsTest, whatOtherProgramsGetIsSpelledAsTheyReadIt)
{
    auto const local = formatsOf({.connection = "local", .directory = "/a b", .names = {"x", "\xff%"}, .isMove = true});
    EXPECT_EQ(local.at("text/uri-list"), "file:///a%20b/x\r\nfile:///a%20b/%FF%25\r\n");
    EXPECT_EQ(local.at("x-special/gnome-copied-files"), "cut\nfile:///a%20b/x\nfile:///a%20b/%FF%25");
    EXPECT_EQ(local.at("application/x-kde-cutselection"), "1");
    EXPECT_EQ(local.at("text/plain"), "/a b/x\n/a b/\xef\xbf\xbd%");

    auto const remote = formatsOf({.connection = "ann@web", .directory = "/srv", .names = {"x"}});
    EXPECT_EQ(remote.at("text/uri-list"), "sftp://ann@web/srv/x\r\n");
    EXPECT_EQ(remote.at("x-special/gnome-copied-files"), "copy\nsftp://ann@web/srv/x");
    EXPECT_EQ(remote.at("application/x-kde-cutselection"), "0");
    EXPECT_EQ(remote.at("text/plain"), "ann@web:/srv/x");
    EXPECT_EQ(FileFormats::render({}, "image/png"), std::nullopt);
}

TEST(FileFormatsTest, whatOtherProgramsOfferIsRead)
{
    struct {
        Formats formats;
        std::vector<std::string> paths;
        bool isMove = false;
    } const cases[] = {
        {{{"text/uri-list", "file:///a\r\nfile:///b%20c\r\n"}}, {"/a", "/b c"}},
        {{{"text/uri-list", "# comment\nfile://localhost/a\nfile:///d/\n\n"}}, {"/a", "/d"}},
        {{{"text/uri-list", std::string("file:///a\0", 10)}}, {"/a"}},
        {{{"text/uri-list", "file:///a"}, {"application/x-kde-cutselection", "1"}}, {"/a"}, true},
        {{{"text/uri-list", "file:///a"}, {"application/x-kde-cutselection", "0"}}, {"/a"}},
        {{{"x-special/gnome-copied-files", "cut\nfile:///a\nfile:///b"}, {"text/uri-list", "file:///z"}},
         {"/a", "/b"},
         true},
        {{{"x-special/gnome-copied-files", "copy\nfile:///a"}}, {"/a"}},
        {{{"x-special/gnome-copied-files", "cutfile:///a"}, {"text/uri-list", "file:///z"}}, {"/z"}},
        {{{std::string(FileDrag::mimeType), "{]"}, {"text/uri-list", "file:///z"}}, {"/z"}},
    };

    for (auto const &each : cases)
        EXPECT_EQ(readFrom(each.formats), (FileFormats::Offered{.paths = each.paths, .isMove = each.isMove}));
}

TEST(FileFormatsTest, whatIsNoListOfFilesIsAsIfAbsent)
{
    std::string const own(FileDrag::mimeType);
    auto const many = FileFormats::mostNames + 1;
    std::string manyNames = R"({"connection":"local","directory":"/","isMove":false,"names":[""])";
    for (std::size_t count = 0; count < 2 * many; ++count)
        manyNames += ",0";
    Formats const cases[] = {
        {},
        {{"text/uri-list", ""}},
        {{"text/uri-list",
          "/a\nhttp://x/y\nfile:a\nfile://other/b\nfile:///\nfile:///a/..\nfile:///a%2F..\nfile:///a%00"}},
        {{"text/uri-list", std::string(FileFormats::mostBytes + 1, 'x')}},
        {{"x-special/gnome-copied-files", "cut"}},
        {{"text/plain", "file:///a"}},
        {{own, R"({"connection":"local","directory":"/","names":[],"isMove":false})"}},
        {{own, R"({"connection":"local","directory":"/","names":["a/b"],"isMove":false})"}},
        {{own, R"({"connection":"local","directory":"/","names":[".."],"isMove":false})"}},
        {{own, R"({"connection":"local","directory":"a","names":["b"],"isMove":false})"}},
        {{own, R"({"connection":"","directory":"/","names":["b"],"isMove":false})"}},
        {{own, R"({"connection":"a\nb","directory":"/","names":["b"],"isMove":false})"}},
        {{own, R"({"connection":"local","directory":"/","names":["b"],"isMove":"no"})"}},
        {{own, R"({"connection":"local","directory":"/","names":[7],"isMove":false})"}},
        {{own, R"({"connection":"local","directory":"/","names":["b"],"namesBytes":["?"],"isMove":false})"}},
        {{own, R"(["local","/",["b"],false])"}},
        {{own, manyNames + "]}"}},
        {{own, std::string(100'000, '[')}},
    };
    for (auto const &each : cases)
        EXPECT_EQ(readFrom(each), std::nullopt) << (each.empty() ? "" : each.begin()->second.substr(0, 100));
}

TEST(FileFormatsTest, aLongListIsCutOff)
{
    std::string list;
    for (std::size_t count = 0; count <= FileFormats::mostNames; ++count)
        list += "file:///a\n";
    EXPECT_EQ(readFrom({{"text/uri-list", list}}).value().paths.size(), FileFormats::mostNames);
}

} // namespace
} // namespace tw::test
