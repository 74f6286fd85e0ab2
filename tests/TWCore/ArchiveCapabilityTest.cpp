#include "TWCore/Archives/ArchiveCapability.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using enum ArchiveFormat;
using testing::ElementsAre;

TEST(ArchiveCapabilityTest, theFieldsOfAGreetingAreRead)
{
    EXPECT_EQ(ArchiveCapability::parse("bsdtar,yes,7zz"), (ArchiveCapability{true, true, "7zz"}));
    EXPECT_EQ(ArchiveCapability::parse("gnutar,no,no"), ArchiveCapability());
    EXPECT_EQ(ArchiveCapability::parse("bsdtar,no,7za"), (ArchiveCapability{true, false, "7za"}));
}

TEST(ArchiveCapabilityTest, fieldsThatAreMissingAreToolsThatAreMissing)
{
    EXPECT_EQ(ArchiveCapability::parse(""), ArchiveCapability());
    EXPECT_EQ(ArchiveCapability::parse("bsdtar"), (ArchiveCapability{true, false, {}}));
    EXPECT_EQ(ArchiveCapability::parse("bsdtar,yes"), (ArchiveCapability{true, true, {}}));
    EXPECT_EQ(ArchiveCapability::parse(",,,"), ArchiveCapability());
}

TEST(ArchiveCapabilityTest, emptyFieldsAreLeftOutAndFieldsBehindTheThirdAreIgnored)
{
    EXPECT_EQ(ArchiveCapability::parse(",bsdtar,,yes,7z,more,"), (ArchiveCapability{true, true, "7z"}));
}

TEST(ArchiveCapabilityTest, wordsCountOnlyAsTheyStand)
{
    EXPECT_EQ(ArchiveCapability::parse("BSDTAR,YES,no"), ArchiveCapability());
}

TEST(ArchiveCapabilityTest, gnuTarAloneOffersTarOnly)
{
    EXPECT_THAT(ArchiveCapability::parse("gnutar,no,no").supportedFormats(), ElementsAre(tarGz));
}

TEST(ArchiveCapabilityTest, theZipToolsDoNotOfferZip)
{
    auto const capability = ArchiveCapability::parse("gnutar,yes,no");
    EXPECT_FALSE(capability.canHandleZip());
    EXPECT_THAT(capability.supportedFormats(), ElementsAre(tarGz));
}

TEST(ArchiveCapabilityTest, sevenZipOffersItsOwnFormatAndZip)
{
    EXPECT_THAT(ArchiveCapability::parse("gnutar,no,7z").supportedFormats(), ElementsAre(zip, sevenZip, tarGz));
}

TEST(ArchiveCapabilityTest, bsdTarOffersZip)
{
    EXPECT_THAT(ArchiveCapability::parse("bsdtar,no,no").supportedFormats(), ElementsAre(zip, tarGz));
}

} // namespace
} // namespace tw::test
