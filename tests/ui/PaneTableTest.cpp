#include "Tarnwick/Toolkit/Appearance/Palettes.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "tests/support/Listings.h"
#include "tests/ui/QtLoop.h"

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QScrollBar>
#include <QToolTip>
#include <gmock/gmock.h>

#include <set>

namespace tw::test {
namespace {

using ::testing::Each;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::Lt;
using ::testing::SizeIs;

/// Remembers which rows it was asked about.
class AskedTableModel final : public PaneTableModel {
public:
    using PaneTableModel::PaneTableModel;

    QVariant data(QModelIndex const &index, int role) const override
    {
        rowsAsked.insert(index.row());
        ++questions;
        return PaneTableModel::data(index, role);
    }

    mutable std::set<int> rowsAsked;
    mutable int questions = 0;
};

class PaneTableTest : public ::testing::Test {
protected:
    PaneTableTest()
    {
        view.setFontSize(12);
        view.resize(600, 400);
        view.onPainted = [this] { ++paints; };
    }

    ~PaneTableTest() override { QApplication::setPalette(QPalette()); }

    void show(std::vector<ListedEntry> const &rows)
    {
        model.setSnapshot(listing("/big", rows));
        view.reloadRows();
        view.show();
        processPosted();
    }

    void showFiles(int count)
    {
        std::vector<ListedEntry> rows;
        for (int number = 0; number < count; ++number)
            rows.push_back(file("file" + std::to_string(1'000'000 + number), number));
        show(rows);
    }

    QRect cell(int row, PaneColumn column) { return view.visualRect(table.index(row, static_cast<int>(column))); }

    QImage picture(QRect const &part) { return view.viewport()->grab(part).toImage(); }

    QColor cornerOf(int row) { return picture(cell(row, PaneColumn::name)).pixelColor(2, 2); }

    QVariant answer(int row, PaneColumn column, int role)
    {
        return table.data(table.index(row, static_cast<int>(column)), role);
    }

    PaneModel model;
    PaneIcons icons;
    AskedTableModel table{model, icons};
    PaneTableView view{table};
    int paints = 0;
};

/// The smallest distance of a pixel to a colour, in steps of all three channels.
int nearest(QImage const &image, QColor const &wanted)
{
    auto best = 3 * 255;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            auto const color = image.pixelColor(x, y);
            best = std::min(best, std::abs(color.red() - wanted.red()) + std::abs(color.green() - wanted.green()) +
                                      std::abs(color.blue() - wanted.blue()));
        }
    }
    return best;
}

/// A thin letter on screen nowhere has quite the colour it is drawn in.
constexpr int nearlyTheSame = 90;

