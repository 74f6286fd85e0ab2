#include "Tarnwick/Clipboard/FileFormats.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMimeData>

namespace tw::test {
namespace {

class ClipboardTest : public WindowTest {
protected:
    ClipboardTest()
    {
        left.file("file.txt");
        QApplication::clipboard()->clear();
    }

    ~ClipboardTest() override { QApplication::clipboard()->clear(); }

    void moveTo(std::string const &name) { active().moveCursorTo(*active().model().rowForName(name)); }

    static std::string data(std::string_view type)
    {
        return QApplication::clipboard()
            ->mimeData()
            ->data(QString::fromUtf8(type.data(), std::ssize(type)))
            .toStdString();
    }

    QColor inkOf(int row)
    {
        auto const cell = activeTable().visualRect(activeTable().model()->index(row, 0));
        auto const image = activeTable().viewport()->grab(cell).toImage();
        QColor darkest = Qt::white;
        for (auto y = 0; y < image.height(); ++y) {
            for (auto x = 0; x < image.width(); ++x) {
                auto const color = image.pixelColor(x, y);
                if (color.lightness() < darkest.lightness())
                    darkest = color;
            }
        }
        return darkest;
    }
};

TEST_F(ClipboardTest, filesAreCopiedInAllFormats)
{
    open();
    moveTo("file.txt");
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(status(PaneSide::left), "1 item copied");
    auto const path = left.path() + "/file.txt";
    EXPECT_EQ(data("text/uri-list"), "file://" + path + "\r\n");
    EXPECT_EQ(data("x-special/gnome-copied-files"), "copy\nfile://" + path);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), path);
    EXPECT_EQ(QApplication::clipboard()->mimeData()->urls(),
              QList<QUrl>{QUrl::fromLocalFile(QString::fromStdString(path))});
}

TEST_F(ClipboardTest, whatIsCutIsPaleUntilAnotherProgramCopiesSomething)
{
    open();
    moveTo("file.txt");
    auto const row = *active().cursorRow();
    active().moveCursorTo(0);
    auto const before = inkOf(row);
    active().moveCursorTo(row);
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(data("application/x-kde-cutselection"), "1");
    active().moveCursorTo(0);
    EXPECT_NE(inkOf(row), before);
    EXPECT_TRUE(
        activeTable().model()->index(row, 0).data(Qt::AccessibleTextRole).toString().endsWith(QStringLiteral(", cut")));

    QApplication::clipboard()->setText(QStringLiteral("else"));
    processPosted();
    EXPECT_EQ(inkOf(row), before);
}

TEST_F(ClipboardTest, aTextFieldKeepsItsOwnClipboardKeysAndGetsTheItemsOfTheMenu)
{
    open();
    moveTo("file.txt");
    press(Qt::Key_L, Qt::ControlModifier);
    auto *const field = qobject_cast<QLineEdit *>(window->focusWidget());
    ASSERT_NE(field, nullptr);
    field->selectAll();
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), field->text());
    EXPECT_EQ(data(FileDrag::mimeType), "");
    window->perform(Command::clipboardCut);
    EXPECT_EQ(field->text(), QString());
    window->perform(Command::clipboardPaste);
    EXPECT_EQ(field->text().toStdString(), left.path());
}

} // namespace
} // namespace tw::test
