#include "TWCore/Model/MergeSort.h"

#include <random>

namespace tw::test {

namespace {

struct Item {
    int key;
    int place; ///< before the sort

    friend bool operator==(Item const &, Item const &) = default;
};

std::vector<Item> randomItems(std::size_t count, int keys, std::mt19937 &random)
{
    std::vector<Item> items;
    std::uniform_int_distribution<int> key(0, keys - 1);
    for (std::size_t i = 0; i < count; ++i)
        items.push_back({key(random), static_cast<int>(i)});
    return items;
}

bool byKey(Item const &a, Item const &b)
{
    return a.key < b.key;
}

bool byKeyThenPlace(Item const &a, Item const &b)
{
    return std::pair(a.key, a.place) < std::pair(b.key, b.place);
}

std::vector<int> placesInOrder(std::vector<Item> const &items)
{
    std::vector<int> places;
    for (auto const &item : items)
        places.push_back(item.place);
    std::ranges::sort(places);
    return places;
}

} // namespace

TEST(MergeSortTest, sortsAndKeepsTheOrderOfEquals)
{
    std::mt19937 random(1);
    for (std::size_t count : {0U, 1U, 2U, 15U, 16U, 17U, 31U, 32U, 33U, 47U, 48U, 49U, 100U, 1000U, 4097U}) {
        for (int keys : {1, 3, 50, 100'000}) {
            auto items = randomItems(count, keys, random);
            auto expected = items;
            std::ranges::sort(expected, byKeyThenPlace);
            mergeSort(items, byKey);
            ASSERT_EQ(items, expected) << count << " items with " << keys << " keys";
        }
    }
}

TEST(MergeSortTest, whatIsInOrderCostsOneComparisonAPair)
{
    std::vector<int> items(1024);
    for (std::size_t i = 0; i < items.size(); ++i)
        items[i] = static_cast<int>(i);
    int comparisons = 0;
    mergeSort(items, [&comparisons](int a, int b) { return ++comparisons, a < b; });

    EXPECT_TRUE(std::ranges::is_sorted(items));
    EXPECT_EQ(comparisons, 1023);
}

TEST(MergeSortTest, survivesARelationThatIsNoOrder)
{
    std::mt19937 random(2);
    auto const original = randomItems(3000, 1000, random);
    auto const expectPermutation = [&](auto less) {
        auto items = original;
        mergeSort(items, less);
        EXPECT_EQ(placesInOrder(items), placesInOrder(original));
    };

    expectPermutation([](Item const &, Item const &) { return true; });
    expectPermutation([](Item const &, Item const &) { return false; });
    expectPermutation([](Item const &a, Item const &b) { return a.key >= b.key; });
    expectPermutation([&random](Item const &, Item const &) { return (random() & 1) != 0; });
    expectPermutation([](Item const &a, Item const &b) { return (a.key - b.key + 3000) % 3 == 1; });
}

} // namespace tw::test
