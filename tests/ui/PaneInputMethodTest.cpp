#include "Tarnwick/Toolkit/Table/NameEditor.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <gmock/gmock.h>

#include <filesystem>

namespace tw::test {
namespace {

/// Names looked for through an input method, in the order in which such methods send their events.
class PaneInputMethodTest : public WindowTest {
protected:
    PaneInputMethodTest()
    {
        for (auto const *const name : {"가방", "한글", "하늘", "日記", "日本語", "中国", "中文", "other"})
            left.file(name);
    }

    /// What the method composes now, and what it commits before that.
    void send(QString const &composed, QString const &committed = {})
    {
        QInputMethodEvent event(composed, {});
        event.setCommitString(committed);
        QApplication::sendEvent(QApplication::focusWidget(), &event);
    }

    QVariant query(Qt::InputMethodQuery what)
    {
        QInputMethodQueryEvent event(what);
        QApplication::sendEvent(QApplication::focusWidget(), &event);
        return event.value(what);
    }
};

TEST_F(PaneInputMethodTest, koreanSyllablesGrowAndAreCommittedByTheNext)
{
    open();
    send(QStringLiteral("ㅎ"));
    EXPECT_EQ(status(PaneSide::left), "search: ㅎ");
    send(QStringLiteral("하"));
    send(QStringLiteral("한"));
    EXPECT_EQ(cursorName(), "") << "nothing is committed yet";
    send(QStringLiteral("ㄱ"), QStringLiteral("한"));
    EXPECT_EQ(status(PaneSide::left), "search: 한ㄱ|");
    EXPECT_EQ(cursorName(), "한글");
    send(QStringLiteral("글"));
    send({}, QStringLiteral("글"));
    EXPECT_EQ(status(PaneSide::left), "search: 한글|");
    EXPECT_EQ(cursorName(), "한글");
}

TEST_F(PaneInputMethodTest, japaneseIsConvertedBeforeItIsCommitted)
{
    open();
    send(QStringLiteral("にほ"));
    send(QStringLiteral("にほんご"));
    send(QStringLiteral("日本語"));
    EXPECT_EQ(status(PaneSide::left), "search: 日本語");
    send({}, QStringLiteral("日本語"));
    EXPECT_EQ(cursorName(), "日本語");
    EXPECT_EQ(status(PaneSide::left), "search: 日本語|");
}

TEST_F(PaneInputMethodTest, chineseIsChosenFromWhatItsLettersMean)
{
    open();
    send(QStringLiteral("zhong"));
    send(QStringLiteral("zhong wen"));
    EXPECT_EQ(status(PaneSide::left), "search: zhong wen");
    send({}, QStringLiteral("中文"));
    EXPECT_EQ(cursorName(), "中文");
    EXPECT_EQ(status(PaneSide::left), "search: 中文|");
}

TEST_F(PaneInputMethodTest, aCompositionThatIsGivenUpEndsTheSearch)
{
    open();
    auto const before = status(PaneSide::left);
    send(QStringLiteral("ㅎ"));
    send({});
    EXPECT_EQ(status(PaneSide::left), before);
}

/// Of the field of a name. A tab is changed without the keyboard leaving the field first.
TEST_F(PaneInputMethodTest, whatIsComposedInANameGrowsTheFieldAndIsNotLostWithTheTab)
{
    open();
    active().moveCursorTo(*active().model().rowForName("other"));
    press(Qt::Key_F2);
    auto const &field = *table(PaneSide::left).findChild<NameEditor *>();
    send(QStringLiteral("ㅎ"));
    auto const before = field.width();
    send(QString(60, QChar(u'한')));
    EXPECT_GT(field.width(), before);
    send(QStringLiteral("한글 이름"));
    EXPECT_EQ(field.text(), QString()) << "nothing is committed yet";
    controller->container(PaneSide::left).duplicateCurrentTab();
    processUntil([this] { return std::filesystem::exists(left.path("한글 이름")); });
    EXPECT_FALSE(std::filesystem::exists(left.path("other")));
}

TEST_F(PaneInputMethodTest, theTableTakesTextAndItsCandidatesStandAtTheCursorsRow)
{
    open();
    EXPECT_TRUE(query(Qt::ImEnabled).toBool());
    EXPECT_TRUE(table(PaneSide::left).testAttribute(Qt::WA_InputMethodEnabled));
    auto const above = query(Qt::ImCursorRectangle).toRect();
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    auto const below = query(Qt::ImCursorRectangle).toRect();
    EXPECT_EQ(below.top() - above.top(), 2 * table(PaneSide::left).rowHeight(0));
    EXPECT_GE(above.top(), table(PaneSide::left).titles().height());
    EXPECT_TRUE(table(PaneSide::left).testAttribute(Qt::WA_InputMethodEnabled));
}

} // namespace
} // namespace tw::test
