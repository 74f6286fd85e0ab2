#include "Tarnwick/Operations/CopyTally.h"

#include "Tarnwick/Operations/NamesWithout.h"

#include <span>

namespace tw {

namespace {

using Names = std::vector<std::string>;

void append(Names &to, Names const &names)
{
    to.insert(to.end(), names.begin(), names.end());
}

Names namesReplacedBy(TransferPlan const &plan)
{
    Names names;
    for (auto const &each : plan.replace)
        names.push_back(each.source.name);
    return names;
}

/// To a number that is known.
void addTo(std::optional<std::int64_t> &total, std::optional<std::int64_t> more)
{
    if (total && more)
        *total += *more;
    else
        total.reset();
}

std::optional<std::int64_t> filesOf(std::optional<CopyStep::Size> const &size)
{
    return size ? std::optional(size->files) : std::nullopt;
}

std::optional<std::int64_t> bytesOf(std::optional<CopyStep::Size> const &size)
{
    return size ? std::optional(size->bytes) : std::nullopt;
}

} // namespace

void CopyTally::expect(std::vector<CopyStep> expected)
{
    steps = std::move(expected);
    sum->totalFiles = 0;
}

Transfer::Reporter CopyTally::beginStep()
{
    ++begun;
    return [report = onProgress, all = bytes, before = bytes->load(), files = sum->files,
            behind = sizeBehind()](TransferProgress progress) {
        progress.bytes += before;
        *all = progress.bytes;
        addTo(progress.total, before);
        addTo(progress.total, bytesOf(behind));
        progress.files += files;
        addTo(progress.totalFiles, files);
        addTo(progress.totalFiles, filesOf(behind));
        report(progress);
    };
}

void CopyTally::endStep(TransferSummary part, End end, Names const &names)
{
    if (end == End::whole) {
        part.complete = names;
        part.partial.clear();
        part.totalFiles = part.files;
    }
    if (auto const shown = CopyStep::sizeOf(std::span(steps).subspan(begun - 1, 1)))
        part.totalFiles = shown->files;
    sum->files += part.files;
    sum->areFilesKnown = sum->areFilesKnown && part.areFilesKnown;
    addTo(sum->totalFiles, part.totalFiles);
    append(sum->complete, part.complete);
    append(sum->partial, part.partial);
    if (!part.words.empty())
        sum->words = part.words;
}

void CopyTally::tell(std::string doing) const
{
    onProgress({.bytes = bytes->load(), .item = std::move(doing), .files = sum->files});
}

void CopyTally::forget(Names const &names)
{
    sum->complete = namesWithout(sum->complete, names);
    sum->partial = namesWithout(sum->partial, names);
}

void CopyTally::count(TransferPlan const &plan, Survey const &survey)
{
    auto const arrived = plan.only(sum->complete);
    sum->files += std::ssize(arrived.replace); // a file each
    for (auto const &name : namesWithout(arrived.allNames(), namesReplacedBy(arrived))) {
        auto const found = survey.parts.find(name);
        sum->areFilesKnown = sum->areFilesKnown && found != survey.parts.end();
        if (found != survey.parts.end())
            sum->files += found->second.files;
    }
}

void CopyTally::end()
{
    addTo(sum->totalFiles, filesOf(sizeBehind()));
}

std::optional<CopyStep::Size> CopyTally::sizeBehind() const
{
    return CopyStep::sizeOf(std::span(steps).subspan(begun));
}

} // namespace tw
