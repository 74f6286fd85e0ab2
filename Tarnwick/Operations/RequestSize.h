#pragma once

#include <chrono>
#include <cstddef>

namespace tw {

/// How many items the next request of a long piece of work has: as many as take about as long as a person waits for the
/// next number of a progress, so that a distant host costs few round trips.
class RequestSize {
public:
    static constexpr std::size_t first = 100;
    static constexpr std::size_t most = 10'000;
    static constexpr std::chrono::milliseconds aim{500};

    /// A guess of how many the first request has.
    explicit RequestSize(std::size_t guess = first) noexcept : size(guess) {}

    std::size_t items() const noexcept { return size; }

    /// The last request, of `items()`, has taken so long.
    void took(std::chrono::nanoseconds time) noexcept;

private:
    std::size_t size;
};

} // namespace tw
