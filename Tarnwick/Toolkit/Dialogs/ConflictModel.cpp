#include "Tarnwick/Toolkit/Dialogs/ConflictModel.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Format/Fmt.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QFont>

namespace tw {

namespace {

using Answer = NameConflict::Answer;
using Comparison = NameConflict::Comparison;

QString described(FolderFacts::Occupant const &file, char const *mark)
{
    auto words = Fmt::date(file.mtime);
    words += (words.empty() ? "" : " · ") + Fmt::size(file.size, file.kind);
    auto text = QString::fromStdString(words);
    if (*mark)
        text += QStringLiteral(" · ") + Wording::shown(mark);
    return text;
}

char const *markOfArriving(Comparison comparison)
{
    switch (comparison) {
    case Comparison::same:
        return "same";
    case Comparison::newer:
        return "newer";
    case Comparison::older:
    case Comparison::differs:
    case Comparison::unlike:
    case Comparison::folders:
        return "";
    }
    return "";
}

char const *wordsFor(Answer answer, Comparison comparison)
{
    switch (answer) {
    case Answer::replace:
        return comparison == Comparison::folders ? "Merge" : "Replace";
    case Answer::keepBoth:
        return "Keep Both";
    case Answer::skip:
        return "Skip";
    }
    return "";
}

bool isNewer(Comparison comparison, int column)
{
    return (column == ConflictModel::arriving && comparison == Comparison::newer) ||
           (column == ConflictModel::present && comparison == Comparison::older);
}

} // namespace

ConflictModel::ConflictModel(std::vector<NameConflict> names, QObject *parent)
    : QAbstractTableModel(parent), given(std::move(names))
{
}

void ConflictModel::setAnswer(int row, std::optional<Answer> wanted)
{
    given.setAnswer(static_cast<std::size_t>(row), wanted);
    auto const changed = index(row, answer);
    Q_EMIT dataChanged(changed, changed);
}

void ConflictModel::answerRest(Answer wanted)
{
    given.answerRest(wanted);
    Q_EMIT dataChanged(index(0, answer), index(rowCount() - 1, answer));
}

int ConflictModel::rowCount(QModelIndex const &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(given.names().size());
}

int ConflictModel::columnCount(QModelIndex const &parent) const
{
    return parent.isValid() ? 0 : columns;
}

QString ConflictModel::text(NameConflict const &conflict, std::size_t row, int column) const
{
    auto const comparison = conflict.comparison();
    switch (column) {
    case name:
        return QString::fromStdString(onOneLine(conflict.target.name));
    case arriving:
        return described(conflict.source, markOfArriving(comparison));
    case present:
        return described(conflict.target, comparison == Comparison::older ? "newer" : "");
    case answer:
        if (auto const wanted = given.answer(row))
            return Wording::shown(wordsFor(*wanted, comparison));
        return {};
    default:
        return {};
    }
}

QVariant ConflictModel::data(QModelIndex const &index, int role) const
{
    auto const row = static_cast<std::size_t>(index.row());
    auto const &conflict = given.names().at(row);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole: // for a cell that is too narrow for it
        return text(conflict, row, index.column());
    case Qt::FontRole:
        if (isNewer(conflict.comparison(), index.column())) {
            QFont bold;
            bold.setWeight(QFont::DemiBold);
            return bold;
        }
        return {};
    default:
        return {};
    }
}

QVariant ConflictModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static constexpr char const *titles[columns] = {"Name", "New", "Existing", "Answer"};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columns)
        return {};
    return Wording::shown(titles[section]);
}

} // namespace tw
