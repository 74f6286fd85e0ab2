#include "TWEngine/Platform/HomeFolder.h"

#include <cstdlib>
#include <future>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace tw::HomeFolder {

namespace {

bool isSet()
{
    auto const *const home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): set before there are other readers
    return home && *home == '/';
}

} // namespace

std::string path()
{
    return isSet() ? std::getenv("HOME") : "/"; // NOLINT(concurrency-mt-unsafe): as above
}

std::string in(Environment const &environment)
{
    auto const home = environment.find("HOME");
    return home != environment.end() && home->second.starts_with('/') ? home->second : "/";
}

std::string ofAccount()
{
    constexpr std::size_t ampleBytes = 16'384; // a record is one line of text
    std::vector<char> texts(ampleBytes);
    passwd record{};
    passwd *found = nullptr;
    if (getpwuid_r(getuid(), &record, texts.data(), texts.size(), &found) != 0 || !found || !found->pw_dir)
        return {};
    return found->pw_dir;
}

void ensureInEnvironment(WorkerPool const &workers, std::chrono::milliseconds limit)
{
    if (isSet())
        return;
    std::promise<std::string> answer;
    auto home = answer.get_future();
    workers.executor(WorkPriority::interactive)->post([answer = std::move(answer)]() mutable {
        answer.set_value(ofAccount());
    });
    auto const known = home.wait_for(limit) == std::future_status::ready ? home.get() : "";
    // NOLINTNEXTLINE(concurrency-mt-unsafe): before there are other readers
    ::setenv("HOME", known.starts_with('/') ? known.c_str() : "/", 1);
}

} // namespace tw::HomeFolder
