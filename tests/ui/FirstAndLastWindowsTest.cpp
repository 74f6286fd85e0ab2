#include "Tarnwick/Settings/Settings.h"
#include "Tarnwick/Toolkit/Appearance/ProgramStyle.h"
#include "Tarnwick/Toolkit/Program/WindowLifetime.h"
#include "Tarnwick/Toolkit/Windows/AboutDialog.h"
#include "Tarnwick/Toolkit/Windows/WelcomeWindow.h"
#include "tests/ui/QtLoop.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontInfo>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTest>
#include <QToolTip>
#include <gtest/gtest.h>

#include <memory>

namespace tw::test {
namespace {

QString allText(QWidget const &window)
{
    QString text;
    for (auto const *label : window.findChildren<QLabel *>())
        text += label->text() + QLatin1Char('\n');
    return text;
}

TEST(WelcomeWindowTest, isShownToANewUserOnceAndRememberedFirst)
{
    MemoryDefaults defaults;
    QWidget main;
    main.show();
    QPointer const shown = WelcomeWindow::showIfFirstRun(defaults, main);
    ASSERT_FALSE(shown.isNull());
    EXPECT_TRUE(shown->isVisible());
    EXPECT_EQ(defaults.text("tw.welcomeShown"), "true");
    EXPECT_TRUE(allText(*shown).contains(QStringLiteral("Remote folders that behave like local ones")));
    EXPECT_EQ(WelcomeWindow::showIfFirstRun(defaults, main), nullptr);
    EXPECT_TRUE(shown->isVisible());
}

TEST(WelcomeWindowTest, goesWithItsButtonWithEscapeAndWithTheMainWindow)
{
    for (auto const key : {Qt::Key_Return, Qt::Key_Escape}) {
        MemoryDefaults defaults;
        QWidget main;
        main.show();
        QPointer const shown = WelcomeWindow::showIfFirstRun(defaults, main);
        QTest::keyClick(shown, key);
        processUntil([&] { return shown.isNull(); });
        EXPECT_TRUE(main.isVisible());
    }
    MemoryDefaults defaults;
    auto main = std::make_unique<QWidget>();
    QPointer const shown = WelcomeWindow::showIfFirstRun(defaults, *main);
    main.reset();
    EXPECT_TRUE(shown.isNull());
}

TEST(WelcomeWindowTest, fitsOnTheScreenAlsoWithLargeLetters)
{
    auto const usual = QApplication::font();
    for (auto const factor : {1.0, 1.5}) {
        auto font = usual;
        font.setPointSizeF(QFontInfo(usual).pointSizeF() * factor);
        QApplication::setFont(font);
        WelcomeWindow welcome(nullptr);
        welcome.show();
        auto const screen = welcome.screen()->availableGeometry();
        EXPECT_LE(welcome.width(), screen.width()) << factor;
        EXPECT_LE(welcome.height(), screen.height()) << factor;
        for (auto const *const label : welcome.findChildren<QLabel *>())
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << label->text().toStdString();
    }
    QApplication::setFont(usual);
}

TEST(AboutDialogTest, tellsWhatItIsAndWhichVersion)
{
    AboutDialog const about(QStringLiteral("1.2.3"), nullptr);
    auto const text = allText(about);
    for (auto const *part : {"Tarnwick", "1.2.3", "Remote filesystems that behave like local ones.", "Pagelume Pro"})
        EXPECT_TRUE(text.contains(QString::fromLatin1(part))) << part;
}

TEST(ProgramStyleTest, theStyleWaitsLongerAndIsOtherwiseItself)
{
    ProgramStyle const style(900);
    EXPECT_EQ(style.styleHint(QStyle::SH_ToolTip_WakeUpDelay, nullptr, nullptr, nullptr), 900);
    EXPECT_EQ(style.styleHint(QStyle::SH_ToolTip_FallAsleepDelay, nullptr, nullptr, nullptr),
              style.baseStyle()->styleHint(QStyle::SH_ToolTip_FallAsleepDelay));
}

TEST(ProgramStyleTest, theSettingIsHowLongTheApplicationWaits)
{
    auto const usualStyle = QApplication::style()->name();
    MemoryDefaults defaults;
    auto const delay = [&] {
        QApplication::setStyle(new ProgramStyle(Settings::toolTipDelay.read(defaults)));
        return QApplication::style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay);
    };
    EXPECT_EQ(delay(), 1400);
    Settings::toolTipDelay.write(defaults, 1);
    EXPECT_EQ(delay(), 1);

    QWidget window;
    window.setToolTip(QStringLiteral("what this is"));
    window.show();
    QTest::mouseMove(&window, QPoint(5, 5));
    processUntil([] { return QToolTip::isVisible(); });
    EXPECT_EQ(QToolTip::text(), QStringLiteral("what this is"));
    QToolTip::hideText();
    QApplication::setStyle(usualStyle);
}

/// A window that need not agree to being closed.
class Stubborn final : public QWidget {
public:
    bool agrees = true;

protected:
    void closeEvent(QCloseEvent *event) override { event->setAccepted(agrees); }
};

class WindowLifetimeTest : public testing::Test {
protected:
    WindowLifetimeTest()
    {
        WindowLifetime::onClose(window.get(), [this] { ++ended; });
        window->show();
    }

    std::unique_ptr<Stubborn> window = std::make_unique<Stubborn>();
    int ended = 0;
};

TEST_F(WindowLifetimeTest, theActionRunsOnceWhenTheWindowCloses)
{
    window->close();
    processUntil([this] { return ended > 0; });
    window->show();
    window->close();
    QCoreApplication::processEvents();
    window.reset();
    EXPECT_EQ(ended, 1);
}

TEST_F(WindowLifetimeTest, aWindowThatRefusesGoesOn)
{
    window->agrees = false;
    window->close();
    QCoreApplication::processEvents();
    EXPECT_EQ(ended, 0);
    window->agrees = true;
    window->close();
    processUntil([this] { return ended == 1; });
}

TEST_F(WindowLifetimeTest, aWindowThatIsDestroyedHasClosed)
{
    window.reset();
    EXPECT_EQ(ended, 1);
}

} // namespace
} // namespace tw::test
