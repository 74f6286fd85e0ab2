#include "Tarnwick/Operations/StagingFolder.h"

#include "TWCore/Async/FailureKind.h"
#include "Tarnwick/Operations/AnswerUntil.h"
#include "Tarnwick/Operations/StagingName.h"

namespace tw {

StagingFolder::StagingFolder(Operands parent, Operands where, SharedTask<void> task)
    : above(std::move(parent)), folder(std::move(where)), making(std::move(task))
{
}

Task<StagingFolder> StagingFolder::begin(Operands parent)
{
    auto const context = co_await currentContext();
    parent.names = {stagingName()};
    auto folder = parent;
    folder.path = parent.paths().front();
    folder.names.clear();
    auto making = SharedTask<void>::start(context.executor, folder.browser->makeDirectory(folder.path));
    co_return StagingFolder(std::move(parent), std::move(folder), std::move(making));
}

Task<bool> StagingFolder::discard(Content content) const
{
    return discardHere(*this, content);
}

Task<bool> StagingFolder::discardHere(StagingFolder self, Content content)
{
    auto const limit = self.making.isDone() ? patienceWithWork : patience;
    auto leaving = isGoneAfter(self, content).withStop({});
    auto const isGone =
        co_await outcomeOf(answerSoonAfterStop(self.folder.browser->clockRef(), limit, std::move(leaving)));
    co_return isGone.value.value_or(false);
}

Task<bool> StagingFolder::isGoneAfter(StagingFolder self, Content content)
{
    auto const made = co_await outcomeOf(self.making.wait());
    if (failureIs<FileOperationError::Failed>(made.failure))
        co_return true;
    auto const &place = self.folder;
    auto removing = content == Content::copies ? place.browser->removePermanently({place.path}, LockedFolders::go)
                                               : place.browser->removeEmptyFolder(place.path);
    auto const removed = co_await outcomeOf(std::move(removing));
    if (!removed.failure)
        co_return true;
    auto const facts = co_await outcomeOf(self.above.browser->factsAbout(self.above.path, self.above.names));
    auto const isGone = facts.value && facts.value->state == FolderFacts::State::present && facts.value->taken.empty();
    co_return isGone;
}

} // namespace tw
