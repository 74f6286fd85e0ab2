#pragma once

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Archives/Archives.h"
#include "TWEngine/Runtime/Completion.h"

namespace tw::test {

/// Work on archives that is noted, and ends when the test says so. For one thread.
class FakeArchives final : public Archives {
public:
    Task<std::vector<ArchiveFormat>> formats(TransferEndpoint from, TransferEndpoint archive) override
    {
        calls.push_back("formats " + text(from) + " " + text(archive));
        co_return offered;
    }

    Task<void> pack(Names names, TransferEndpoint from, TransferEndpoint archive, ArchiveFormat format,
                    Reporter onProgress) override
    {
        onProgress({.bytes = 1, .item = "a"});
        return work("pack " + joined(names) + text(from) + " " + text(archive) + " " + std::string(rawText(format)));
    }

    Task<void> extract(Members members, TransferEndpoint archive, TransferEndpoint into, Reporter) override
    {
        return work("extract " + joined(members.paths) + text(archive) + " " + text(into));
    }

    Task<void> unpack(TransferEndpoint archive, TransferEndpoint into, Reporter) override
    {
        return work("unpack " + text(archive) + " " + text(into));
    }

    Task<void> add(Names paths, std::string archive, std::string inner, Reporter) override
    {
        return work("add " + joined(paths) + archive + " " + inner);
    }

    Task<void> remove(Names members, std::string archive, Reporter) override
    {
        return work("remove " + joined(members) + archive);
    }

    void takeAnySize() override { calls.emplace_back("take any size"); }

    void cancel() override { end->fail(std::make_exception_ptr(FileOperationError::Cancelled())); }

    std::vector<ArchiveFormat> offered{ArchiveFormat::zip, ArchiveFormat::tarGz};
    std::vector<std::string> calls;        ///< "unpack /src/a.zip web1:/dst/a"
    std::shared_ptr<Completion<Done>> end; ///< of the work under way

private:
    static std::string text(TransferEndpoint const &place)
    {
        return (place.host() ? place.host()->host() + ":" : "") + place.path();
    }

    static std::string joined(Names const &names)
    {
        std::string all;
        for (auto const &name : names)
            all += name + " ";
        return all;
    }

    Task<void> work(std::string call)
    {
        calls.push_back(std::move(call));
        end = std::make_shared<Completion<Done>>();
        return wait(end);
    }

    static Task<void> wait(std::shared_ptr<Completion<Done>> end) { co_await Completion<Done>::wait(end); }
};

} // namespace tw::test
