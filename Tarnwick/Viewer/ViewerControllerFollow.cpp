// Following a file that grows.

#include "Tarnwick/Viewer/ViewerController.h"
#include "Tarnwick/Viewer/ViewerWords.h"

namespace tw {

void ViewerController::toggleFollowing()
{
    if (isFollowed) {
        endFollowing();
        return show();
    }
    if (!mayRead) {
        if (display)
            display->beep();
        return;
    }
    isFollowed = true;
    followedAs.reset();
    followOrNot();
    jumpToEnd();
}

void ViewerController::setOnScreen(bool isSeen)
{
    if (isSeen == isOnScreen)
        return;
    isOnScreen = isSeen;
    followOrNot();
}

void ViewerController::followOrNot()
{
    following.request_stop();
    following = {};
    if (isFollowed && isOnScreen)
        spawn({executor, following.get_token()}, follow(weak_from_this(), of.file, followedAs));
}

void ViewerController::endFollowing()
{
    isFollowed = staysAtEnd = false;
    followOrNot();
}

Task<void> ViewerController::follow(std::weak_ptr<ViewerController> weak, std::shared_ptr<ViewedFile> file,
                                    std::optional<ViewedFile::Facts> known)
{
    auto const context = co_await currentContext();
    for (;;) {
        auto outcome = co_await outcomeOf(file->next(known));
        auto const self = weak.lock();
        if (!self || context.stop.stop_requested())
            co_return;
        if (outcome.failure) {
            self->endFollowing();
            self->fail(ViewerWords::failure(outcome.failure));
            co_return;
        }
        known = *std::move(outcome.value);
        self->followed(*known);
    }
}

void ViewerController::followed(ViewedFile::Facts const &facts)
{
    auto const before = followedAs;
    followedAs = facts;
    if (facts.kind != EntryKind::file) {
        endFollowing();
        return fail(ViewerWords::notAFile(facts.kind));
    }
    auto const isAnother = before && before->identity != facts.identity;
    if (isAnother || (before && facts.size < before->size)) {
        counts.clear();
        totalSize = facts.size;
        match.reset();
        reachedEnd = false;
        auto const words = isAnother ? ViewerWords::replaced() : ViewerWords::shortened();
        return jump(totalSize - static_cast<std::int64_t>(FileWindow::chunkBytes), [this, words] {
            top = pager.lastPage(rowCount);
            staysAtEnd = true;
            remark = words;
        });
    }
    if (facts.size <= totalSize) // a read may have seen more than a look before it
        return;
    totalSize = facts.size;
    reachedEnd = false;
    if (staysAtEnd && !underWay)
        notice = {};
    show();
}

/// The end of a file that has grown: the next chunk if that is enough, or else only the last one.
void ViewerController::catchUp()
{
    auto const toEnd = [this] {
        top = pager.lastPage(rowCount);
        notice = remark = {};
    };
    auto const chunk = static_cast<std::int64_t>(FileWindow::chunkBytes);
    if (!window.isEmpty() && totalSize - window.end() <= chunk)
        return read({Purpose::append, window.end(), FileWindow::chunkBytes, toEnd});
    jump(totalSize - chunk, toEnd);
}

} // namespace tw