TEST_F(PaneTableTest, ofAHundredThousandRowsOnlyThoseOnScreenAreAskedFor)
{
    showFiles(100'000);
    auto const onScreen = view.wholeVisibleRows() + 2;
    EXPECT_THAT(table.rowsAsked, SizeIs(Le(static_cast<std::size_t>(onScreen))));
    EXPECT_THAT(table.rowsAsked, Each(Lt(onScreen)));

    table.rowsAsked.clear();
    view.showCursor(50'000);
    processPosted();
    EXPECT_TRUE(table.rowsAsked.contains(50'000));
    EXPECT_THAT(table.rowsAsked, SizeIs(Le(static_cast<std::size_t>(onScreen))));

    table.rowsAsked.clear();
    view.reloadRows();
    EXPECT_THAT(table.rowsAsked, IsEmpty());
    processPosted();
    EXPECT_THAT(table.rowsAsked, SizeIs(Le(static_cast<std::size_t>(onScreen))));
}

TEST_F(PaneTableTest, aStepOfTheCursorPaintsTwoRows)
{
    showFiles(1000);
    view.showActive(true);
    view.showCursor(3);
    processPosted();
    table.rowsAsked.clear();
    view.showCursor(4);
    processPosted();
    EXPECT_EQ(table.rowsAsked, (std::set{3, 4}));
}

TEST_F(PaneTableTest, aReloadWithItsCursorAndScrollPositionPaintsOnce)
{
    showFiles(1000);
    view.showCursor(500);
    processPosted();
    paints = 0;
    auto const scrolled = view.verticalScrollBar()->value();
    view.reloadRows();
    view.showCursor(500);
    view.scrollToFirstVisibleRow(view.firstVisibleRow());
    processPosted();
    EXPECT_EQ(paints, 1);
    EXPECT_EQ(view.verticalScrollBar()->value(), scrolled);
}

TEST_F(PaneTableTest, aShorterListingIsScrolledAsFarAsItGoes)
{
    showFiles(1000);
    view.showCursor(999);
    showFiles(5);
    EXPECT_EQ(view.verticalScrollBar()->value(), 0);
    EXPECT_EQ(view.firstVisibleRow(), 0);
}

TEST_F(PaneTableTest, theRowAtTheTopIsToldAndTakenBack)
{
    showFiles(1000);
    view.scrollToFirstVisibleRow(123);
    EXPECT_EQ(view.firstVisibleRow(), 123);
    EXPECT_EQ(view.rowAt(0), 123);
}

TEST_F(PaneTableTest, aViewThatGetsLowerKeepsTheCursorInSight)
{
    showFiles(1000);
    auto const last = view.wholeVisibleRows() - 1;
    view.showCursor(last);
    ASSERT_EQ(view.firstVisibleRow(), 0);
    view.resize(600, 200);
    processPosted();
    EXPECT_TRUE(view.viewport()->rect().contains(cell(last, PaneColumn::name)));
}

TEST_F(PaneTableTest, aCursorThatWasScrolledAwayStaysAwayWhenTheViewGetsLower)
{
    showFiles(1000);
    view.showCursor(0);
    view.scrollToFirstVisibleRow(500);
    view.resize(600, 200);
    processPosted();
    EXPECT_EQ(view.firstVisibleRow(), 500);
}

TEST_F(PaneTableTest, onlySizesStandOnTheRight)
{
    for (auto const column : paneColumns) {
        auto const side = column == PaneColumn::size ? Qt::AlignRight : Qt::AlignLeft;
        EXPECT_TRUE(PaneTableModel::alignment(column).testFlag(side)) << paneColumnIdentifier(column);
    }
}

TEST_F(PaneTableTest, sizesArePaintedFlushRight)
{
    show({file("short", 1), file("long", 1023)});
    auto const rightEdge = [this](int row) {
        auto const image = picture(cell(row, PaneColumn::size));
        for (int x = image.width() - 1; x >= 0; --x) {
            for (int y = 0; y < image.height(); ++y) {
                if (image.pixelColor(x, y) != image.pixelColor(image.width() - 1, 0))
                    return x;
            }
        }
        return -1;
    };
    EXPECT_GT(rightEdge(1), 0);
    EXPECT_NEAR(rightEdge(1), rightEdge(2), 2); // a "1" is thinner than a "3"
    EXPECT_LT(rightEdge(1), cell(1, PaneColumn::size).width() - 3);
}

TEST_F(PaneTableTest, everyColumnHasATitle)
{
    QStringList titles;
    for (int section = 0; section < table.columnCount(); ++section)
        titles << table.headerData(section, Qt::Horizontal, Qt::DisplayRole).toString();
    EXPECT_EQ(titles.join(QLatin1Char(' ')).toStdString(), "Name Ext Size Date Attr");
}

TEST_F(PaneTableTest, usualTextsFitTheirColumns)
{
    show({directory("d", 0, 1'700'000'000)});
    auto const fonts = PaneFonts::ofSize(12);
    auto const room = [this](PaneColumn column) { return view.columnWidth(static_cast<int>(column)) - 12; };
    EXPECT_LE(QFontMetricsF(fonts.digits).horizontalAdvance(QStringLiteral("2000-00-00 00:00")),
              room(PaneColumn::date));
    EXPECT_LE(QFontMetricsF(fonts.fixed).horizontalAdvance(QStringLiteral("drwxrwxrwx")), room(PaneColumn::attr));
    EXPECT_LE(QFontMetricsF(fonts.digits).horizontalAdvance(QStringLiteral("<DIR>")), room(PaneColumn::size));
}

TEST_F(PaneTableTest, withoutTheColumnOfExtensionsTheNamesAreWhole)
{
    show({file("same.qqa"), file("same.qqb"), file("same.qqc")});
    auto const pictureOfName = [this](int row) { return picture(cell(row, PaneColumn::name)); };
    EXPECT_EQ(pictureOfName(1), pictureOfName(3));
    view.titles().adoptChoices("-ext");
    processPosted();
    EXPECT_TRUE(view.isColumnHidden(static_cast<int>(PaneColumn::ext)));
    EXPECT_NE(pictureOfName(1), pictureOfName(3));
    view.titles().adoptChoices("");
    processPosted();
    EXPECT_EQ(pictureOfName(1), pictureOfName(3));
}

TEST_F(PaneTableTest, theColumnsFillTheView)
{
    showFiles(1000);
    EXPECT_EQ(view.titles().length(), view.viewport()->width());
    showFiles(1);
    EXPECT_EQ(view.titles().length(), view.viewport()->width());
}

TEST_F(PaneTableTest, aMarkedRowIsPaintedInTheAccentColour)
{
    QApplication::setPalette(Palettes::light());
    show({file("a", 88888), file("b", 88888)});
    model.toggleMark(1);
    view.redrawRows();
    auto const accent = PaneColors::of(view.palette()).marked;
    EXPECT_LT(nearest(picture(cell(1, PaneColumn::size)), accent), nearlyTheSame);
    EXPECT_GT(nearest(picture(cell(2, PaneColumn::size)), accent), nearlyTheSame);
    EXPECT_EQ(answer(1, PaneColumn::name, PaneTableModel::markedRole).toInt(), Qt::Checked);
    EXPECT_EQ(answer(2, PaneColumn::name, PaneTableModel::markedRole).toInt(), Qt::Unchecked);
}

TEST_F(PaneTableTest, theCursorIsFilledInTheActivePaneAndAnOutlineInTheOther)
{
    showFiles(10);
    view.showCursor(2);
    auto const highlight = view.palette().color(QPalette::Highlight);
    view.showActive(true);
    EXPECT_EQ(cornerOf(2), highlight);
    EXPECT_NE(cornerOf(3), highlight);

    view.showActive(false);
    EXPECT_NE(cornerOf(2), highlight);
    EXPECT_EQ(picture(cell(2, PaneColumn::name)).pixelColor(2, 0), highlight);
}

TEST_F(PaneTableTest, aTableWithoutACursorPaintsNone)
{
    showFiles(3);
    view.showActive(true);
    view.showCursor(1);
    view.showCursor(std::nullopt);
    EXPECT_NE(cornerOf(1), view.palette().color(QPalette::Highlight));
    EXPECT_FALSE(view.currentIndex().isValid());
}

TEST_F(PaneTableTest, anotherPaletteIsPaintedAtOnce)
{
    show({directory("d"), file("f")});
    for (auto const &palette : {Palettes::dark(), Palettes::light()}) {
        QApplication::setPalette(palette);
        processPosted();
        auto const below = QRect(10, view.viewport()->height() - 10, 4, 4);
        EXPECT_EQ(picture(below).pixelColor(1, 1), palette.color(QPalette::Base));
        EXPECT_LT(nearest(picture(cell(2, PaneColumn::name).adjusted(28, 0, 0, 0)), palette.color(QPalette::Text)),
                  nearlyTheSame);
    }
}

TEST_F(PaneTableTest, namesOfAnyBytesAreOneLineInTheirCell)
{
    show({file(std::string(255, 'x')), file("bad\xff\xfe"), file("line\nbreak"),
          file("\xE2\x80\xAE"
               "exe.txt"),
          file("z\xCC\x80\xCC\x81\xCC\x82\xCC\x83\xCC\x84\xCC\x85\xCC\x86\xCC\x87")});
    for (int row = 1; row < model.rowCount(); ++row) {
        auto const text = answer(row, PaneColumn::name, Qt::DisplayRole).toString();
        EXPECT_FALSE(text.contains(QLatin1Char('\n'))) << row;
        EXPECT_FALSE(text.isEmpty()) << row;
    }
    // The row of the longest name ends before the next column begins.
    auto const gap = cell(1, PaneColumn::ext).adjusted(-4, 3, -cell(1, PaneColumn::ext).width() + 4, -3);
    auto const image = picture(gap);
    EXPECT_GT(nearest(image, view.palette().color(QPalette::Text)), nearlyTheSame);
}

TEST_F(PaneTableTest, aNameThatIsCutIsShownWholeByATip)
{
    show({file("!short.txt"), file("<b>" + std::string(120, 'x') + "</b>.txt")});
    auto const tipOver = [this](int row, PaneColumn column) {
        auto const place = cell(row, column).center();
        QHelpEvent event(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
        QApplication::sendEvent(view.viewport(), &event);
        return QToolTip::text();
    };
    for (int row = 1; row <= 2; ++row) {
        auto const isCut = answer(row, PaneColumn::name, Qt::DisplayRole).toString().size() > 100;
        EXPECT_EQ(tipOver(row, PaneColumn::size), QString());
        auto const tip = tipOver(row, PaneColumn::name);
        EXPECT_EQ(!tip.isEmpty(), isCut);
        if (isCut)
            EXPECT_TRUE(tip.contains(QStringLiteral("x&lt;/b&gt;.txt"))) << tip.toStdString();
    }
    QToolTip::hideText();
}

TEST_F(PaneTableTest, aScreenReaderHearsNamesMarksAndTitles)
{
    show({directory("d"), file("a.txt", 5)});
    model.toggleMark(2);
    auto *const interface = QAccessible::queryAccessibleInterface(&view);
    ASSERT_NE(interface, nullptr);
    auto *const rows = interface->tableInterface();
    ASSERT_NE(rows, nullptr);
    EXPECT_EQ(rows->rowCount(), 3);
    auto const heard = [&](int row, PaneColumn column) {
        return rows->cellAt(row, static_cast<int>(column))->text(QAccessible::Name).toStdString();
    };
    EXPECT_EQ(interface->text(QAccessible::Name).toStdString(), "Files");
    EXPECT_EQ(heard(0, PaneColumn::name), "parent folder");
    EXPECT_EQ(heard(1, PaneColumn::name), "d, folder");
    EXPECT_EQ(heard(2, PaneColumn::name), "a.txt, marked");
    EXPECT_EQ(heard(2, PaneColumn::size), "5");
    EXPECT_EQ(rows->columnDescription(static_cast<int>(PaneColumn::size)).toStdString(), "Size");
}

TEST_F(PaneTableTest, theRowsAreAsHighAsTheirFontNeeds)
{
    showFiles(10);
    auto const usual = view.rowHeight(0);
    view.setFontSize(20);
    EXPECT_GT(view.rowHeight(0), usual);
    EXPECT_GE(view.rowHeight(0), QFontMetrics(PaneFonts::ofSize(20).text).height());
}

} // namespace
} // namespace tw::test
