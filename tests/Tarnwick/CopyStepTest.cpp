#include "Tarnwick/Operations/CopyStep.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using testing::ElementsAre;

NameConflict replacing(std::string const &name, std::int64_t size)
{
    return {.source = {.name = name, .kind = EntryKind::file, .size = size},
            .target = {.name = name, .kind = EntryKind::file}};
}

NameConflict merging(std::string const &name)
{
    return {.source = {.name = name, .kind = EntryKind::directory},
            .target = {.name = name, .kind = EntryKind::directory}};
}

/// "> a b" of names that go straight to the target, and "~ a b" of those that are staged.
std::vector<std::string> shown(std::vector<CopyStep> const &steps)
{
    std::vector<std::string> lines;
    for (auto const &step : steps) {
        lines.emplace_back(step.isStaged ? "~" : ">");
        for (auto const &name : step.plan.allNames())
            lines.back() += " " + name;
    }
    return lines;
}

constexpr auto most = CopyStep::mostReplaced;

TEST(CopyStepTest, whatReplacesFilesIsStagedInBatches)
{
    TransferJob const job;
    TransferPlan const plan{.free = {"free"},
                            .replace = {replacing("a", most), merging("f"), replacing("b", 1), replacing("c", most - 1),
                                        replacing("huge", 5 * most), replacing("d", 1)},
                            .keepBoth = {"k"},
                            .renamed = {{"k", "k(2)"}}};
    EXPECT_THAT(shown(CopyStep::of(job, plan)), ElementsAre("> free f", "~ a k", "~ b c", "~ huge", "~ d"));
}

TEST(CopyStepTest, betweenFileSystemsEverythingIsStagedButFoldersThatMerge)
{
    TransferPlan const plan{.free = {"free"}, .replace = {merging("f"), replacing("a", 1)}};
    EXPECT_THAT(shown(CopyStep::of({.isMoveBetweenFileSystems = true}, plan)), ElementsAre("> f", "~ free a"));
}

TEST(CopyStepTest, namesThatAreOneAtTheTargetAreNoOneStep)
{
    TransferPlan const plan{.free = {"A"}, .replace = {replacing("a", 1)}};
    EXPECT_THAT(shown(CopyStep::of({.targetTakesCasesForOne = true}, plan)), ElementsAre("> A", "~ a"));
}

TEST(CopyStepTest, onlyFilesThatWereShownHaveASize)
{
    auto const steps = CopyStep::of({}, {.replace = {replacing("a", most), replacing("b", 7)}});
    ASSERT_EQ(steps.size(), 2U);
    auto const size = CopyStep::sizeOf(steps);
    EXPECT_EQ(size->bytes, most + 7);
    EXPECT_EQ(size->files, 2);
    EXPECT_EQ(CopyStep::sizeOf({})->files, 0);
    EXPECT_FALSE(CopyStep::sizeOf(CopyStep::of({}, {.free = {"free"}})));
    EXPECT_FALSE(CopyStep::sizeOf(CopyStep::of({}, {.replace = {merging("f")}})));
}

} // namespace
} // namespace tw::test
