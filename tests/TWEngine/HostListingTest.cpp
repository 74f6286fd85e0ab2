#include "TWEngine/SSH/HostListing.h"

#include "TWCore/Model/FileOperationError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Key;
using ::testing::SizeIs;
using namespace std::string_literals;

HostListing::Question const shallow{.host = "box", .path = "/srv", .depth = 1};
HostListing::Question const deep{.host = "box", .path = "/srv", .depth = 3};

auto const aFile = "f\t5\t1700000000\t644\tname\0"s;
auto const anUnexaminedFile = "f\t0\t0\t0\tname\0"s;
auto const anEmptyFolder = "d\t4096\t1700000000\t755\tempty\0"s;
auto const aFolderWithAFile = "d\t4096\t1700000000\t755\tsub\0f\t5\t1700000000\t644\tsub/name\0"s;
auto const aFolderWithoutSizes = "d\t4096\t1700000000\t644\tsub\0f\t0\t0\t0\tsub/name\0"s;

Listings read(ListingResponse response, HostListing::Question const &asked = shallow)
{
    return HostListing::read(std::move(response), asked, {});
}

std::string failureOf(ListingResponse response, HostListing::Question const &asked = shallow)
{
    try {
        read(std::move(response), asked);
    } catch (FileOperationError::Failed const &failure) {
        return failure.operation + '|' + failure.path + '|' + failure.detail;
    }
    return "it was read";
}

TEST(HostListingTest, anEmptyFolderIsEmpty)
{
    EXPECT_THAT(read({}).at("/srv").entries(), SizeIs(0));
}

TEST(HostListingTest, aRefusalCountsIfNothingCame)
{
    EXPECT_EQ(failureOf({.bytes = {}, .refusal = "permission denied"}), "list|/srv|permission denied");
    EXPECT_EQ(failureOf({.bytes = {}, .refusal = "no such folder"}, deep), "list|/srv|no such folder");
}

TEST(HostListingTest, aRefusalCountsIfNothingCouldBeExamined)
{
    EXPECT_EQ(failureOf({.bytes = anUnexaminedFile, .refusal = "permission denied"}), "list|/srv|permission denied");
    EXPECT_THAT(read({.bytes = anUnexaminedFile}).at("/srv").entries(), SizeIs(1)) << "the folder can be listed";
}

TEST(HostListingTest, whatCameCountsMoreThanARefusalBehindIt)
{
    EXPECT_THAT(read({.bytes = aFile, .refusal = "no such folder"}).at("/srv").entries(), SizeIs(1));
}

TEST(HostListingTest, aFolderBelowTheRootThatCameEmptyIsUnknown)
{
    EXPECT_THAT(read({.bytes = anEmptyFolder + aFolderWithAFile}, deep), ElementsAre(Key("/srv"), Key("/srv/sub")));
    EXPECT_THAT(read({.bytes = aFolderWithoutSizes}, deep), ElementsAre(Key("/srv")));
}

TEST(HostListingTest, aWindowsHostSaysItselfWhatItCannotRead)
{
    auto asked = deep;
    asked.dialect = ShellDialect::powershell;
    EXPECT_THAT(read({.bytes = anEmptyFolder}, asked), ElementsAre(Key("/srv"), Key("/srv/empty")));
    EXPECT_EQ(failureOf({.bytes = {}, .status = 1}, asked), "list|/srv|box could not read that folder");
    EXPECT_THAT(read({.bytes = aFile, .status = 1}, asked).at("/srv").entries(), SizeIs(1));
}

} // namespace
} // namespace tw::test
