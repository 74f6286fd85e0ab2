#pragma once

#include "TWCore/Provider/Survey.h"
#include "TWEngine/Transfer/Transfer.h"
#include "Tarnwick/Operations/CopyStep.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace tw {

/// What the steps of a transfer have done together, as progress while they run and as a summary at their end. Of a
/// total that is not that of all steps, nothing is said.
///
/// Threads: main context only; the reporters that it gives may be called from any thread.
class CopyTally {
public:
    /// Writes to `summary`.
    CopyTally(Transfer::Reporter reporter, std::shared_ptr<TransferSummary> summary)
        : onProgress(std::move(reporter)), sum(std::move(summary))
    {
    }

    /// Called once, before the first of the steps begins.
    void expect(std::vector<CopyStep> expected);

    /// For the next step, which begins with this.
    Transfer::Reporter beginStep();

    enum class End { whole, broken };

    /// What the step under way has done. `names` are those that it copied if it is whole.
    void endStep(TransferSummary part, End end, std::vector<std::string> const &names);

    /// Says what is done behind the copies.
    void tell(std::string doing) const;

    /// Nothing of these names is at the target after all. The count of files stays.
    void forget(std::vector<std::string> const &names);

    /// Counts the files of those of `plan` that are complete, of which `survey` knows the folders.
    void count(TransferPlan const &plan, Survey const &survey);

    /// Called once, when no step is left to begin: adds those that were not begun to the total.
    void end();

private:
    std::optional<CopyStep::Size> sizeBehind() const;

    Transfer::Reporter const onProgress;
    std::shared_ptr<TransferSummary> const sum;
    std::vector<CopyStep> steps;
    std::size_t begun = 0; ///< how many of them
    std::shared_ptr<std::atomic<std::int64_t>> const bytes = std::make_shared<std::atomic<std::int64_t>>(0);
};

} // namespace tw
