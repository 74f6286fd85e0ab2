#include "Tarnwick/Toolkit/Viewer/ViewerWindow.h"

#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "Tarnwick/Toolkit/Viewer/ViewerImageView.h"
#include "Tarnwick/Toolkit/Viewer/ViewerTextView.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "tests/support/FakeApplications.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QClipboard>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>
#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

using ::testing::HasSubstr;

/// Viewers on files of the left pane.
class ViewerWindowTest : public WindowTest {
protected:
    /// Presses F3 on a file, and waits until its first chunk is there.
    void view(std::string const &name)
    {
        if (!window)
            open();
        auto const row = active().model().rowForName(name);
        ASSERT_TRUE(row) << name;
        active().moveCursorTo(*row);
        window->activateWindow();
        processUntil([this] { return table(PaneSide::left).hasFocus() && window->isActiveWindow(); });
        press(Qt::Key_F3);
        auto const opened = window->openViewers();
        ASSERT_FALSE(opened.empty()) << status(PaneSide::left);
        viewer = opened.back();
        viewer->activateWindow();
        processUntil([&] { return viewer->isActiveWindow() && !viewer->text().screen().isBusy; });
    }

    void type(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &viewer->text(), key, modifiers);
        processUntil([&] { return !viewer || !viewer->text().screen().isBusy; });
    }

    std::u32string firstRow() { return viewer->text().screen().rows.at(0).text; }

    std::string statusText() { return viewer->statusLine().text().toStdString(); }

    /// How many pixels of the text are not of the background.
    int inkIn(QRect part)
    {
        auto const picture = viewer->text().viewport()->grab(part).toImage();
        auto const paper = viewer->text().palette().color(QPalette::Base).rgb();
        int count = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                count += picture.pixel(x, y) != paper;
        }
        return count;
    }

    QPointer<ViewerWindow> viewer;
};

TEST_F(ViewerWindowTest, f3OpensAFileAndEscapeClosesIt)
{
    left.file("a", "first\nsecond\n");
    view("a");
    EXPECT_EQ(viewer->windowTitle(), QStringLiteral("local — a"));
    EXPECT_EQ(firstRow(), U"first");
    EXPECT_THAT(statusText(), HasSubstr("UTF-8"));
    EXPECT_GT(inkIn(QRect(0, 0, 100, 20)), 20);
    type(Qt::Key_Escape);
    processUntil([&] { return !viewer; });
    EXPECT_TRUE(window->openViewers().empty());
    view("a");
    type(Qt::Key_F3);
    processUntil([&] { return !viewer; });
}

TEST_F(ViewerWindowTest, theQuestionAboutAProgramOpensItInAViewer)
{
    left.file("program", "#!/bin/sh\n");
    auto const applications = std::make_shared<FakeApplications>();
    applications->nature.kind = FileNature::Kind::script;
    opening.applications = applications;
    open();
    active().moveCursorTo(*active().model().rowForName("program"));
    press(Qt::Key_Return);
    QPointer<QuestionSheet> sheet;
    processUntil([&] { return (sheet = window->findChild<QuestionSheet *>()) && sheet->isVisible(); });
    QTest::keyClick(sheet, Qt::Key_Return);
    processUntil([this] { return !window->openViewers().empty(); });
    EXPECT_EQ(window->openViewers().front()->windowTitle(), QStringLiteral("local — program"));
    EXPECT_TRUE(applications->opened.empty() && applications->ran.empty());
}

TEST_F(ViewerWindowTest, theKeysOfAPagerWork)
{
    std::string lines;
    for (int line = 1; line <= 1000; ++line)
        lines += std::to_string(line) + "\n";
    left.file("a", lines);
    view("a");
    auto const page = static_cast<std::size_t>(viewer->text().rowCount()) - 1;
    type(Qt::Key_Space);
    EXPECT_EQ(QString::fromUcs4(firstRow().data(), std::ssize(firstRow())).toInt(), 1 + static_cast<int>(page));
    type(Qt::Key_B);
    EXPECT_EQ(firstRow(), U"1");
    type(Qt::Key_G, Qt::ShiftModifier);
    EXPECT_EQ(viewer->text().screen().rows.back().text, U"1000");
    EXPECT_EQ(viewer->text().verticalScrollBar()->value(), viewer->text().verticalScrollBar()->maximum());
    type(Qt::Key_G);
    EXPECT_EQ(firstRow(), U"1");
    type(Qt::Key_G, Qt::ControlModifier);
    EXPECT_TRUE(viewer->askField().hasFocus());
    QTest::keyClicks(&viewer->askField(), QStringLiteral("500"));
    type(Qt::Key_Return);
    EXPECT_EQ(firstRow(), U"500");
    EXPECT_TRUE(viewer->text().hasFocus());
    type(Qt::Key_Slash);
    QTest::keyClicks(&viewer->askField(), QStringLiteral("77"));
    type(Qt::Key_Return);
    EXPECT_EQ(viewer->text().screen().selectedFrom.line, 2196);
    type(Qt::Key_H);
    EXPECT_EQ(viewer->text().screen().mode, ViewerMode::hex);
}

