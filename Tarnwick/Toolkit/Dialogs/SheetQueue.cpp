#include "Tarnwick/Toolkit/Dialogs/SheetQueue.h"

#include <QEvent>

#include <algorithm>
#include <utility>

namespace tw {

void SheetQueue::add(Sheet &sheet, Kind kind)
{
    sheet.addActions(everywhere);
    sheets.push_back({&sheet, kind});
    connect(&sheet, &QDialog::finished, this, [this, shown = &sheet] {
        forget(shown);
        showNext();
    });
    showNext();
}

void SheetQueue::remove(Sheet &sheet)
{
    forget(&sheet);
    sheet.hide();
    sheet.deleteLater();
    showNext();
}

void SheetQueue::close()
{
    isClosed = true;
    for (auto const &waiting : std::exchange(sheets, {}))
        delete waiting.sheet;
}

bool SheetQueue::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::WindowActivate) {
        auto *const shown = next();
        if (shown && shown->isVisible())
            shown->activateWindow();
    }
    return QObject::eventFilter(watched, event);
}

void SheetQueue::forget(Sheet const *sheet)
{
    std::erase_if(sheets, [sheet](Waiting const &each) { return each.sheet.isNull() || each.sheet == sheet; });
}

Sheet *SheetQueue::next() const
{
    auto const found = std::ranges::min_element(sheets, {}, &Waiting::kind);
    return found == sheets.end() ? nullptr : found->sheet.data();
}

void SheetQueue::showNext()
{
    auto *const wanted = next();
    for (auto const &waiting : sheets) {
        if (waiting.sheet && waiting.sheet != wanted)
            waiting.sheet->hide();
    }
    if (wanted && !wanted->isVisible())
        wanted->open();
}

} // namespace tw
