#include "Tarnwick/Table/ExtensionOrder.h"

#include "tests/support/Listings.h"

#include <unicode/locid.h>

#include <numeric>

namespace tw::test {

namespace {

using Places = std::vector<std::uint32_t>;

Places placesOf(std::vector<ListedEntry> const &listed)
{
    auto const snapshot = listing("/", listed);
    std::vector<std::uint32_t> rows(snapshot.count());
    std::iota(rows.begin(), rows.end(), 0U);
    return extensionPlaces(rows, snapshot);
}

/// The user's locale for the length of a test.
class UserLocale {
public:
    explicit UserLocale(char const *name) { set(icu::Locale(name)); }

    UserLocale(UserLocale const &) = delete;
    UserLocale &operator=(UserLocale const &) = delete;

    ~UserLocale() { set(before); }

private:
    static void set(icu::Locale const &locale)
    {
        auto status = U_ZERO_ERROR;
        icu::Locale::setDefault(locale, status);
        EXPECT_TRUE(U_SUCCESS(status));
    }

    icu::Locale before = icu::Locale::getDefault();
};

} // namespace

TEST(ExtensionOrderTest, equalExtensionsShareAPlace)
{
    EXPECT_EQ(placesOf({file("a.txt"), file("b.c"), file("c.txt"), file("d")}), (Places{2, 1, 2, 0}));
}

TEST(ExtensionOrderTest, noExtensionIsFirstAndAFolderHasNone)
{
    EXPECT_EQ(placesOf({file("a.a"), directory("b.z"), file(".profile"), file("plain")}), (Places{1, 0, 0, 0}));
}

TEST(ExtensionOrderTest, caseDecidesNothingButKeepsTextsApart)
{
    EXPECT_EQ(placesOf({file("1.txt"), file("2.TXT"), file("3.zip"), file("4.Avi"), file("5.txt")}),
              (Places{1, 2, 3, 0, 1}));
    EXPECT_EQ(placesOf({file("1.TXT"), file("2.txt")}), (Places{0, 1})) << "in the order in which they occur";
}

TEST(ExtensionOrderTest, caseDecidesNothingInTheCLocaleEither)
{
    UserLocale const locale("en_US_POSIX");

    EXPECT_EQ(placesOf({file("1.b"), file("2.A"), file("3.C"), file("4.a")}), (Places{2, 0, 3, 1}));
}

TEST(ExtensionOrderTest, theUsersLocaleDecides)
{
    std::vector<ListedEntry> const rows{file("1.\xC3\xA4"), file("2.z")}; // "a" with two dots

    {
        UserLocale const german("de_DE");
        EXPECT_EQ(placesOf(rows), (Places{0, 1}));
    }
    {
        UserLocale const swedish("sv_SE");
        EXPECT_EQ(placesOf(rows), (Places{1, 0})) << "a letter behind z there";
    }
}

TEST(ExtensionOrderTest, extensionsThatLookAlikeAreOneText)
{
    EXPECT_EQ(placesOf({file("1.x\xFE"), file("2.x\xFF"), file("3.x\xEF\xBF\xBD")}), (Places{0, 0, 0}));
}

TEST(ExtensionOrderTest, noRowsHaveNoPlaces)
{
    EXPECT_TRUE(placesOf({}).empty());
}

} // namespace tw::test
