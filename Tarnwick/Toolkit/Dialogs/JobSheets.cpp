#include "Tarnwick/Toolkit/Dialogs/JobSheets.h"

#include "Tarnwick/Toolkit/Dialogs/ProgressSheet.h"

#include <QTimer>

#include <algorithm>

namespace tw {

JobSheets::JobSheets(std::shared_ptr<SheetQueue> shownIn, std::shared_ptr<JobList> list)
    : queue(std::move(shownIn)), works(std::move(list))
{
    // Work outlives the window.
    works->observe([self = QPointer(this)] {
        if (self)
            self->sync();
    });
}

void JobSheets::sync()
{
    removeOld();
    for (auto const &work : works->underWay()) {
        if (work->place() == Job::Place::sheet && std::ranges::find(shown, work, &Shown::work) == shown.end())
            add(work);
    }
}

void JobSheets::removeOld()
{
    std::erase_if(shown, [this](Shown const &each) {
        if (each.work->place() == Job::Place::sheet && works->isUnderWay(*each.work))
            return false;
        if (each.sheet)
            queue->remove(*each.sheet);
        return true;
    });
}

void JobSheets::add(std::shared_ptr<Job> const &work)
{
    shown.push_back({work, nullptr});
    auto const rest = std::chrono::ceil<std::chrono::milliseconds>(delay - works->ageOf(*work));
    if (rest.count() <= 0)
        open(work);
    else
        QTimer::singleShot(rest, this, [this, work] { open(work); });
}

void JobSheets::open(std::shared_ptr<Job> const &work)
{
    auto const found = std::ranges::find(shown, work, &Shown::work);
    if (found == shown.end() || found->sheet || !queue->window())
        return;
    found->sheet = new ProgressSheet(works, work, queue->window());
    queue->add(*found->sheet, SheetQueue::Kind::progress);
}

} // namespace tw
