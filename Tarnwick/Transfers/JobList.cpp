#include "Tarnwick/Transfers/JobList.h"

#include <algorithm>
#include <iterator>

namespace tw {

std::shared_ptr<Job> JobList::begin(std::string title, std::function<void()> onCancel)
{
    auto work = std::make_shared<Job>(std::move(title), std::move(onCancel), now());
    works.push_back(work);
    changed();
    return work;
}

void JobList::end(std::shared_ptr<Job> const &work)
{
    if (std::erase(works, work) == 0)
        return;
    changed();
    if (onEnd && !work->conclusion.empty())
        onEnd({.title = work->title, .conclusion = work->conclusion, .duration = ageOf(*work)});
}

void JobList::move(std::shared_ptr<Job> const &work, Job::Place place)
{
    if (work->shownAt == place)
        return;
    work->shownAt = place;
    changed();
}

bool JobList::isUnderWay(Job const &work) const
{
    return std::ranges::find(works, &work, &std::shared_ptr<Job>::get) != works.end();
}

std::vector<std::shared_ptr<Job>> JobList::inBackground() const
{
    std::vector<std::shared_ptr<Job>> found;
    std::ranges::copy_if(works, std::back_inserter(found),
                         [](auto const &each) { return each->place() == Job::Place::background; });
    return found;
}

void JobList::cancelAll() const
{
    auto const all = works; // a work may end while it is cancelled
    for (auto const &each : all)
        each->cancel();
}

void JobList::changed() const
{
    for (auto const &each : observers)
        each();
}

} // namespace tw
