#include "Tarnwick/Toolkit/Notices/NoticeStrip.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Appearance/Palettes.h"
#include "Tarnwick/Toolkit/Notices/NoticeColors.h"
#include "Tarnwick/Toolkit/Widgets/WrappedText.h"

#include <QApplication>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QToolTip>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Action = PaneNotice::Action;

PaneNotice failure(std::string text, std::vector<Action> actions)
{
    return {.text = Text(std::move(text)), .actions = std::move(actions)};
}

auto const shortText = std::string("No route to web.");
auto const longText = std::string("The key of web has changed. This happens when it was installed anew, or when "
                                  "somebody stands in between.");

/// A strip beside a widget that has the keyboard, as wide as the test says.
class NoticeStripTest : public ::testing::Test {
protected:
    NoticeStripTest()
    {
        rows.setFocus();
        strip.onAction = [this](Action action) { chosen.push_back(action); };
        strip.onKey = [this](KeyPress const &key) {
            passedOn.push_back(key.key);
            return true;
        };
    }

    void show(PaneNotice const &notice, int width)
    {
        strip.showNotice(notice);
        strip.resize(width, strip.heightForWidth(width));
        window.show();
        window.activateWindow();
        QApplication::processEvents();
    }

    QStringList titles() const
    {
        QStringList names;
        for (auto const *const button : strip.buttons())
            names << button->text();
        return names;
    }

    static void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }

    QWidget window;
    QLineEdit rows{&window}; ///< has the keyboard at first
    NoticeStrip strip{&window};
    std::vector<Action> chosen;
    std::vector<Key> passedOn;
};

TEST_F(NoticeStripTest, theActionsAreButtonsInTheirOrder)
{
    show(failure(shortText, {Action::logIn, Action::retry, Action::showKey, Action::details, Action::giveUp}), 900);
    EXPECT_THAT(titles(), ElementsAre(QStringLiteral("Log In…"), QStringLiteral("Retry"), QStringLiteral("Show Key"),
                                      QStringLiteral("Details"), QStringLiteral("Give Up")));
    QTest::mouseClick(strip.buttons().at(1), Qt::LeftButton);
    EXPECT_THAT(chosen, ElementsAre(Action::retry));
}

TEST_F(NoticeStripTest, aWideStripHasItsButtonsBesideTheText)
{
    show(failure(shortText, {Action::retry, Action::details}), 700);
    auto const text = strip.text().geometry();
    for (auto const *const button : strip.buttons()) {
        EXPECT_GT(button->x(), text.right());
        EXPECT_LT(button->y(), text.bottom());
        EXPECT_LE(button->geometry().right(), strip.width());
    }
}

TEST_F(NoticeStripTest, aNarrowStripHasItsButtonsBelowTheText)
{
    show(failure(longText, {Action::showKey, Action::details}), 280);
    for (auto const *const button : strip.buttons()) {
        EXPECT_GT(button->y(), strip.text().geometry().bottom());
        EXPECT_LE(button->geometry().right(), strip.width());
        EXPECT_LE(button->geometry().bottom(), strip.height());
    }
}

TEST_F(NoticeStripTest, aTextTakesOneLineIfItFitsAndAtMostThree)
{
    show(failure(shortText, {Action::retry}), 700);
    EXPECT_THAT(strip.text().lines(), ElementsAre(QString::fromStdString(shortText)));

    show(failure(longText + " " + longText + " " + longText + " " + longText, {Action::retry}), 420);
    auto const lines = strip.text().lines();
    EXPECT_EQ(lines.size(), WrappedText::mostLines);
    EXPECT_TRUE(lines.last().endsWith(QChar(u'…'))) << lines.last().toStdString();
    EXPECT_GE(strip.text().height(), WrappedText::mostLines * strip.fontMetrics().height());
}

TEST_F(NoticeStripTest, aTextThatIsCutOffIsWholeInItsToolTip)
{
    auto const whole = longText + " " + longText + " " + longText + " " + longText;
    show(failure(whole, {Action::retry}), 420);
    QHelpEvent asked(QEvent::ToolTip, {5, 5}, strip.text().mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&strip.text(), &asked);
    EXPECT_TRUE(QToolTip::text().contains(QString::fromStdString(whole)));
    QToolTip::hideText();
}

TEST_F(NoticeStripTest, aPathWithoutBlanksIsWrappedToo)
{
    show(failure("/" + std::string(90, 'x'), {Action::retry}), 420);
    EXPECT_GT(strip.text().lines().size(), 1);
    for (auto const &line : strip.text().lines())
        EXPECT_LE(strip.fontMetrics().horizontalAdvance(line), strip.text().width());
}

