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

TEST(PhotographPreviewTest, theSmallPictureInAPhotographIsShownUntilTheWholeIsDecoded)
{
    TemporaryFolder const folder;
    auto photograph = jpegOf(Qt::blue, {800, 400});
    photograph.insert(2, exifWith(jpegOf(Qt::red, {80, 40})));
    photograph.append(2'000'000, '\0'); // as a photograph with much detail has
    EngineRuntime runtime;
    TestLoop loop;
    auto const previews = std::make_shared<FilePreviews>(runtime, [] { return std::string(); });
    std::vector<PreviewContent> shown;
    loop.run(previews->load({.path = folder.file("a.jpg", photograph), .name = "a.jpg", .kind = EntryKind::file},
                            {.width = 1000, .height = 1000},
                            [&](PreviewContent content) { shown.push_back(std::move(content)); }));
    ASSERT_EQ(shown.size(), 2U);
    using Pixels = std::shared_ptr<Picture const>;
    auto const &small = std::get<Pixels>(shown[0].body);
    auto const &whole = std::get<Pixels>(shown[1].body);
    EXPECT_EQ(shown[0].detail, PreviewContent::Detail::little);
    EXPECT_EQ(std::pair(small->width, small->height), std::pair(40, 80)) << "turned as the whole is";
    EXPECT_EQ(shown[1].detail, PreviewContent::Detail::all);
    EXPECT_EQ(std::pair(whole->width, whole->height), std::pair(400, 800));
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
