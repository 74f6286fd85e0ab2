#pragma once

#include "TWCore/Model/ReadError.h"
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
        co_return Facts{kind, size};
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

    Task<std::optional<std::int64_t>> find(std::string bytes, FileSearch::Part part, FileSearch::Which which) override
    {
        searched.push_back(part);
        if (isHeld) {
            auto const gate = std::make_shared<Completion<bool>>();
            held.push_back(gate);
            co_await Completion<bool>::wait(gate);
        }
        auto const text = content(part.from, static_cast<std::size_t>(part.to - part.from));
        auto const at = which == FileSearch::Which::first ? text.find(bytes) : text.rfind(bytes);
        co_return at == std::string::npos ? std::nullopt : std::optional(part.from + static_cast<std::int64_t>(at));
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
    std::string failure;      ///< why it cannot be read; empty: it can
    bool throwsOnRead = true; ///< false: as a host, which answers nothing
    bool isHeld = false;
    std::vector<Request> requests;
    std::vector<FileSearch::Part> searched;
    int looks = 0;

private:
    std::vector<std::shared_ptr<Completion<bool>>> held;
};

} // namespace tw::test