TEST_F(NoticeStripTest, aNameInTheTextIsPlainTextOnOneLine)
{
    show(failure("<b>bold</b>\nnext", {}), 700);
    EXPECT_EQ(strip.text().text(), QStringLiteral("<b>bold</b>␊next"));
}

TEST_F(NoticeStripTest, showingItTakesNoKeyboard)
{
    show(failure(shortText, {Action::retry}), 700);
    EXPECT_TRUE(rows.hasFocus());
    QTest::mouseClick(strip.buttons().front(), Qt::LeftButton);
    EXPECT_TRUE(rows.hasFocus());
}

TEST_F(NoticeStripTest, returnPressesTheFirstActionOnceTheKeyboardIsThere)
{
    show(failure(shortText, {Action::logIn, Action::details}), 700);
    EXPECT_TRUE(strip.takeKeyboard());
    EXPECT_TRUE(strip.hasKeyboard());
    EXPECT_TRUE(strip.buttons().front()->isDefault()) << "it looks like the button for Return";
    press(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(Action::logIn));
}

TEST_F(NoticeStripTest, aHeldReturnPressesNothing)
{
    show(failure(shortText, {Action::logIn}), 700);
    strip.takeKeyboard();
    QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
    QApplication::sendEvent(QApplication::focusWidget(), &repeat);
    EXPECT_THAT(chosen, IsEmpty());
}

TEST_F(NoticeStripTest, leftAndRightGoFromButtonToButton)
{
    show(failure(shortText, {Action::logIn, Action::retry, Action::details}), 700);
    strip.takeKeyboard();
    press(Qt::Key_Right);
    EXPECT_TRUE(strip.buttons().at(1)->hasFocus());
    EXPECT_FALSE(strip.buttons().at(0)->isDefault());
    press(Qt::Key_Right);
    press(Qt::Key_Right);
    EXPECT_TRUE(strip.buttons().at(2)->hasFocus());
    press(Qt::Key_Left);
    EXPECT_TRUE(strip.buttons().at(1)->hasFocus());
    press(Qt::Key_Space);
    EXPECT_THAT(chosen, ElementsAre(Action::retry));
    EXPECT_THAT(passedOn, IsEmpty());
}

TEST_F(NoticeStripTest, everyOtherKeyIsThePanes)
{
    show(failure(shortText, {Action::retry}), 700);
    strip.takeKeyboard();
    press(Qt::Key_Escape);
    press(Qt::Key_Down);
    press(Qt::Key_Tab);
    EXPECT_THAT(passedOn, ElementsAre(Key::escape, Key::down, Key::tab));
}

TEST_F(NoticeStripTest, aSecondMoreOfWaitingKeepsTheButtonAndItsKeyboard)
{
    PaneNotice notice{.kind = PaneNotice::Kind::waiting, .text = "waiting, 1 s", .actions = {Action::giveUp}};
    show(notice, 700);
    strip.takeKeyboard();
    auto const *const button = strip.buttons().front();
    notice.text = "waiting, 2 s";
    strip.showNotice(notice);
    EXPECT_EQ(strip.buttons().front(), button);
    EXPECT_TRUE(strip.hasKeyboard());
    EXPECT_EQ(strip.text().text(), QStringLiteral("waiting, 2 s"));
}

TEST_F(NoticeStripTest, aScreenReaderReadsTheText)
{
    show(failure(shortText, {Action::retry}), 700);
    EXPECT_EQ(strip.accessibleName(), QString::fromStdString(shortText));
    EXPECT_EQ(strip.text().accessibleName(), QString::fromStdString(shortText));
}

TEST_F(NoticeStripTest, itIsReadableOnDarkAndOnLight)
{
    for (auto const &palette : {Palettes::dark(), Palettes::light()}) {
        for (auto const kind : {PaneNotice::Kind::failure, PaneNotice::Kind::waiting}) {
            auto const colors = NoticeColors::of(kind, palette);
            EXPECT_GE(contrast(colors.ground, colors.text), 4.5);
            EXPECT_GE(contrast(colors.ground, colors.sign), 3.0);
            EXPECT_NE(colors.ground, palette.color(QPalette::Base));
        }
    }
}

TEST_F(NoticeStripTest, itFollowsTheColoursOfTheDesktop)
{
    auto const before = QApplication::palette();
    for (auto const &palette : {Palettes::dark(), Palettes::light()}) {
        QApplication::setPalette(palette);
        show(failure(shortText, {Action::retry}), 700);
        auto const expected = NoticeColors::of(PaneNotice::Kind::failure, palette);
        EXPECT_EQ(strip.grab().toImage().pixel(2, 2), expected.ground.rgb());
        EXPECT_EQ(strip.text().palette().color(QPalette::WindowText), expected.text);
    }
    QApplication::setPalette(before);
}

} // namespace
} // namespace tw::test
