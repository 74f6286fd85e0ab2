#include "Tarnwick/Toolkit/Widgets/PathCrumbs.h"

#include <QPainter>

#include <algorithm>

namespace tw {

namespace {

auto const omission = QStringLiteral("…/");

bool beginsWithDrive(QString const &path)
{
    return path.size() >= 2 && path[0].isLetter() && path[1] == QLatin1Char(':') &&
           (path.size() == 2 || path[2] == QLatin1Char('/'));
}

} // namespace

void PathCrumbs::setPath(QString const &path)
{
    whole.clear();
    fitting.clear();
    auto const hasRoot = path.startsWith(QLatin1Char('/'));
    if (path.isEmpty())
        return;
    if (!hasRoot && !beginsWithDrive(path)) {
        whole.push_back({path});
        return;
    }
    auto components = hasRoot ? 0 : 1;
    for (qsizetype start = 0; start < path.size(); ++components) {
        auto const slash = path.indexOf(QLatin1Char('/'), start);
        auto const end = slash < 0 ? path.size() : slash + 1;
        whole.push_back({path.sliced(start, end - start), components});
        start = end;
    }
    whole.back().components.reset(); // the pane is there
}

void PathCrumbs::arrange(QFontMetrics const &metrics, QRect const &room)
{
    auto const widthOf = [&](Part const &part) { return metrics.horizontalAdvance(part.text); };
    auto left = room.width();
    for (auto const &part : whole)
        left -= widthOf(part);
    fitting = whole;
    if (left < 0 && whole.size() > 1) {
        Part const gap{omission};
        left = room.width() - widthOf(whole.front()) - widthOf(gap) - widthOf(whole.back());
        auto from = whole.end() - 1;
        while (from - 1 != whole.begin() && left >= widthOf(*(from - 1))) {
            --from;
            left -= widthOf(*from);
        }
        fitting = {whole.front()};
        if (from - 1 != whole.begin())
            fitting.push_back(gap);
        fitting.insert(fitting.end(), from, whole.end());
    }
    if (left < 0 && !fitting.empty()) {
        auto &last = fitting.back().text;
        last = metrics.elidedText(last, Qt::ElideMiddle, std::max(metrics.horizontalAdvance(last) + left, 0));
    }
    auto x = room.left();
    for (auto &part : fitting) {
        part.place = {x, room.top(), widthOf(part), room.height()};
        x += part.place.width();
    }
}

std::optional<int> PathCrumbs::componentsAt(QPoint const &point) const
{
    auto const part = std::ranges::find_if(fitting, [&](Part const &each) { return each.place.contains(point); });
    return part != fitting.end() ? part->components : std::nullopt;
}

void PathCrumbs::paint(QPainter &painter, std::optional<int> hovered) const
{
    constexpr int flags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip |
                          Qt::TextForceLeftToRight; // the slash stays behind a name that runs to the left
    for (auto const &part : fitting) {
        auto font = painter.font();
        font.setUnderline(part.components && part.components == hovered);
        painter.setFont(font);
        painter.drawText(part.place, flags, part.text);
    }
}

QString PathCrumbs::shown() const
{
    QString text;
    for (auto const &part : fitting)
        text += part.text;
    return text;
}

std::vector<QRect> PathCrumbs::places() const
{
    std::vector<QRect> places;
    for (auto const &part : fitting)
        places.push_back(part.place);
    return places;
}

} // namespace tw
