#include "Tarnwick/Toolkit/Program/QtMainContext.h"

#include "tests/ui/QtLoop.h"

#include <QCoreApplication>
#include <QThread>
#include <gmock/gmock.h>

#include <atomic>
#include <optional>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

TEST(QtMainContextTest, runsWhatIsPostedInOrderAndNeverInsideThePost)
{
    QtMainContext main;
    std::vector<int> ran;
    main.context()->post([&] { ran.push_back(1); });
    main.context()->post([&] { ran.push_back(2); });
    EXPECT_TRUE(ran.empty());
    processUntil([&] { return ran.size() == 2; });
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST(QtMainContextTest, runsOnTheMainThreadWhatAnotherThreadPosts)
{
    QtMainContext main;
    QThread *where = nullptr;
    std::unique_ptr<QThread> const other(
        QThread::create([&] { main.context()->post([&] { where = QThread::currentThread(); }); }));
    other->start();
    processUntil([&] { return where != nullptr; });
    other->wait();
    EXPECT_EQ(where, QCoreApplication::instance()->thread());
}

TEST(QtMainContextTest, inputGetsInBetweenBatches)
{
    QtMainContext main;
    std::vector<std::string> ran;
    QObject receiver;
    main.context()->post([&] {
        ran.emplace_back("first");
        QMetaObject::invokeMethod(&receiver, [&] { ran.emplace_back("event"); }, Qt::QueuedConnection);
        main.context()->post([&] { ran.emplace_back("second"); });
    });
    processUntil([&] { return ran.size() == 3; });
    EXPECT_THAT(ran, ElementsAre("first", "event", "second"));
}

TEST(QtMainContextTest, whatIsPostedAfterItsEndIsDroppedQuietly)
{
    std::optional<QtMainContext> main(std::in_place);
    auto const context = main->context();
    auto hasRun = false;
    context->post([&] { hasRun = true; });
    main.reset();
    context->post([&] { hasRun = true; });
    processPosted();
    EXPECT_FALSE(hasRun);
}

TEST(QtMainContextTest, anotherThreadMayPostWhileItEnds)
{
    for (int round = 0; round < 20; ++round) {
        std::optional<QtMainContext> main(std::in_place);
        auto const context = main->context();
        std::atomic<bool> isRunning = false;
        std::unique_ptr<QThread> const other(QThread::create([&] {
            for (int count = 0; count < 200; ++count) {
                context->post([] {});
                isRunning = true;
            }
        }));
        other->start();
        processUntil([&] { return isRunning.load(); });
        main.reset();
        EXPECT_TRUE(other->wait());
    }
}

} // namespace
} // namespace tw::test
