#pragma once

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/Measure.h"
#include "TWEngine/Transfer/Transfer.h"
#include "TWEngine/Transfer/TransferCommands.h"

#include <memory>

namespace tw {

/// What the steps of one copy share. On the strand of its engine.
struct TransferWork {
    EngineRuntime &engine;
    TransferTools const tools;
    std::vector<std::string> const names;
    TransferEndpoint const from;
    TransferEndpoint const to;
    Transfer::Reporter const report;
    std::string const label;

    std::optional<Measure> measure = {}; ///< nothing until it is known
    std::vector<Measure> measures = {};  ///< of each name, on this machine; empty until it is known
    std::int64_t bytesBefore = 0;        ///< of the steps that are done
    std::int64_t filesBefore = 0;
    TransferSummary summary = {};

    /// So many bytes and files of the step under way are done.
    void reportStep(std::int64_t bytes, std::int64_t files, std::string item) const
    {
        TransferProgress progress{.bytes = bytesBefore + bytes, .item = std::move(item), .files = filesBefore + files};
        if (measure && measure->bytes > 0) // a host without the tools to measure says 0
            progress.total = measure->bytes;
        if (measure && measure->files > 0)
            progress.totalFiles = measure->files;
        report(progress);
    }

    void setMeasures(std::vector<Measure> of)
    {
        Measure sum{.bytes = 0, .files = 0};
        for (auto const &each : of)
            sum += each;
        measure = sum;
        measures = std::move(of);
    }

    std::vector<std::string> sources() const
    {
        std::vector<std::string> paths;
        for (auto const &name : names)
            paths.push_back(TransferCommands::pathOf(from.path(), name));
        return paths;
    }

    using Shared = std::shared_ptr<TransferWork>;
};

} // namespace tw
