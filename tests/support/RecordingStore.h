#pragma once

#include "TWEngine/Browsing/PersistentListings.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tw::test {

/// A store in memory that counts its calls.
///
/// Threads: one.
class RecordingStore final : public PersistentListings {
public:
    using Key = std::pair<std::string, std::string>; ///< provider and path

    std::map<Key, DirectorySnapshot> rows;
    std::vector<Listings> saves;
    std::vector<Key> removals;
    int loads = 0;

    Task<std::optional<DirectorySnapshot>> load(std::string provider, std::string path) override
    {
        return loadRow(this, {std::move(provider), std::move(path)});
    }

    Task<void> save(std::string provider, Listings listings) override
    {
        return saveRows(this, std::move(provider), std::move(listings));
    }

    Task<void> remove(std::string provider, std::string path) override
    {
        return removeRow(this, {std::move(provider), std::move(path)});
    }

    Task<void> removeTree(std::string provider, std::string path) override
    {
        return removeRows(this, {std::move(provider), std::move(path)});
    }

private:
    static Task<void> removeRows(RecordingStore *self, Key top)
    {
        std::erase_if(self->rows, [&](auto const &row) {
            return row.first.first == top.first &&
                   (row.first.second == top.second || row.first.second.starts_with(top.second + '/'));
        });
        co_return;
    }

    static Task<std::optional<DirectorySnapshot>> loadRow(RecordingStore *self, Key key)
    {
        ++self->loads;
        auto const found = self->rows.find(key);
        co_return found == self->rows.end() ? std::nullopt : std::optional(found->second);
    }

    static Task<void> saveRows(RecordingStore *self, std::string provider, Listings listings)
    {
        for (auto const &[path, snapshot] : listings)
            self->rows.insert_or_assign({provider, path}, snapshot);
        self->saves.push_back(std::move(listings));
        co_return;
    }

    static Task<void> removeRow(RecordingStore *self, Key key)
    {
        self->rows.erase(key);
        self->removals.push_back(std::move(key));
        co_return;
    }
};

} // namespace tw::test
