#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// What there is below some names of a folder, to be compared with another time or another place.
///
/// What is below a name is summed up in digests that do not depend on the order, so that a tree of a million files can
/// be compared too.
struct Survey {
    enum class Detail {
        sums,  ///< constant in size for each name
        nodes, ///< also the digest of each entry, to find one tree within another
        files, ///< also the digest of each file with its time, to count those of one tree in another
    };

    struct Part {
        std::int64_t files = 0; ///< everything that is not a folder
        std::int64_t folders = 0;
        std::int64_t bytes = 0;  ///< of regular files
        std::uint64_t shape = 0; ///< of relative paths, kinds, sizes of regular files and targets of links
        std::uint64_t times = 0; ///< of relative paths and modification times
        /// With Detail::nodes what `shape` is the sum of, in no order; empty if there are more than `mostNodes`.
        /// With Detail::files those of everything but folders, with whole seconds of their time.
        std::vector<std::uint64_t> nodes = {};

        /// `shape` stands for the nodes, whose order has no meaning.
        friend bool operator==(Part const &one, Part const &other)
        {
            return one.hasShapeOf(other) && one.times == other.times;
        }

        bool hasShapeOf(Part const &other) const
        {
            return files == other.files && folders == other.folders && bytes == other.bytes && shape == other.shape;
        }

        /// True if every entry of `other` is here too, under the same path and with the same shape. False if either
        /// side does not know its nodes.
        bool holds(Part const &other) const;

        /// How many files of `other` are here too. Both with Detail::files; nothing if either side does not know them.
        std::optional<std::int64_t> countOf(Part const &other) const;
    };

    /// Eight bytes each.
    static constexpr std::size_t mostNodes = 4'000'000;

    std::map<std::string, Part> parts = {}; ///< by name; a name that does not exist is left out

    friend bool operator==(Survey const &, Survey const &) = default;
};

} // namespace tw
