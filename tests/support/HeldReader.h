#pragma once

#include "TWCore/Async/Outcome.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWEngine/Runtime/Completion.h"

#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace tw::test {

/// A host whose files all have the same content, and whose downloads wait for the test if it says so. For one thread.
class HeldReader final : public FileSystemReader {
public:
    std::string content = "text";
    std::vector<std::string> requests;
    bool isHeld = false;
    std::vector<std::shared_ptr<Completion<Done>>> held;
    int stopped = 0;

    std::string identifier() const override { return "ssh:web"; }

    std::string displayName() const override { return "web"; }

    int maxUsefulDepth() const override { return 1; }

    Task<Listings> fetch(std::string /*path*/, int /*depth*/, FetchPriority /*priority*/) override
    {
        co_return Listings();
    }

    Task<std::string> readChunk(std::string path, std::int64_t offset, std::size_t length) override
    {
        return readHere(this, std::move(path), static_cast<std::size_t>(offset), length);
    }

    Task<std::int64_t> fileSize(std::string /*path*/) override { co_return std::ssize(content); }

    Task<void> download(std::string path, std::string localPath) override
    {
        return downloadHere(this, std::move(path), std::move(localPath));
    }

    Task<void> upload(std::string /*localPath*/, std::string /*path*/) override { co_return; }

private:
    static Task<std::string> readHere(HeldReader *self, std::string path, std::size_t offset, std::size_t length)
    {
        self->requests.push_back("read " + path);
        co_return self->content.substr(offset, length);
    }

    static Task<void> downloadHere(HeldReader *self, std::string path, std::string localPath)
    {
        self->requests.push_back("download " + path);
        if (self->isHeld) {
            self->held.push_back(std::make_shared<Completion<Done>>());
            auto const gate = self->held.back();
            auto const outcome = co_await outcomeOf(Completion<Done>::wait(gate));
            self->stopped += outcome.failure ? 1 : 0;
            if (outcome.failure)
                std::rethrow_exception(outcome.failure);
        }
        std::ofstream(localPath, std::ios::trunc) << self->content;
    }
};

} // namespace tw::test
