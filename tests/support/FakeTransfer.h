#pragma once

#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Transfer/Transfer.h"
#include "tests/support/FakePlace.h"

#include <functional>
#include <string>
#include <vector>

namespace tw::test {

/// A transfer between places in memory: one name after the other. For one thread.
class FakeTransfer final : public Transfer {
public:
    /// `local` is the place of endpoints without a host.
    explicit FakeTransfer(std::shared_ptr<FakePlace> local) : here(std::move(local)) {}

    Task<void> copy(std::vector<std::string> names, TransferEndpoint from, TransferEndpoint to,
                    Reporter onProgress) override
    {
        copies.push_back(from.path() + " -> " + to.path());
        return run(this, std::move(names), std::move(from), std::move(to), std::move(onProgress));
    }

    void cancel() override
    {
        ++cancels;
        if (pause)
            pause->fail(std::make_exception_ptr(FileOperationError::Cancelled()));
    }

    TransferSummary summary() const override { return last; }

    /// Called before each name is copied. It may throw: the name is then partly there.
    std::function<void(std::string const &name)> before = [](auto const &) {};
    /// Waited for before this name.
    std::string pausesBefore;
    std::shared_ptr<Completion<Done>> pause;
    bool countsFiles = true;
    std::vector<std::string> copies; ///< "/from -> /to" of each
    int cancels = 0;

private:
    FakePlace &placeOf(TransferEndpoint const &endpoint) const
    {
        return endpoint.host() ? dynamic_cast<FakePlace &>(*endpoint.host()) : *here;
    }

    static Task<void> run(FakeTransfer *self, std::vector<std::string> names, TransferEndpoint from,
                          TransferEndpoint to, Reporter onProgress)
    {
        self->last = {.areFilesKnown = self->countsFiles,
                      .totalFiles = static_cast<std::int64_t>(names.size()),
                      .untouched = names};
        for (auto const &name : names) {
            onProgress({.item = name, .files = self->last.files, .totalFiles = self->last.totalFiles});
            if (name == self->pausesBefore) {
                self->pause = std::make_shared<Completion<Done>>();
                co_await Completion<Done>::wait(self->pause);
            }
            self->last.untouched.erase(self->last.untouched.begin());
            self->last.partial = {name};
            self->last.words = "the last words about " + name;
            self->before(name);
            auto const path = (from.path() == "/" ? "" : from.path()) + "/" + name;
            self->placeOf(to).copyFrom(self->placeOf(from), path, to.path());
            self->last.partial.clear();
            self->last.complete.push_back(name);
            ++self->last.files;
        }
    }

    std::shared_ptr<FakePlace> const here;
    TransferSummary last;
};

} // namespace tw::test
