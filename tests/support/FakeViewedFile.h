#pragma once

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/ReadError.h"
#include "TWCore/Shell/ByteExpression.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Viewing/ViewedFile.h"

#include <functional>
#include <vector>

namespace tw::test {

/// A file of any size, made up as it is read. For one thread.
class FakeViewedFile final : public ViewedFile {
public:
    struct Request {
        std::int64_t offset;
        std::size_t length;

        friend bool operator==(Request const &, Request const &) = default;
    };

    explicit FakeViewedFile(std::string bytes)
        : size(std::ssize(bytes)), content([bytes = std::move(bytes)](std::int64_t from, std::size_t length) {
              return bytes.substr(static_cast<std::size_t>(from), length);
          })
    {
    }

    Task<Facts> look() override
    {
        ++looks;
        if (!failure.empty())
            throw ReadError::NotReadable("/file", failure);
        co_return Facts{kind, size, identity};
    }

    Task<std::string> read(std::int64_t offset, std::size_t length) override
    {
        requests.push_back({offset, length});
        if (isHeld) {
            auto const gate = std::make_shared<Completion<bool>>();
            held.push_back(gate);
            co_await Completion<bool>::wait(gate);
        }
        if (!failure.empty() && throwsOnRead)
            throw ReadError::NotReadable("/file", failure);
        auto const left = failure.empty() ? std::max<std::int64_t>(size - offset, 0) : 0;
        co_return content(offset, static_cast<std::size_t>(std::min(left, static_cast<std::int64_t>(length))));
    }

    Task<FileSearch::Found> find(FileSearch::Question question, FileSearch::Progress progress) override
    {
        auto const &[sought, given, which, atHand, farthest] = question;
        FileSearch::Part const part{given.from, searchesAtOnce ? std::max(given.to, farthest) : given.to};
        searched.push_back(part);
        reportProgress = std::move(progress);
        if (isHeld) {
            auto const gate = std::make_shared<Completion<bool>>();
            held.push_back(gate);
            auto const outcome = co_await outcomeOf(Completion<bool>::wait(gate));
            stopped += outcome.failure ? 1 : 0;
            if (outcome.failure)
                std::rethrow_exception(outcome.failure);
        }
        if (!whyNotSearched.empty())
            throw FileSearch::Failed(whyNotSearched);
        auto const text = content(part.from, static_cast<std::size_t>(part.to - part.from));
        if (!failure.empty())
            throw ReadError::NotReadable("/file", failure);
        auto const isFirst = which == FileSearch::Which::first;
        auto at = isFirst ? text.find(sought.pattern) : text.rfind(sought.pattern);
        if (sought.kind == FileSearch::Sought::Kind::expression) {
            at = std::string::npos;
            ByteExpression::eachMatch(sought.pattern, text, [&](ByteExpression::Match match) {
                at = match.from;
                return !isFirst;
            });
        }
        if (at == std::string::npos)
            co_return FileSearch::Found{.to = part.to};
        FileSearch::Match match{.offset = part.from + static_cast<std::int64_t>(at)};
        auto const isAtHand = match.offset >= atHand.from && match.offset < atHand.to;
        if (saysWhatIsAround && !isAtHand)
            match.around = around(match.offset);
        co_return FileSearch::Found{.match = std::move(match), .to = part.to};
    }

    Task<Facts> next(std::optional<Facts> known) override
    {
        for (;;) {
            if (!failure.empty())
                throw ReadError::NotReadable("/file", failure);
            if (Facts const now{kind, size, identity}; !known || *known != now)
                co_return now;
            ++followers;
            auto const gate = std::make_shared<Completion<bool>>();
            waiting = gate;
            auto const outcome = co_await outcomeOf(Completion<bool>::wait(gate));
            --followers;
            if (outcome.failure)
                std::rethrow_exception(outcome.failure);
        }
    }

    /// Reports a change to whatever follows the file.
    void change()
    {
        if (auto const gate = std::exchange(waiting, nullptr))
            gate->succeed(true);
    }

    /// Answers the oldest read that waits.
    void answer()
    {
        auto const gate = held.front();
        held.erase(held.begin());
        gate->succeed(true);
    }

    std::int64_t size;
    EntryKind kind = EntryKind::file;
    std::function<std::string(std::int64_t, std::size_t)> content;
    std::string failure;        ///< why it cannot be read; empty: it can
    bool throwsOnRead = true;   ///< false: as a host, which answers nothing
    std::string whyNotSearched; ///< empty: it can be
    bool isHeld = false;
    bool saysWhatIsAround = false; ///< of a match, as a host does
    std::vector<Request> requests;
    bool searchesAtOnce = false; ///< as far as it may, as a host does that can say how far it is
    std::vector<FileSearch::Part> searched;
    FileSearch::Progress reportProgress; ///< of the search that began last
    int stopped = 0;                     ///< searches that were given up
    int looks = 0;
    std::string identity = "1";
    int followers = 0; ///< that wait for a change

private:
    std::string around(std::int64_t offset) const
    {
        auto const begin = FileSearch::beginOfAround(offset);
        return content(begin, static_cast<std::size_t>(std::min(size - begin, FileSearch::bytesAround)));
    }

    std::vector<std::shared_ptr<Completion<bool>>> held;
    std::shared_ptr<Completion<bool>> waiting;
};

} // namespace tw::test
