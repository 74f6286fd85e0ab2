#include "Tarnwick/Toolkit/Widgets/PathCrumbs.h"

#include <QApplication>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

class PathCrumbsTest : public ::testing::Test {
protected:
    void show(QString const &path, int width = 2000)
    {
        crumbs.setPath(path);
        crumbs.arrange(metrics, {0, 0, width, 20});
    }

    /// What a click on the middle of a part gives; -1 for nothing.
    int clicked(std::size_t part) { return crumbs.componentsAt(crumbs.places().at(part).center()).value_or(-1); }

    int widthOf(QString const &text) { return metrics.horizontalAdvance(text); }

    QFontMetrics metrics{QApplication::font()};
    PathCrumbs crumbs;
};

TEST_F(PathCrumbsTest, everyPartButTheLastLeadsToItsFolder)
{
    show(QStringLiteral("/usr/share/doc"));
    EXPECT_EQ(crumbs.shown(), QStringLiteral("/usr/share/doc"));
    EXPECT_EQ(clicked(0), 0);
    EXPECT_EQ(clicked(1), 1);
    EXPECT_EQ(clicked(2), 2);
    EXPECT_EQ(clicked(3), -1) << "the pane is there";
    EXPECT_EQ(crumbs.componentsAt({1999, 10}), std::nullopt) << "beside the path";
}

TEST_F(PathCrumbsTest, theRootAndATextThatIsNoPathLeadNowhere)
{
    show(QStringLiteral("/"));
    EXPECT_EQ(clicked(0), -1);
    show(QStringLiteral("connecting…"));
    EXPECT_EQ(crumbs.shown(), QStringLiteral("connecting…"));
    EXPECT_EQ(clicked(0), -1);
    show(QString());
    EXPECT_TRUE(crumbs.places().empty());
}

TEST_F(PathCrumbsTest, aDriveIsTheFirstComponent)
{
    show(QStringLiteral("C:/Users/ann"));
    EXPECT_EQ(clicked(0), 1);
    EXPECT_EQ(clicked(1), 2);
}

TEST_F(PathCrumbsTest, theMiddleGoesFirst)
{
    QString path;
    for (int i = 0; i < 40; ++i)
        path += QStringLiteral("/folder%1").arg(i);
    ASSERT_GT(path.size(), 300);
    show(path, widthOf(QStringLiteral("/…/folder38/folder39")) + 10);
    EXPECT_EQ(crumbs.shown(), QStringLiteral("/…/folder38/folder39"));
    EXPECT_EQ(clicked(0), 0);
    EXPECT_EQ(clicked(1), -1) << "the gap leads nowhere";
    EXPECT_EQ(clicked(2), 39);
    EXPECT_EQ(clicked(3), -1);
}

TEST_F(PathCrumbsTest, nothingIsLeftOutWhereAllFits)
{
    show(QStringLiteral("/ab/cd"),
         widthOf(QStringLiteral("/")) + widthOf(QStringLiteral("ab/")) + widthOf(QStringLiteral("cd")));
    EXPECT_EQ(crumbs.shown(), QStringLiteral("/ab/cd"));
}

TEST_F(PathCrumbsTest, whereTheLastPartDoesNotFitItsOwnMiddleGoes)
{
    show(QStringLiteral("/a/") + QString(300, QLatin1Char('x')) + QStringLiteral("end"), 150);
    EXPECT_TRUE(crumbs.shown().endsWith(QStringLiteral("xend")));
    EXPECT_TRUE(crumbs.shown().contains(QStringLiteral("x…x")));
    EXPECT_LE(crumbs.places().back().right(), 150);
    show(QStringLiteral("/a/b/c"), 0);
    EXPECT_LE(crumbs.places().size(), 3U) << "no room at all";
}

TEST_F(PathCrumbsTest, partsStandFromLeftToRightWhateverTheirDirection)
{
    show(QStringLiteral("/abc/שלום/עולם/def"));
    auto const places = crumbs.places();
    for (std::size_t i = 1; i < places.size(); ++i)
        EXPECT_EQ(places[i].left(), places[i - 1].right() + 1);
    EXPECT_EQ(clicked(2), 2);
}

TEST_F(PathCrumbsTest, thePartUnderTheMouseHasALineUnderIt)
{
    show(QStringLiteral("/abc/def"));
    auto const painted = [this](std::optional<int> hovered) {
        QImage image(300, 20, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        crumbs.paint(painter, hovered);
        return image;
    };
    auto const plain = painted({});
    EXPECT_NE(plain, painted(1));
    EXPECT_EQ(plain, painted(2)) << "the last part leads nowhere";
}

} // namespace
} // namespace tw::test
