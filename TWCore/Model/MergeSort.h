#pragma once

#include <algorithm>
#include <span>
#include <vector>

namespace tw {

namespace mergeSortSteps {

/// Insertion sorts runs of this length faster than merging does.
inline constexpr std::size_t runLength = 16;

template <class T, class Less>
void sortRun(std::span<T> run, Less const &less)
{
    for (std::size_t next = 1; next < run.size(); ++next) {
        auto const item = run[next];
        auto place = next;
        for (; place > 0 && less(item, run[place - 1]); --place)
            run[place] = run[place - 1];
        run[place] = item;
    }
}

template <class T, class Less>
bool isInOrder(std::span<T const> items, Less const &less)
{
    for (std::size_t next = 1; next < items.size(); ++next) {
        if (less(items[next], items[next - 1]))
            return false;
    }
    return true;
}

template <class T, class Less>
void merge(std::span<T const> left, std::span<T const> right, T *out, Less const &less)
{
    auto const *a = left.data();
    auto const *const endOfA = a + left.size();
    auto const *b = right.data();
    auto const *const endOfB = b + right.size();
    // Two halves in order cost one comparison: most folders are in order except for a few names.
    if (a != endOfA && b != endOfB && less(*b, *(endOfA - 1))) {
        while (a != endOfA && b != endOfB) {
            // Without a branch on the result, which no processor could predict.
            bool const takeB = less(*b, *a);
            *out++ = *(takeB ? b : a);
            b += takeB;
            a += !takeB;
        }
    }
    out = std::copy(a, endOfA, out);
    std::copy(b, endOfB, out);
}

} // namespace mergeSortSteps

/// Sorts, and keeps the order of items that `less` holds equal.
///
/// `less` need not be a strict weak ordering: each item stays in the list exactly once, and nothing outside the list is
/// touched. The order of names is not transitive for some bytes; the sorts of the standard library would have undefined
/// behaviour.
///
/// `scratch` is as long as `items`; its content afterwards has no meaning.
template <class T, class Less>
void mergeSort(std::span<T> items, std::span<T> scratch, Less const &less)
{
    using namespace mergeSortSteps;
    // Many folders are listed in order already, and a pane sorts again with each change.
    if (isInOrder(std::span<T const>(items), less))
        return;
    auto const count = items.size();
    for (std::size_t begin = 0; begin < count; begin += runLength)
        sortRun(items.subspan(begin, std::min(runLength, count - begin)), less);

    std::span<T> from = items;
    std::span<T> to = scratch;
    for (auto width = runLength; width < count; width *= 2) {
        for (std::size_t begin = 0; begin < count; begin += 2 * width) {
            auto const middle = std::min(begin + width, count);
            auto const end = std::min(middle + width, count);
            std::span<T const> const all(from);
            merge(all.subspan(begin, middle - begin), all.subspan(middle, end - middle), to.data() + begin, less);
        }
        std::swap(from, to);
    }
    if (from.data() != items.data())
        std::ranges::copy(from, items.begin());
}

/// The same with its own scratch.
template <class T, class Less>
void mergeSort(std::vector<T> &items, Less const &less)
{
    std::vector<T> scratch(items.size() > mergeSortSteps::runLength ? items.size() : 0);
    mergeSort(std::span(items), std::span(scratch), less);
}

} // namespace tw
