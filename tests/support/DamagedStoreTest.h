#pragma once

#include "tests/support/ListingStoreTest.h"

#include <filesystem>
#include <fstream>
#include <random>

namespace tw::test {

/// A store of some listings whose file is damaged while no process has it open.
class DamagedStoreTest : public ListingStoreTest {
protected:
    DamagedStoreTest()
    {
        open();
        save("/short", {file("a", 1, 1), directory("b"), symlink("c")});
        save("/empty", {});
        std::vector<ListedEntry> many;
        for (int index = 0; index < 300; ++index)
            many.push_back(file("a file of a usual length " + std::to_string(index) + ".txt", index, index));
        save("/many", many);
        close();
        pristine = contentOf(databasePath());
    }

    /// Changes one byte of the file as it was first, opens the store and loads every listing. Each has to be one that a
    /// pane can show, or not to be there. Answers how many are there.
    int listingsAfter(std::size_t offset, unsigned char change)
    {
        SCOPED_TRACE("byte " + std::to_string(offset) + ", change " + std::to_string(change));
        auto damaged = pristine;
        damaged[offset] = static_cast<char>(damaged[offset] ^ change);
        for (auto const *const journal : {"-wal", "-shm"})
            std::filesystem::remove(databasePath() + journal);
        std::ofstream(databasePath(), std::ios::binary) << damaged;
        if (!open())
            return 0;
        int found = 0;
        for (auto const *const path : {"/short", "/empty", "/many"}) {
            auto const listing = load(path);
            if (!listing)
                continue;
            ++found;
            expectShowable(*listing);
        }
        close();
        return found;
    }

    /// That many changes of one bit each, in places of which the file has one for each seed.
    int listingsAfterRandomChanges(unsigned seed, int count)
    {
        std::mt19937 random(seed);
        std::uniform_int_distribution<std::size_t> offsets(0, pristine.size() - 1);
        std::uniform_int_distribution<int> bits(0, 7);
        int found = 0;
        for (int change = 0; change < count; ++change) {
            auto const offset = offsets(random);
            found += listingsAfter(offset, static_cast<unsigned char>(1 << bits(random)));
        }
        return found;
    }

    /// Where the blob of the short listing begins.
    std::size_t shortBlob() const
    {
        // Its header: the magic, the version, whole, three entries of one byte each.
        std::string const header("TWS1\x01\0\0\0\x03\0\0\0\x03\0\0\0", 16);
        return pristine.find(header);
    }

    std::string pristine;

private:
    static void expectShowable(DirectorySnapshot const &listing)
    {
        for (auto const &name : names(listing)) {
            EXPECT_FALSE(name.empty() || name == "." || name == "..");
            EXPECT_EQ(name.find_first_of(std::string_view("/\0", 2)), std::string::npos);
        }
    }
};

} // namespace tw::test
