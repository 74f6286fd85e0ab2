#include "Tarnwick/Preview/FilePreviews.h"
#include "Tarnwick/Toolkit/Preview/PictureView.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <QBuffer>
#include <QImage>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace tw::test {
namespace {

using namespace std::string_literals;

std::string jpegOf(Qt::GlobalColor color, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "jpeg");
    return bytes.toStdString();
}

/// A block of a camera: the photograph is to be turned to the right, and has this picture of itself.
std::string exifWith(std::string const &picture)
{
    auto const two = [](std::size_t number) {
        return std::string{static_cast<char>(number >> 8), static_cast<char>(number)};
    };
    auto const content = "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\x1a"s +
                         "\0\x02\x02\x01\0\x04\0\0\0\x01\0\0\0\x38\x02\x02\0\x04\0\0\0\x01\0\0"s + two(picture.size()) +
                         "\0\0\0\0"s + picture;
    return "\xff\xe1"s + two(content.size() + 2) + content;
}

/// What is shown of a photograph with much detail that begins with those bytes.
std::vector<PreviewContent> shownOfPhotograph(std::string photograph, PictureBounds room)
{
    TemporaryFolder const folder;
    photograph.append(2'000'000, '\0');
    EngineRuntime runtime;
    TestLoop loop;
    auto const previews = std::make_shared<FilePreviews>(runtime, [] { return std::string(); });
    std::vector<PreviewContent> shown;
    loop.run(previews->load({.path = folder.file("a.jpg", photograph), .name = "a.jpg", .kind = EntryKind::file}, room,
                            [&](PreviewContent content) { shown.push_back(std::move(content)); }));
    return shown;
}

Picture const &shownPicture(PreviewContent const &content)
{
    return *std::get<std::shared_ptr<Picture const>>(content.body);
}

/// Its sides, in pixels.
std::pair<int, int> sidesOf(PreviewContent const &content)
{
    return {shownPicture(content).width, shownPicture(content).height};
}

TEST(PhotographPreviewTest, theSmallPictureInAPhotographIsShownUntilTheWholeIsDecoded)
{
    auto photograph = jpegOf(Qt::blue, {800, 400});
    photograph.insert(2, exifWith(jpegOf(Qt::red, {80, 40})));
    auto const shown = shownOfPhotograph(photograph, {.width = 1000, .height = 1000});
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown[0].detail, PreviewContent::Detail::little);
    EXPECT_EQ(sidesOf(shown[0]), std::pair(40, 80)) << "turned as the whole is";
    EXPECT_EQ(shown[1].detail, PreviewContent::Detail::all);
    EXPECT_EQ(sidesOf(shown[1]), std::pair(400, 800));
}

TEST(PhotographPreviewTest, aPhotographWithoutASmallPictureIsShownCoarseUntilItIsDecoded)
{
    auto photograph = jpegOf(Qt::blue, {803, 400});
    photograph.insert(2, exifWith("no picture"));
    auto const shown = shownOfPhotograph(photograph, {.width = 1000, .height = 1000});
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown[0].detail, PreviewContent::Detail::little);
    EXPECT_EQ(sidesOf(shown[0]), std::pair(50, 100)) << "turned, and an eighth of it";
    EXPECT_EQ(shownPicture(shown[0]).wholeHeight, 803);
    auto const *const pixel = reinterpret_cast<uchar const *>(shownPicture(shown[0]).pixels.data());
    EXPECT_LT(pixel[0], 16) << "red";
    EXPECT_GT(pixel[2], 239) << "blue";
    EXPECT_EQ(shown[1].detail, PreviewContent::Detail::all);
    EXPECT_EQ(sidesOf(shown[1]), std::pair(400, 803));
}

TEST(PhotographPreviewTest, aPhotographThatIsShownSmallIsDecodedOnce)
{
    auto const shown = shownOfPhotograph(jpegOf(Qt::blue, {800, 400}), {.width = 100, .height = 100});
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0].detail, PreviewContent::Detail::all);
    EXPECT_EQ(sidesOf(shown[0]), std::pair(100, 50));
}

TEST(PhotographPreviewTest, whatStandsInForThePhotographFillsTheRoom)
{
    PictureView view;
    view.resize(200, 100);
    QImage small(10, 5, QImage::Format_RGB32);
    small.fill(Qt::red);
    auto const isRedAt = [&](QPoint place) { return view.grab().toImage().pixelColor(place) == Qt::red; };
    view.setPicture(small);
    EXPECT_TRUE(isRedAt({100, 50}));
    EXPECT_FALSE(isRedAt({50, 50}));
    view.setPicture(small, PictureView::Growth::toRoom);
    EXPECT_TRUE(isRedAt({50, 50}));
}

} // namespace
} // namespace tw::test
