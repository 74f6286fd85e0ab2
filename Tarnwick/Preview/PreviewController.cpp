#include "Tarnwick/Preview/PreviewController.h"

#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw {

PreviewController::PreviewController(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock,
                                     std::shared_ptr<PreviewLoader> loader)
    : executor(mainContext),
      source(std::move(loader)),
      leaving(mainContext, clock, [this] { giveUp(); }),
      rested(mainContext, clock, [this] { begin(); }),
      silent(mainContext, clock, [this] { showName(); })
{
}

PreviewController::~PreviewController()
{
    if (running)
        running->stop.request_stop();
}

void PreviewController::detach()
{
    close();
    display = nullptr;
}

void PreviewController::open(PreviewSubject subject, PaneSide side)
{
    if (!display)
        return;
    close();
    over = side;
    wanted = std::move(subject);
    display->openPreview(side);
    begin();
}

bool PreviewController::close()
{
    if (!isOpen())
        return false;
    over.reset();
    wanted.reset();
    giveUp();
    source->rest();
    rested.cancel();
    silent.cancel();
    display->closePreview();
    return true;
}

void PreviewController::follow(std::optional<PreviewSubject> subject, PaneSide side)
{
    if (!isOpen())
        return;
    if (over != side) {
        over = side;
        display->openPreview(side);
    }
    if (subject == wanted)
        return;
    wanted = std::move(subject);
    rested.cancel();
    silent.cancel();
    if (!running)
        return beginSoon();
    if (wanted && running->subject == *wanted) {
        leaving.cancel();
        running->isLeft = false;
    } else if (running->subject.isRemote || !wanted || running->hasFirstPicture) {
        giveUp();
    } else if (!std::exchange(running->isLeft, true)) {
        leaving.set(patienceWithOld);
    }
    if (wanted)
        silent.set(silence);
    else
        showName();
}

/// A cursor that goes through a folder of a host asks it for nothing.
void PreviewController::beginSoon()
{
    if (!wanted || wanted->isRemote)
        showName();
    if (wanted && wanted->isRemote)
        rested.set(rest);
    else
        begin();
}

/// Reads what is wanted.
void PreviewController::begin()
{
    if (!wanted || running)
        return;
    running = std::make_shared<Reading>(*wanted);
    silent.set(silence);
    spawn({executor, running->stop.get_token()}, read(weak_from_this(), source, running, display->previewRoom()));
}

Task<void> PreviewController::read(std::weak_ptr<PreviewController> weak, std::shared_ptr<PreviewLoader> loader,
                                   std::shared_ptr<Reading> reading, PictureBounds room)
{
    auto const shower = [weak, about = std::weak_ptr(reading)](PreviewContent const &content) {
        auto const self = weak.lock();
        auto const still = about.lock();
        if (self && still)
            self->show(*still, content);
    };
    auto const outcome = co_await outcomeOf(loader->load(reading->subject, room, shower));
    if (auto const self = weak.lock())
        self->ended(reading, outcome.failure);
}

void PreviewController::show(Reading &reading, PreviewContent const &content)
{
    if (!isOpen() || reading.stop.stop_requested())
        return;
    silent.cancel();
    display->showPreview(content);
    reading.hasFirstPicture = content.detail == PreviewContent::Detail::little;
    // The rest of it would keep the next one waiting.
    if (reading.isLeft && reading.hasFirstPicture)
        giveUp();
}

/// What is shown belongs to another file; the name at least is right from now on.
void PreviewController::showName()
{
    if (!isOpen())
        return;
    if (wanted)
        display->showPreview({.name = wanted->name});
    else
        display->showPreview({.name = {}, .body = Text("No file is under the cursor.")});
}

void PreviewController::ended(std::shared_ptr<Reading> const &reading, std::exception_ptr const &failure)
{
    if (running != reading)
        return;
    if (failure && !reading->stop.stop_requested())
        show(*reading, {.name = reading->subject.name, .body = PaneStatus::describe(failure)});
    running.reset();
    leaving.cancel();
    // What was given up may have been wanted again since.
    if (isOpen() && wanted && (*wanted != reading->subject || reading->stop.stop_requested()))
        beginSoon();
}

void PreviewController::giveUp()
{
    leaving.cancel();
    if (running)
        running->stop.request_stop();
}

} // namespace tw
