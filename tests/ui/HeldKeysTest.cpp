#include "Tarnwick/Toolkit/Program/HeldKeys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>
#include <QWindow>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

/// A key that is held while one window gives way to the next.
class HeldKeysTest : public testing::Test {
protected:
    HeldKeysTest()
    {
        for (auto *const field : {&first, &second}) {
            field->show();
            EXPECT_TRUE(QTest::qWaitForWindowExposed(field));
        }
    }

    enum class Repeat { no, yes };

    void send(QLineEdit &to, QEvent::Type type, Repeat repeat = Repeat::no, Qt::Key key = Qt::Key_A)
    {
        auto const text = key == Qt::Key_A ? QStringLiteral("a") : QString();
        QKeyEvent event(type, key, Qt::NoModifier, text, repeat == Repeat::yes);
        event.setTimestamp(now);
        QCoreApplication::sendEvent(to.windowHandle(), &event);
    }

    void press(QLineEdit &in) { send(in, QEvent::KeyPress); }

    void release(QLineEdit &in) { send(in, QEvent::KeyRelease); }

    void repeat(QLineEdit &in)
    {
        ++now;
        send(in, QEvent::KeyRelease, Repeat::yes);
        send(in, QEvent::KeyPress, Repeat::yes);
    }

    HeldKeys heldKeys{*qApp};
    QLineEdit first;
    QLineEdit second;
    quint64 now = 1000;
};

TEST_F(HeldKeysTest, aHeldKeyRepeatsInTheWindowInWhichItWasPressed)
{
    press(first);
    repeat(first);
    repeat(first);
    EXPECT_EQ(first.text().toStdString(), "aaa");
}

TEST_F(HeldKeysTest, anotherKeyThatIsPressedMeanwhileDoesNotEndTheRepetition)
{
    press(first);
    repeat(first);
    send(first, QEvent::KeyPress, Repeat::no, Qt::Key_Shift);
    repeat(first);
    EXPECT_EQ(first.text().toStdString(), "aaa");
}

TEST_F(HeldKeysTest, aKeyThatClosesAWindowDoesNothingInTheNext)
{
    press(first);
    first.hide();
    repeat(second);
    repeat(second);
    EXPECT_EQ(second.text().toStdString(), "");
    release(second);
    ++now;
    press(second);
    repeat(second);
    EXPECT_EQ(second.text().toStdString(), "aa") << "it was let go, and pressed again";
}

TEST_F(HeldKeysTest, aRepetitionThatIsNotMarkedAsOneIsKnownByItsTime)
{
    press(first);
    for (auto round = 0; round < 2; ++round) {
        ++now;
        release(second);
        press(second);
    }
    EXPECT_EQ(second.text().toStdString(), "");
    ++now;
    release(second);
    ++now;
    press(second);
    EXPECT_EQ(second.text().toStdString(), "a");
}

} // namespace
} // namespace tw::test
