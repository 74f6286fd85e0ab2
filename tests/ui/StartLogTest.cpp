#include "Tarnwick/Toolkit/Program/StartLog.h"

#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QLoggingCategory>
#include <gmock/gmock.h>

#include <algorithm>

namespace tw::test {
namespace {

using ::testing::IsEmpty;

/// What was logged under "tarnwick.start" while a test runs.
std::vector<QString> lines;

class StartLogTest : public WindowTest {
protected:
    StartLogTest()
    {
        lines.clear();
        before = qInstallMessageHandler([](QtMsgType, QMessageLogContext const &context, QString const &text) {
            if (QLatin1StringView(context.category) == QLatin1StringView("tarnwick.start"))
                lines.push_back(text);
        });
    }

    ~StartLogTest() override
    {
        qInstallMessageHandler(before);
        QLoggingCategory::setFilterRules(QString());
    }

    static void turnOn() { QLoggingCategory::setFilterRules(QStringLiteral("tarnwick.start.debug=true")); }

    static bool hasEvent(std::string const &event)
    {
        auto const ending = QLatin1Char(' ') + QString::fromStdString(event);
        return std::ranges::any_of(lines, [&](QString const &line) { return line.endsWith(ending); });
    }

    QtMessageHandler before = nullptr;
};

TEST_F(StartLogTest, tellsWhenTheWindowIsShownAndWhatIsOnScreen)
{
    turnOn();
    left.folder("inner");
    open();
    EXPECT_TRUE(hasEvent("window shown"));
    processUntil([this] { return hasEvent("listing painted " + left.path()); });
    processUntil([this] { return hasEvent("listing painted " + right.path()); });

    press(Qt::Key_Down);
    press(Qt::Key_Return);
    processUntil([this] { return hasEvent("listing painted " + left.path("inner")); });
}

TEST_F(StartLogTest, everyLineBeginsWithMicrosecondsThatOnlyGrow)
{
    turnOn();
    auto last = StartLog::microsecondsNow();
    open();
    processUntil([this] { return hasEvent("listing painted " + left.path()); });
    for (auto const &line : lines) {
        auto isNumber = false;
        auto const time = line.section(QLatin1Char(' '), 0, 0).toLongLong(&isNumber);
        EXPECT_TRUE(isNumber) << line.toStdString();
        EXPECT_GE(time, last);
        last = time;
    }
    EXPECT_LE(last, StartLog::microsecondsNow());
}

TEST_F(StartLogTest, isOffUnlessItIsTurnedOn)
{
    open();
    processPosted();
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_FALSE(StartLog::isOn());
}

} // namespace
} // namespace tw::test
