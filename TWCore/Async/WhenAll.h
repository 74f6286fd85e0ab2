#pragma once

#include "TWCore/Async/Task.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace tw {

/// Runs all of `tasks`, at most `atOnce` at a time, in their order. Ends when every task that began has ended.
///
/// Errors: the first failure stops the tasks that run, keeps the others from beginning, and is thrown.
/// Cancellation: stopping the caller does the same and arrives as Cancelled.
Task<void> whenAll(std::vector<Task<void>> tasks, std::size_t atOnce);

namespace detail {

template <class T>
Task<void> keepResult(std::shared_ptr<std::vector<std::optional<T>>> results, std::size_t place, Task<T> task)
{
    auto value = co_await std::move(task);
    (*results)[place].emplace(std::move(value));
}

} // namespace detail

/// The same for tasks with results, which come in the order of the tasks.
template <class T>
Task<std::vector<T>> whenAll(std::vector<Task<T>> tasks, std::size_t atOnce)
{
    auto const results = std::make_shared<std::vector<std::optional<T>>>(tasks.size());
    std::vector<Task<void>> keeping;
    keeping.reserve(tasks.size());
    for (std::size_t place = 0; place < tasks.size(); ++place)
        keeping.push_back(detail::keepResult(results, place, std::move(tasks[place])));
    co_await whenAll(std::move(keeping), atOnce);
    std::vector<T> values;
    values.reserve(results->size());
    for (auto &result : *results)
        values.push_back(*std::move(result));
    co_return values;
}

} // namespace tw
