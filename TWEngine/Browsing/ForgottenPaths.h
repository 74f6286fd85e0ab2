#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace tw {

/// Which paths were forgotten while fetches were in flight: an answer to an earlier question must not bring back what
/// was forgotten after it was asked.
///
/// Fetches are numbered in the order in which they begin.
///
/// Threads: none of its own; used by one owner at a time.
class ForgottenPaths {
public:
    enum class Reach {
        path, ///< the path alone
        tree, ///< the path and all below it
    };

    /// The most paths that are told apart. Beyond it, everything counts as forgotten, which costs a second fetch of
    /// what is in flight then.
    static constexpr std::size_t capacity = 1024;

    /// Notes that `path` was forgotten when `lastBegun` was the last fetch that had begun.
    void add(std::string const &path, Reach reach, std::uint64_t lastBegun);

    /// Whether `path` was forgotten after that fetch began.
    bool isStale(std::string const &path, std::uint64_t fetch) const;

    /// For when nothing is in flight: later fetches begin after everything that was forgotten so far.
    void clear();

    std::size_t size() const noexcept { return paths.size() + trees.size(); }

    /// How often something was forgotten. For a reader that has no fetch number: if the count changed while it read,
    /// what it read may be stale.
    std::uint64_t changes() const noexcept { return additions; }

private:
    using LastBegun = std::unordered_map<std::string, std::uint64_t>;

    LastBegun paths;
    LastBegun trees;
    std::uint64_t everythingBefore = 0; ///< fetches up to this number are stale, whatever they bring
    std::uint64_t additions = 0;
};

/// The folder that holds a normalised path; of "/", itself.
std::string parentOf(std::string const &path);

} // namespace tw
