#pragma once

#include <QFontMetrics>
#include <QRect>
#include <QString>

#include <optional>
#include <vector>

class QPainter;

namespace tw {

/// A path on one line, in parts that lead to the folders above.
///
/// The parts stand from left to right, whatever the direction of their names. If there is no room for all, parts in the
/// middle go, and then the middle of the last part.
class PathCrumbs {
public:
    /// A text that is no path is one part that leads nowhere.
    void setPath(QString const &path);

    /// Lays the parts out in a room.
    void arrange(QFontMetrics const &metrics, QRect const &room);

    /// How many components of the path make the folder at a point; 0 is the root. Nothing where no folder above is.
    std::optional<int> componentsAt(QPoint const &point) const;

    /// With a line under the part of `hovered` components.
    void paint(QPainter &painter, std::optional<int> hovered) const;

    /// What is painted, without the room between.
    QString shown() const;

    /// Where the parts are, from left to right.
    std::vector<QRect> places() const;

private:
    struct Part {
        QString text;
        std::optional<int> components = {}; ///< nothing: the part leads nowhere
        QRect place = {};
    };

    std::vector<Part> whole;
    std::vector<Part> fitting;
};

} // namespace tw
