#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// The folders of a tar stream in which a further member may come.
///
/// Tar announces a folder before the members in it. Most programs then send all that is below it. The tar of the BSDs
/// sends all entries of a folder first and then goes into its folders, the last one first. So these are open: the
/// folders on the way to the last member, and in each of them the folders that were announced and not entered yet.
///
/// Memory: bounded by the length of a path and `mostAwaitedBytes`.
class OpenFolders {
public:
    /// For the folders that are not entered yet: some 800,000 of a usual name.
    static constexpr std::size_t mostAwaitedBytes = std::size_t{64} << 20U;

    /// Goes to the folder in which the next member is: "" is the target, and "a/b" a folder in a folder there.
    /// False if it is not open; then nothing may be asked any more.
    bool enter(std::string_view folder);

    /// A folder of this name was announced in the folder that was entered last.
    void add(std::string_view name);

    /// Something else of this name has come there.
    void remove(std::string_view name);

private:
    struct Level {
        std::size_t pathBytes = 0; ///< of `path`, up to the slash behind this folder
        std::size_t awaitedBytes = 0;
        std::set<std::string, std::less<>> awaited = {};
    };

    bool isOnTheWayTo(std::string_view folder) const;
    void leave();
    void forgetAwaited();

    std::string path; ///< of the folder that was entered last, with a slash behind each name
    std::vector<Level> levels = std::vector<Level>(1); ///< the target, and each folder of `path`
    std::size_t awaitedBytes = 0;                      ///< of all levels
};

} // namespace tw
