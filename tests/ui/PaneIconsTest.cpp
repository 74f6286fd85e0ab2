#include "Tarnwick/Toolkit/Table/PaneIcons.h"

#include "Tarnwick/Table/IconKind.h"

#include <QFile>
#include <QPainter>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::string_literals;

constexpr auto lastKind = IconKind::executable;

TEST(PaneIconsTest, eachIconIsMadeOnceForItsKey)
{
    PaneIcons icons;
    auto const first = icons.icon("txt").cacheKey();
    EXPECT_EQ(icons.icon("txt").cacheKey(), first);
    EXPECT_EQ(icons.cachedCount(), 1U);
    icons.icon("\0dir"s);
    EXPECT_EQ(icons.cachedCount(), 2U);
    icons.clear();
    EXPECT_EQ(icons.cachedCount(), 0U);
}

TEST(PaneIconsTest, anyNumberOfExtensionsTakesABoundedCache)
{
    PaneIcons icons;
    for (int number = 0; number < 5000; ++number)
        icons.icon("e" + std::to_string(number));
    EXPECT_LE(icons.cachedCount(), 2000U);
}

TEST(PaneIconsTest, everyKindHasAPictureOfItsOwnThatIsPainted)
{
    PaneIcons const loaded; // brings the resource along
    for (int kind = 0; kind <= static_cast<int>(lastKind); ++kind) {
        auto const name = iconName(static_cast<IconKind>(kind));
        auto const file = QStringLiteral(":/icons/%1.svg").arg(QString::fromStdString(std::string(name)));
        ASSERT_TRUE(QFile::exists(file)) << name;
        for (auto const edge : {16, 32}) {
            auto const image = QIcon(file).pixmap(edge).toImage();
            ASSERT_EQ(image.width(), edge) << name;
            int painted = 0;
            for (int y = 0; y < edge; ++y) {
                for (int x = 0; x < edge; ++x)
                    painted += image.pixelColor(x, y).alpha() > 128 ? 1 : 0;
            }
            EXPECT_GT(painted, edge) << name;
        }
    }
}

TEST(PaneIconsTest, noIconIsEmpty)
{
    PaneIcons icons;
    for (auto const &key : {"\0parent"s, "\0dir"s, "\0link"s, "\0special"s, "\0file"s, "\0executable"s, "png"s,
                            "no such extension"s, "\xff\xfe"s})
        EXPECT_FALSE(icons.icon(key).pixmap(16).isNull()) << key;
}

} // namespace
} // namespace tw::test
