#include "Tarnwick/Toolkit/Preview/DesktopThumbnailer.h"

#include "TWCore/Async/Cancelled.h"
#include "Tarnwick/Preview/FilePreviews.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"
#include "tests/ui/FakeThumbnailer.h"
#include "tests/ui/PrivateBus.h"
#include "tests/ui/QtLoop.h"

#include <gmock/gmock.h>

#include <optional>

namespace tw::test {
namespace {

using Answers = FakeThumbnailer::Answers;

/// The previews of files that only the desktop's thumbnailer makes pictures of.
class DesktopThumbnailerTest : public ::testing::Test {
protected:
    void startService(Answers answers)
    {
        service.emplace(bus.connect(), QString::fromStdString(thumbnails.path()));
        service->set(answers);
    }

    Started<void> preview(std::string const &path)
    {
        return loop.start(previews->load({.path = path, .name = "a film.mkv", .kind = EntryKind::file},
                                         {.width = 64, .height = 64},
                                         [this](PreviewContent content) { shown = std::move(content); }));
    }

    void waitFor(Started<void> const &task)
    {
        processUntil([&] {
            loop.drain();
            return task.isDone();
        });
    }

    std::string words() const
    {
        auto const *const text = std::get_if<Text>(&shown.body);
        return text ? text->english() : std::string();
    }

    std::shared_ptr<Picture const> picture() const
    {
        auto const *const one = std::get_if<std::shared_ptr<Picture const>>(&shown.body);
        return one ? *one : nullptr;
    }

    TemporaryFolder folder;
    TemporaryFolder thumbnails;
    std::string const film = folder.file("a film.mkv", std::string("\x1a\x45\xdf\xa3\0\0", 6));
    std::string const question = "file://" + folder.path() + "/a%20film.mkv video/x-matroska large";
    PrivateBus bus;
    QDBusConnection connection = bus.connect();
    std::optional<FakeThumbnailer> service;
    EngineRuntime runtime;
    TestLoop loop;
    std::shared_ptr<FilePreviews> previews = std::make_shared<FilePreviews>(
        runtime, [] { return std::string(); },
        FilePreviews::Thumbnails{.folder = thumbnails.path(),
                                 .maker = std::make_shared<DesktopThumbnailer>([this] { return connection; })});
    PreviewContent shown;
};

TEST_F(DesktopThumbnailerTest, itsPictureIsShownAndNotAskedForAgain)
{
    startService(Answers::picture);
    waitFor(preview(film));
    ASSERT_TRUE(picture()) << words();
    EXPECT_EQ(picture()->width, 32);
    EXPECT_EQ(shown.facts.english().substr(0, 5), "video");
    waitFor(preview(film));
    EXPECT_TRUE(picture());
    EXPECT_EQ(service->asked, QStringList(QString::fromStdString(question)));
}

TEST_F(DesktopThumbnailerTest, withoutAPictureThereAreWords)
{
    waitFor(preview(film));
    EXPECT_EQ(words(), "There is no preview of files of this kind.") << "there is no service";
    startService(Answers::failure);
    shown = {};
    waitFor(preview(film));
    EXPECT_EQ(words(), "There is no preview of files of this kind.");
    EXPECT_EQ(service->asked.size(), 1);
    connection = QDBusConnection(QString());
    shown = {};
    waitFor(preview(film));
    EXPECT_EQ(words(), "There is no preview of files of this kind.") << "there is no bus";
}

TEST_F(DesktopThumbnailerTest, aFileThatIsLeftIsTakenOffItsList)
{
    startService(Answers::none);
    auto const task = preview(film);
    processUntil([&] {
        loop.drain();
        return service->asked.size() == 1;
    });
    task.stop();
    waitFor(task);
    EXPECT_THROW(task.value(), Cancelled);
    processUntil([&] { return service->asked.size() == 2; });
    EXPECT_EQ(service->asked.last(), QStringLiteral("dequeue 1"));
}

} // namespace
} // namespace tw::test
