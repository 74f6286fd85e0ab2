// Trees that take long to make.

#include "TWEngine/Browsing/LocalProvider.h"
#include "tests/support/TransferFaultsTest.h"

namespace tw::test {
namespace {

class LargeTreesTest : public TransferFaultsTest {
protected:
    LargeTreesTest() { loop.setHangLimit(std::chrono::minutes(15)); }

    void makeFiles(std::string const &name, int count) const
    {
        auto const path = folder.folder(name);
        for (int number = 0; number < count; ++number)
            std::ofstream(path + "/" + std::to_string(number));
    }

    Survey::Part surveyOf(std::string const &folderPath, std::string const &name)
    {
        return loop.run(provider.survey(folderPath, {name}, Survey::Detail::nodes)).parts.at(name);
    }

    LocalProvider provider{engine};
};

TEST_F(LargeTreesTest, aFolderOfAMillionEntriesIsCopiedComparedAndDeleted)
{
    constexpr int count = 1'000'000;
    makeFiles("many", count);
    auto const source = surveyOf(folder.path(), "many");
    EXPECT_EQ(source.files, count);
    for (auto const &[from, to] : {std::pair(sourceHere(), targetHere()), {sourceThere(), targetThere()}}) {
        EXPECT_EQ(carry({"many"}, from, to), "done");
        EXPECT_EQ(transfer->summary().files, count);
        auto const copy = surveyOf(local.path(), "many");
        EXPECT_TRUE(copy.hasShapeOf(source) && copy.holds(source));
        loop.run(provider.removePermanently({local.path("many")}, LockedFolders::stay));
        EXPECT_FALSE(std::filesystem::exists(local.path("many")));
    }
}

TEST_F(LargeTreesTest, aHundredThousandNamesGoFromHostToHost)
{
    makeFiles(".", 100'000);
    Names names;
    for (auto const &name : namesIn(folder.path()))
        names.push_back(name);
    EXPECT_EQ(carry(names, sourceThere(), targetThere()), "done");
    EXPECT_EQ(transfer->summary().files, 100'000);
    EXPECT_EQ(namesIn(local.path()).size(), names.size());
}

} // namespace
} // namespace tw::test
