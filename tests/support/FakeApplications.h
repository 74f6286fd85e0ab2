#pragma once

#include "TWEngine/Applications/ApplicationError.h"
#include "TWEngine/Applications/Applications.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tw::test {

/// Applications that start nothing, and note what they were asked to open. For one thread.
class FakeApplications final : public Applications {
public:
    FileNature nature{.contentType = "text/plain"};
    std::vector<Application> suggested{{.identifier = "pen.desktop", .name = "Pen", .isDefault = true}};
    std::vector<Application> installed{{.identifier = "eye.desktop", .name = "Eye"},
                                       {.identifier = "pen.desktop", .name = "Pen"}};
    std::vector<Opening> opened;
    std::string typeWithoutApplication; ///< nothing opens it
    std::vector<std::string> ran;
    std::vector<std::vector<std::string>> commands; ///< run in a terminal
    std::vector<std::uint16_t> modesThere;          ///< that natures were asked for with

    Task<FileNature> natureOf(std::string /*path*/, std::uint16_t modeThere) override
    {
        modesThere.push_back(modeThere);
        co_return nature;
    }

    Task<FileNature> natureOfBeginning(std::string /*name*/, std::string /*beginning*/, std::uint16_t /*mode*/) override
    {
        co_return nature;
    }

    Task<std::vector<Application>> forType(std::string /*contentType*/) override { co_return suggested; }

    Task<std::vector<Application>> forName(std::string /*name*/) override { co_return suggested; }

    Task<std::vector<Application>> all() override { co_return installed; }

    Task<Application> open(Opening opening) override
    {
        if (opening.contentType == typeWithoutApplication)
            throw ApplicationError::NothingOpens(opening.path);
        opened.push_back(opening);
        auto const wanted =
            opening.application.empty() && !suggested.empty() ? suggested.front().identifier : opening.application;
        for (auto const &each : installed) {
            if (each.identifier == wanted)
                co_return each;
        }
        throw ApplicationError::NothingOpens(opening.path);
    }

    Task<void> runInTerminal(std::string /*name*/, std::vector<std::string> command,
                             std::string /*activationToken*/) override
    {
        commands.push_back(std::move(command));
        co_return;
    }

    Task<void> run(std::string path, FileNature::Kind /*kind*/, std::string /*activationToken*/) override
    {
        ran.push_back(path);
        co_return;
    }
};

} // namespace tw::test