TEST_F(ViewerWindowTest, theMouseSelectsAndACopyHasWhatIsSelected)
{
    left.file("a", "한글 text\nsecond\n");
    view("a");
    auto &text = viewer->text();
    auto const before = inkIn(text.viewport()->rect());
    QTest::mousePress(text.viewport(), Qt::LeftButton, {}, QPoint(0, 2));
    QTest::mouseMove(text.viewport(), QPoint(text.viewport()->width() - 1, 2));
    QTest::mouseRelease(text.viewport(), Qt::LeftButton, {}, QPoint(text.viewport()->width() - 1, 2));
    type(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "한글 text");
    EXPECT_GT(inkIn(text.viewport()->rect()), before) << "a selection is seen";
}

TEST_F(ViewerWindowTest, theSizeOfTheTextIsRemembered)
{
    left.file("a", "text\n");
    view("a");
    auto const rows = viewer->text().rowCount();
    type(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_LT(viewer->text().rowCount(), rows);
    EXPECT_DOUBLE_EQ(Settings::viewerFontSize.read(defaults), 13);
    type(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(viewer->text().rowCount(), rows);
}

TEST_F(ViewerWindowTest, anImageIsShownWholeAndAtAnySize)
{
    QImage image(2000, 1000, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(QString::fromStdString(left.path("a.png")), "PNG"));
    left.file("lie.jpg", "\xff\xd8\xff nothing of the kind");
    view("a.png");
    EXPECT_EQ(viewer->text().screen().mode, ViewerMode::image);
    EXPECT_THAT(statusText(), HasSubstr("a.png   2000×1000   "));
    EXPECT_LT(viewer->image().scale(), 0.6);
    EXPECT_EQ(viewer->image().viewport()->grab().toImage().pixelColor(viewer->image().viewport()->rect().center()),
              QColor(Qt::red));
    type(Qt::Key_1);
    EXPECT_DOUBLE_EQ(viewer->image().scale(), 1);
    type(Qt::Key_0);
    EXPECT_LT(viewer->image().scale(), 0.6);
    type(Qt::Key_H);
    EXPECT_TRUE(firstRow().starts_with(U"00000000  89 50 4E 47"));
    type(Qt::Key_Escape);
    view("lie.jpg");
    EXPECT_EQ(viewer->text().screen().mode, ViewerMode::hex);
    EXPECT_THAT(statusText(), HasSubstr("⚠︎ not an image this computer can decode"));
}

TEST_F(ViewerWindowTest, nAndPShowTheImagesOfTheFolderInTheOrderOfThePane)
{
    for (auto const *const name : {"a.png", "c.png"}) {
        QImage image(20, 10, QImage::Format_RGB32);
        image.fill(Qt::red);
        ASSERT_TRUE(image.save(QString::fromStdString(left.path(name)), "PNG"));
    }
    left.file("b.txt", "no image\n");
    view("a.png");
    type(Qt::Key_N);
    EXPECT_EQ(viewer->windowTitle(), QStringLiteral("local — c.png"));
    EXPECT_THAT(statusText(), HasSubstr("c.png   20×10   "));
    type(Qt::Key_N);
    EXPECT_EQ(viewer->windowTitle(), QStringLiteral("local — c.png")) << "it is the last one";
    type(Qt::Key_P);
    EXPECT_EQ(viewer->windowTitle(), QStringLiteral("local — a.png"));
    EXPECT_THAT(statusText(), HasSubstr("a.png   20×10   "));
}

TEST_F(ViewerWindowTest, anImageThatMovesMoves)
{
    using namespace std::string_literals;
    auto const frame = [](std::string const &pixel) {
        return "\x21\xf9\x04\0\x02\0\0\0\x2c\0\0\0\0\x01\0\x01\0\0\x02\x02"s + pixel + "\x01\0"s;
    };
    left.file("a.gif", "GIF89a\x01\0\x01\0\x80\0\0\xff\0\0\0\0\xff"s + frame("\x44") + frame("\x4c") + ";");
    view("a.gif");
    viewer->image().zoomTo(16);
    auto const color = [this] {
        return viewer->image().viewport()->grab().toImage().pixelColor(viewer->image().viewport()->rect().center());
    };
    processUntil([&] { return viewer->image().frame() == 1 && color() == QColor(Qt::blue); });
    processUntil([&] { return viewer->image().frame() == 0 && color() == QColor(Qt::red); });
}

TEST_F(ViewerWindowTest, anImageOfACameraIsShownPixelByPixel)
{
    QImage image(3000, 10, QImage::Format_RGB32);
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y)
            image.setPixelColor(x, y, x % 2 == 0 ? Qt::black : Qt::white);
    }
    ASSERT_TRUE(image.save(QString::fromStdString(left.path("a.png")), "PNG"));
    view("a.png");
    EXPECT_THAT(statusText(), HasSubstr("3000×10"));
    type(Qt::Key_1);
    EXPECT_DOUBLE_EQ(viewer->image().scale(), 1);
    auto const middle = viewer->image().viewport()->rect().center();
    auto const lightness = [&](int x) {
        return viewer->image().viewport()->grab().toImage().pixelColor(x, middle.y()).lightness();
    };
    processUntil([&] { return std::abs(lightness(middle.x()) - lightness(middle.x() + 1)) == 255; });
}

