#pragma once

#include "Tarnwick/Operations/ClaimedNames.h"
#include "Tarnwick/Operations/OperationContext.h"
#include "Tarnwick/Operations/StagingName.h"
#include "tests/support/FakeArchives.h"
#include "tests/support/FakeConnections.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/FakeTransfer.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

namespace tw::test {

/// A pane on /src of this machine, beside one on /dst of the host "web1".
class TransferPanesTest : public ::testing::Test {
protected:
    /// A pane with its display.
    struct Side {
        std::shared_ptr<PaneController> pane;
        RecordingDisplay display;
    };

    TransferPanesTest()
    {
        here->folder("/src");
        here->file("/src/a", "aaaa");
        here->file("/src/b", "bb");
        there->folder("/dst");
        show(source, hereBrowser, "local", "/src");
        show(target, thereBrowser, "web1", "/dst");
    }

    ~TransferPanesTest() override
    {
        dialogs->close();
        here->wakeUp();
        there->wakeUp();
        loop.drain();
        for (auto *side : {&source, &target}) {
            side->pane->detach(side->display);
            side->pane.reset();
        }
        for (auto const &browser : {hereBrowser, thereBrowser})
            loop.start(browser->shutdown());
        loop.drain();
        clock->advance(std::chrono::seconds(10));
        loop.drain();
    }

    void show(Side &side, std::shared_ptr<Browser> const &browser, std::string const &connection,
              std::string const &path)
    {
        if (side.pane)
            side.pane->detach(side.display);
        side.pane = PaneController::create({.mainContext = loop.context(), .clock = clock, .defaults = defaults},
                                           browser, connection);
        side.pane->attach(side.display);
        side.pane->navigate(path);
        loop.drain();
    }

    /// The pane of the key press has these files under its marks.
    void mark(std::vector<std::string> const &names)
    {
        source.pane->refresh();
        loop.drain();
        source.pane->markAll(PaneModel::Marks::remove);
        for (auto const &name : names) {
            source.pane->moveCursorTo(source.pane->model().rowForName(name).value());
            source.pane->handleKey({.key = Key::insert, .text = {}});
        }
        loop.drain();
        EXPECT_EQ(source.pane->operands().names, names);
    }

    OperationContext context()
    {
        OperationContext context{.operands = source.pane->operands(),
                                 .pane = source.pane,
                                 .panes = {source.pane, target.pane},
                                 .dialogs = dialogs,
                                 .target = target.pane->operands(),
                                 .connections = &connections,
                                 .makeTransfer = [this] { return transfer; },
                                 .makeArchives = [this] { return archives; },
                                 .claims = claims};
        context.target.names.clear();
        return context;
    }

    void begin(Task<void> work)
    {
        operation = loop.start(std::move(work));
        loop.drain();
    }

    /// Confirms the target that is offered, or types another one.
    void answerPrompt(std::optional<std::string> path = {})
    {
        auto const &asked = dialogs->prompts.back();
        asked.answer(path ? path : asked.question.initial);
        loop.drain();
    }

    void confirm(Dialogs::Answer answer)
    {
        dialogs->confirmations.back().answer(answer);
        loop.drain();
    }

    /// Until the first sheet that shows progress says that its work has ended, or a minute has passed.
    void letTimePass()
    {
        for (int second = 0; second < 60 && dialogs->works.front()->isUnderWay; ++second) {
            clock->advance(std::chrono::seconds(1));
            loop.drain();
        }
    }

    void resolve(std::vector<NameConflict::Answer> answers)
    {
        dialogs->conflicts.back().answer(std::move(answers));
        loop.drain();
    }

    std::string lastError() const { return dialogs->errors.empty() ? std::string() : dialogs->errors.back().question; }

    /// The requests of a place that begin so.
    static std::vector<std::string> requestsOf(FakePlace const &place, std::string_view beginning)
    {
        std::vector<std::string> some;
        for (auto const &each : place.requests) {
            if (each.starts_with(beginning))
                some.push_back(each);
        }
        return some;
    }

    /// The first staging folder in a folder.
    static std::string stagingIn(FakePlace const &place, std::string const &folder)
    {
        for (auto const &path : place.below(folder)) {
            if (path.starts_with(folder + "/" + std::string(stagingPrefix)))
                return path;
        }
        return "none";
    }

    std::shared_ptr<Browser> browserOf(std::shared_ptr<FakePlace> const &place)
    {
        return std::make_shared<Browser>(
            place, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
            Browser::Config{});
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    MemoryDefaults defaults;
    std::shared_ptr<FakePlace> here = std::make_shared<FakePlace>("local");
    std::shared_ptr<FakeHostPlace> there = std::make_shared<FakeHostPlace>("web1");
    std::shared_ptr<Browser> hereBrowser = browserOf(here);
    std::shared_ptr<Browser> thereBrowser = browserOf(there);
    FakeConnections connections{hereBrowser};
    std::shared_ptr<FakeTransfer> transfer = std::make_shared<FakeTransfer>(here);
    std::shared_ptr<FakeArchives> archives = std::make_shared<FakeArchives>();
    std::shared_ptr<ClaimedNames> claims = std::make_shared<ClaimedNames>();
    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    Side source;
    Side target;
    std::optional<Started<void>> operation;
};

} // namespace tw::test
