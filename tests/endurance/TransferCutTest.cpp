// Streams that are cut at every of many places, and a file of more than 4 GiB.

#include "tests/support/TransferFaultsTest.h"

namespace tw::test {
namespace {

using testing::StartsWith;

class TransferCutTest : public TransferFaultsTest {
protected:
    static constexpr std::size_t places = 200;

    static std::size_t placeOf(std::size_t index) { return index * archiveBytes / places; }
};

TEST_F(TransferCutTest, aDownloadThatIsCutAnywhereSaysTheTruth)
{
    auto const names = makeItems();
    for (std::size_t index = 0; index < places; ++index) {
        emptyTarget();
        cutAfter(placeOf(index));
        EXPECT_THAT(carry(names, sourceThere(), targetHere()), StartsWith("read from remote failed"));
        expectTruth(names);
    }
}

TEST_F(TransferCutTest, anUploadThatIsCutAnywhereSaysTheTruth)
{
    auto const names = makeItems();
    for (std::size_t index = 0; index < places; ++index) {
        emptyTarget();
        cutAfter(placeOf(index));
        EXPECT_THAT(carry(names, sourceHere(), targetThere()), StartsWith("write to remote failed"));
        expectTruth(names);
    }
}

TEST_F(TransferCutTest, aStreamBetweenHostsThatIsCutAnywhereSaysTheTruth)
{
    auto const names = makeItems();
    for (auto const lines : {Lines::both, Lines::source, Lines::target}) {
        for (std::size_t index = 0; index < places; ++index) {
            emptyTarget();
            cutAfter(placeOf(index), "exit 255", lines);
            EXPECT_THAT(carry(names, sourceThere(), targetThere()),
                        StartsWith(lines == Lines::target ? "write to remote failed" : "read from remote failed"));
            expectTruth(names);
        }
    }
}

TEST_F(TransferCutTest, aTarOfThisMachineThatIsKilledAnywhereSaysTheTruth)
{
    auto const names = makeItems();
    for (std::size_t index = 0; index < places; ++index) {
        emptyTarget();
        auto const head = "head -c " + std::to_string(placeOf(index));
        programs.tar =
            tarOf("case $1 in -cf) tar \"$@\" | " + head + ";; *) " + head + " | tar \"$@\";; esac; kill -9 $$");
        EXPECT_THAT(carry(names, sourceHere(), targetThere()), StartsWith("read from this Mac failed"));
        expectTruth(names);
        emptyTarget();
        EXPECT_THAT(carry(names, sourceThere(), targetHere()), StartsWith("write to this Mac failed"));
        expectTruth(names);
    }
}

TEST_F(TransferCutTest, aFileOfMoreThanFourGibibytesArrives)
{
    constexpr std::int64_t bytes = std::int64_t{5} << 30U;
    std::filesystem::resize_file(folder.file("large"), bytes);
    programs.tar = tarOf("case $1 in -cf) shift; exec tar -cSf \"$@\";; esac; exec tar \"$@\"");
    EXPECT_EQ(carry({"large"}, sourceHere(), targetThere()), "done");
    EXPECT_EQ(std::filesystem::file_size(local.path("large")), static_cast<std::uintmax_t>(bytes));
    emptyTarget();
    EXPECT_EQ(carry({"large"}, sourceHere(), targetHere()), "done");
    EXPECT_EQ(std::filesystem::file_size(local.path("large")), static_cast<std::uintmax_t>(bytes));
}

TEST_F(TransferCutTest, eachOfMoreThanFourGibibytesPasses)
{
    constexpr std::int64_t bytes = std::int64_t{5} << 30U;
    std::filesystem::resize_file(folder.file("large"), bytes);
    auto const counting = "tar -xOf - | wc -c >" + local.path("count");
    programs.tar = tarOf(whenUnpacking(counting + "; exit"));
    programs.ssh = script("ssh", "for word; do :; done; case $word in *-xpf*) " + counting +
                                     "; exit;; esac; exec sh -c \"$word\"");
    for (auto const &[from, to] : streams()) {
        std::int64_t passed = 0;
        EXPECT_EQ(carry({"large"}, from, to, [&](TransferProgress const &progress) { passed = progress.bytes; }),
                  "done");
        EXPECT_EQ(contentOf(local.path("count")), std::to_string(bytes) + "\n");
        EXPECT_GE(passed, bytes + 512);
        EXPECT_LE(passed, bytes + 512 + 20 * 512) << "a header, and the rest of a record";
    }
}

} // namespace
} // namespace tw::test