TEST_F(ViewerWindowTest, aFollowedFileIsShownAsItGrows)
{
    auto const path = left.file("log", "first\n");
    view("log");
    type(Qt::Key_F, Qt::ShiftModifier);
    EXPECT_THAT(statusText(), HasSubstr("following"));
    std::ofstream(path, std::ios::app) << "second\n";
    processUntil([&] { return viewer->text().screen().rows.size() == 2; });
    EXPECT_EQ(viewer->text().screen().rows.back().text, U"second");
    type(Qt::Key_F, Qt::ShiftModifier);
    EXPECT_THAT(statusText(), testing::Not(HasSubstr("following")));
}

TEST_F(ViewerWindowTest, aSearchMayIgnoreCaseAndTakeAnExpression)
{
    left.file("a", "one\nTwo 22\n");
    view("a");
    type(Qt::Key_Slash);
    for (auto const key : {Qt::Key_I, Qt::Key_R}) {
        auto const isOption = [key](QToolButton const *button) {
            return button->shortcut() == QKeySequence(Qt::ALT | key);
        };
        auto const buttons = viewer->findChildren<QToolButton *>();
        auto const option = std::ranges::find_if(buttons, isOption);
        ASSERT_NE(option, buttons.end());
        QTest::keyClick(&viewer->askField(), key, Qt::AltModifier);
        processUntil([&] { return (*option)->isChecked(); });
    }
    QTest::keyClicks(&viewer->askField(), QStringLiteral("^two \\d+"));
    type(Qt::Key_Return);
    EXPECT_EQ(viewer->text().screen().selectedFrom, (ViewerPlace{4, 0}));
    EXPECT_EQ(viewer->text().screen().selectedTo, (ViewerPlace{4, 6}));
}

TEST_F(ViewerWindowTest, aViewerIsNeverLargerThanItsScreen)
{
    left.file("a", "text\n");
    view("a");
    auto const free = viewer->screen()->availableGeometry();
    viewer->resize(free.size() + QSize(500, 500));
    viewer->move(free.bottomRight());
    viewer->close();
    processUntil([&] { return !viewer; });
    view("a");
    EXPECT_TRUE(free.contains(viewer->geometry())) << viewer->width() << 'x' << viewer->height();
}

TEST_F(ViewerWindowTest, whatIsNoFileHasWordsAndNoViewer)
{
    ASSERT_EQ(::mkfifo(left.path("fifo").c_str(), 0600), 0);
    left.folder("folder");
    open();
    for (auto const *const name : {"fifo", "folder"}) {
        active().moveCursorTo(*active().model().rowForName(name));
        press(Qt::Key_F3);
        EXPECT_TRUE(window->openViewers().empty());
    }
    active().moveCursorTo(*active().model().rowForName("fifo"));
    press(Qt::Key_F3);
    EXPECT_THAT(status(PaneSide::left), HasSubstr("⚠︎ this is a pipe"));
}

TEST_F(ViewerWindowTest, aViewerOfAHugeFileGoesWithTheMainWindow)
{
    auto const path = left.file("huge", "beginning\n");
    ASSERT_EQ(::truncate(path.c_str(), std::int64_t(50) << 30), 0);
    view("huge");
    type(Qt::Key_End);
    EXPECT_THAT(statusText(), HasSubstr(" from 50G"));
    window.reset();
    EXPECT_FALSE(viewer);
}

TEST_F(ViewerWindowTest, theWindowMenuListsTheViewersAndGoesToThem)
{
    left.file("a&b.txt", "text");
    left.file("c.txt", "text");
    open();
    auto *const menu = window->menuBar()->actions().back()->menu();
    auto const countOfCommands = menu->actions().size();
    auto const listed = [&] {
        Q_EMIT menu->aboutToShow();
        QStringList titles;
        for (auto const *const action : menu->actions().mid(countOfCommands))
            titles += action->text().remove(QLatin1Char('&'));
        Q_EMIT menu->aboutToHide();
        return titles;
    };
    EXPECT_EQ(listed(), QStringList()) << "alone, a window lists nothing";
    view("a&b.txt");
    auto const first = viewer;
    view("c.txt");
    auto const expected = QStringList{QString(), QStringLiteral("Tarnwick"), QStringLiteral("local — ab.txt"),
                                      QStringLiteral("local — c.txt")};
    EXPECT_EQ(listed(), expected);
    EXPECT_EQ(listed(), expected) << "and not twice";
    Q_EMIT menu->aboutToShow();
    menu->actions().at(countOfCommands + 2)->trigger();
    processUntil([&] { return first->isActiveWindow(); });
    first->close();
    viewer->close();
    processUntil([this] { return window->openViewers().empty(); });
    EXPECT_EQ(listed(), QStringList());
}

} // namespace
} // namespace tw::test
