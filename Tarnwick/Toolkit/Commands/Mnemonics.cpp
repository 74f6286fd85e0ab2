#include "Tarnwick/Toolkit/Commands/Mnemonics.h"

#include <QAction>
#include <QKeySequence>

#include <algorithm>
#include <utility>
#include <vector>

namespace tw {

namespace {

constexpr QLatin1Char sign('&');

bool isOfKeyboard(QChar character)
{
    return character.isLetterOrNumber() && character.unicode() < 128;
}

/// The letter that a title has; nothing if it has none.
std::optional<QChar> letterOf(QString const &title)
{
    auto const key = QKeySequence::mnemonic(title);
    return key.isEmpty() ? std::nullopt : std::optional(QChar(key[0].key()).toUpper());
}

/// Where a free letter of a title is, -1 without one. The first letters of words go before the others.
qsizetype placeOf(QString const &title, std::vector<QChar> const &taken)
{
    auto const end = title.indexOf(QLatin1Char('\t')) < 0 ? title.size() : title.indexOf(QLatin1Char('\t'));
    qsizetype inside = -1;
    for (qsizetype place = 0; place < end; ++place) {
        auto const letter = title[place];
        if (!isOfKeyboard(letter) || std::ranges::find(taken, letter.toUpper()) != taken.end())
            continue;
        if (place == 0 || title[place - 1].isSpace())
            return place;
        if (inside < 0)
            inside = place;
    }
    return inside;
}

} // namespace

QStringList Mnemonics::given(QStringList titles)
{
    std::vector<QChar> taken;
    for (auto const &title : std::as_const(titles)) {
        if (auto const letter = letterOf(title))
            taken.push_back(*letter);
    }
    for (auto &title : titles) {
        auto const place = letterOf(title) ? -1 : placeOf(title, taken);
        if (place < 0)
            continue;
        taken.push_back(title[place].toUpper());
        title.insert(place, sign);
    }
    return titles;
}

void Mnemonics::give(QList<QAction *> const &actions)
{
    QStringList titles;
    for (auto const *const action : actions)
        titles.push_back(action->text());
    titles = given(std::move(titles));
    for (qsizetype each = 0; each < actions.size(); ++each)
        actions[each]->setText(titles[each]);
}

} // namespace tw
