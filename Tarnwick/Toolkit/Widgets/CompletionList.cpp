#include "Tarnwick/Toolkit/Widgets/CompletionList.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QScrollBar>

#include <algorithm>

namespace tw {

CompletionList::CompletionList(QWidget &field) : QListWidget(field.window()), anchor(field)
{
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(Wording::shown("Completions"));
    setUniformItemSizes(true);
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    hide();
    connect(this, &QListWidget::itemClicked, this, [this](QListWidgetItem *item) {
        if (onPicked)
            onPicked(row(item));
    });
}

void CompletionList::showNames(QStringList const &names)
{
    clear();
    addItems(names);
    place();
    show();
    raise();
}

void CompletionList::showCurrent(std::optional<std::size_t> row)
{
    setCurrentRow(row ? static_cast<int>(*row) : -1);
}

void CompletionList::place()
{
    auto const &window = *parentWidget();
    auto const corner = anchor.mapTo(&window, QPoint(0, anchor.height()));
    auto const frame = 2 * frameWidth();
    auto const height = std::min(count(), mostRows) * sizeHintForRow(0) + frame;
    auto const width = sizeHintForColumn(0) + verticalScrollBar()->sizeHint().width() + frame;
    setGeometry(corner.x(), corner.y(), std::min(width, anchor.width()),
                std::min(height, window.height() - corner.y()));
}

} // namespace tw
