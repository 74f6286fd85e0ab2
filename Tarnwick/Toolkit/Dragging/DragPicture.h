#pragma once

#include <QIcon>
#include <QPixmap>
#include <QWidget>

#include <cstddef>

/// What hangs at the pointer during a drag.
namespace tw::DragPicture {

/// The first of the files by its icon and name, and how many there are.
QPixmap of(QIcon const &icon, QString const &name, std::size_t count, QWidget const &origin);

/// Where the pointer is in it: at its upper left, so that it does not cover what is under the pointer.
inline constexpr QPoint hotSpot{-12, -8};

/// The pointer with a question mark: a drop asks how.
QPixmap askingCursor(qreal scale);

} // namespace tw::DragPicture
