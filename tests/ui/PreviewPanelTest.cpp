#include "Tarnwick/Toolkit/Preview/PreviewPanel.h"

#include "Tarnwick/Toolkit/Preview/PictureView.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "Tarnwick/Toolkit/Windows/PaneContainerView.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QImage>
#include <gmock/gmock.h>

#include <sys/stat.h>

namespace tw::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/// What the panel shows of files of the left pane.
class PreviewPanelTest : public WindowTest {
protected:
    PreviewPanel &panel() { return *window->previewPanel(); }

    std::string name() { return panel().nameLine().text().toStdString(); }

    std::string facts() { return panel().factsLine().text().toStdString(); }

    std::string words() { return panel().words().toStdString(); }

    /// Opens the window on the files there are, with the cursor on `file` and the panel open.
    void preview(std::string const &file)
    {
        open();
        moveTo(file);
        press(Qt::Key_Space);
    }

    void moveTo(std::string const &file)
    {
        auto const row = active().model().rowForName(file);
        ASSERT_TRUE(row) << file;
        active().moveCursorTo(*row);
    }

    void waitForPicture(std::string const &file)
    {
        processUntil([&] { return panel().picture() && name() == file; });
    }

    void waitForWriting(std::string const &text)
    {
        processUntil([&] { return panel().writing().toStdString() == text; });
    }

    void waitForWords(std::string const &part)
    {
        processUntil([&] { return words().find(part) != std::string::npos; });
    }

    std::string save(QImage const &image, char const *file, char const *format)
    {
        EXPECT_TRUE(image.save(QString::fromStdString(left.path(file)), format));
        return contentOf(left.path(file));
    }

    /// A PNG whose header promises another size, with the check sum that belongs to it.
    static std::string withSize(std::string png, std::uint32_t side)
    {
        auto const put = [&](std::size_t at, std::uint32_t number) {
            for (int byte = 0; byte < 4; ++byte)
                png[at + static_cast<std::size_t>(byte)] = static_cast<char>(number >> (24 - 8 * byte));
        };
        put(16, side);
        put(20, side);
        std::uint32_t sum = ~0U;
        for (auto const byte : std::string_view(png).substr(12, 17)) {
            sum ^= static_cast<unsigned char>(byte);
            for (int bit = 0; bit < 8; ++bit)
                sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xedb88320U : 0U);
        }
        put(29, ~sum);
        return png;
    }

    static QImage square(int side, Qt::GlobalColor color)
    {
        QImage image(side, side, QImage::Format_RGB32);
        image.fill(color);
        return image;
    }
};

TEST_F(PreviewPanelTest, spaceAndCtrlYOpenAndCloseItAndEscapeClosesIt)
{
    left.file("a", "hello");
    preview("a");
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(panel().parentWidget(), &window->side(PaneSide::right));
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    waitForWriting("hello");
    press(Qt::Key_Space);
    EXPECT_FALSE(panel().isVisible());
    press(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_TRUE(panel().isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(panel().isVisible());
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(PreviewPanelTest, itFollowsTheCursorAndTheSideOfTheKeyboard)
{
    left.file("a", "first");
    left.file("b", "second");
    right.file("c", "third");
    preview("a");
    waitForWriting("first");
    press(Qt::Key_Down);
    waitForWriting("second");
    press(Qt::Key_Tab);
    processUntil([&] { return panel().parentWidget() == &window->side(PaneSide::left); });
    press(Qt::Key_Down);
    waitForWriting("third");
    EXPECT_TRUE(panel().isVisible());
    EXPECT_TRUE(table(PaneSide::right).hasFocus());
}

TEST_F(PreviewPanelTest, aPictureIsShownAsItWasMeantToBeLookedAt)
{
    QImage image(400, 200, QImage::Format_RGB32);
    image.fill(Qt::red);
    auto jpeg = save(image, "turned.jpg", "JPEG");
    // The orientation of a camera held upright, in the shortest form that there is.
    auto const exif = std::string("\xff\xe1\0\x22"
                                  "Exif\0\0MM\0\x2a\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0",
                                  36);
    left.file("turned.jpg", jpeg.insert(2, exif));
    preview("turned.jpg");
    waitForPicture("turned.jpg");
    EXPECT_EQ(panel().picture()->picture().size(), QSize(200, 400));
    EXPECT_THAT(facts(), StartsWith("JPEG picture  ·  200 × 400"));
    EXPECT_EQ(panel().picture()->picture().pixelColor(100, 200).red(), 254);
}

TEST_F(PreviewPanelTest, aDrawingFetchesNothing)
{
    save(square(50, Qt::red), "secret.png", "PNG");
    left.file("a.svg", "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' width='50' "
                       "height='50'><rect width='50' height='50' fill='#00ff00'/><image width='50' height='50' "
                       "xlink:href='file://" +
                           left.path("secret.png") + "'/></svg>");
    preview("a.svg");
    waitForPicture("a.svg");
    auto const &picture = panel().picture()->picture();
    EXPECT_EQ(picture.pixelColor(picture.rect().center()), QColor(Qt::green));
}

TEST_F(PreviewPanelTest, aDocumentShowsItsFirstPage)
{
    left.file("a.pdf", "%PDF-1.4\n"
                       "1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
                       "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
                       "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 300]/Contents 4 0 R>>endobj\n"
                       "4 0 obj<</Length 26>>stream\n0 0 1 rg 0 0 200 300 re f\nendstream endobj\n"
                       "trailer<</Root 1 0 R>>");
    preview("a.pdf");
    waitForPicture("a.pdf");
    auto const &picture = panel().picture()->picture();
    EXPECT_EQ(picture.pixelColor(picture.rect().center()), QColor(Qt::blue));
    EXPECT_THAT(facts(), StartsWith("PDF document"));
}

TEST_F(PreviewPanelTest, badFilesAreWordsAndTheNextPictureIsShownAllTheSame)
{
    save(square(64, Qt::blue), "good.png", "PNG");
    auto const jpeg = save(square(512, Qt::blue), "whole.jpg", "JPEG");
    left.file("cut.jpg", jpeg.substr(0, 200));
    left.file("bomb.png", withSize(contentOf(left.path("good.png")), 20'000));
    left.file("lie.webp", "RIFF\x10\1\1\1WEBPVP8 nothing of the kind");
    ASSERT_EQ(::mkfifo(left.path("pipe").c_str(), 0600), 0);
    preview("cut.jpg");
    waitForWords("damaged");
    moveTo("bomb.png");
    waitForWords("more memory");
    moveTo("lie.webp");
    processUntil([&] { return name() == "lie.webp" && !words().empty(); });
    moveTo("pipe");
    waitForWords("pipe");
    moveTo("good.png");
    waitForPicture("good.png");
}

} // namespace
} // namespace tw::test
