#include "TWCore/Model/Entry.h"

#include <set>

namespace tw::test {

namespace {

constexpr std::pair<char, EntryKind> table[] = {
    {'f', EntryKind::file},    {'d', EntryKind::directory}, {'l', EntryKind::symlink}, {'b', EntryKind::blockDev},
    {'c', EntryKind::charDev}, {'p', EntryKind::fifo},      {'s', EntryKind::socket},  {'?', EntryKind::unknown},
};

} // namespace

TEST(EntryKindTest, everyTypeLetterHasItsKind)
{
    for (auto const &[letter, kind] : table) {
        auto const raw = static_cast<std::uint8_t>(letter);
        EXPECT_EQ(entryKindFromRaw(raw), kind) << letter;
        EXPECT_EQ(entryKind(raw), kind) << letter;
        EXPECT_EQ(static_cast<std::uint8_t>(kind), raw) << letter;
    }
}

TEST(EntryKindTest, everyOtherByteIsNoRawValueAndReadsAsUnknown)
{
    std::set<int> letters;
    for (auto const &[letter, kind] : table)
        letters.insert(letter);
    for (int byte = 0; byte < 256; ++byte) {
        if (letters.contains(byte))
            continue;
        EXPECT_EQ(entryKindFromRaw(static_cast<std::uint8_t>(byte)), std::nullopt) << byte;
        EXPECT_EQ(entryKind(static_cast<std::uint8_t>(byte)), EntryKind::unknown) << byte;
    }
}

TEST(EntryTest, onlyADirectoryIsOne)
{
    for (auto const &[letter, kind] : table)
        EXPECT_EQ((Entry{.kind = kind}.isDirectory()), kind == EntryKind::directory) << letter;
}

TEST(EntryTest, equalityAndHashAreOverAllSixFields)
{
    Entry const base{.nameOffset = 1, .nameLength = 2, .size = 3, .mtime = 4, .mode = 5, .kind = EntryKind::file};
    std::vector<Entry> others(6, base);
    others[0].nameOffset = 9;
    others[1].nameLength = 9;
    others[2].size = 9;
    others[3].mtime = 9;
    others[4].mode = 9;
    others[5].kind = EntryKind::directory;

    auto const same = base;
    EXPECT_EQ(base, same);
    EXPECT_EQ(std::hash<Entry>()(base), std::hash<Entry>()(same));
    for (auto const &other : others) {
        EXPECT_NE(base, other);
        EXPECT_NE(std::hash<Entry>()(base), std::hash<Entry>()(other));
    }
}

} // namespace tw::test
