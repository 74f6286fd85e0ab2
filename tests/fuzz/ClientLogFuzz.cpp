// ClientLog and HostFailure over any standard error in any pieces.
//
// The first byte of an input says how the rest is cut.

#include "TWCore/Check.h"
#include "TWEngine/SSH/ClientLog.h"
#include "TWEngine/SSH/HostFailure.h"

#include <algorithm>
#include <cstdint>
#include <random>

namespace tw {
namespace {

struct Heard {
    ClientReport report;
    std::vector<ClientStage> stages;
};

Heard hear(std::string_view bytes, std::uint32_t seed)
{
    std::mt19937 random(seed);
    Heard heard;
    ClientLog log([&](ClientStage stage) { heard.stages.push_back(stage); });
    while (!bytes.empty()) {
        auto const size = seed == 0 ? bytes.size() : std::min<std::size_t>(1 + random() % (1 + seed), bytes.size());
        log.hear(bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
    heard.report = log.report();
    return heard;
}

void checkLog(std::string_view bytes, std::uint32_t seed)
{
    auto const whole = hear(bytes, 0);
    auto const inPieces = hear(bytes, 1 + seed);
    check(whole.stages == inPieces.stages, "a stage depends on the pieces");
    check(whole.report == inPieces.report, "the report depends on the pieces");
    check(std::ranges::is_sorted(whole.stages) && whole.stages.size() <= 2, "a stage is reported twice, or taken back");
    check(whole.report.words.size() <= ClientLog::maxWordBytes, "the words have no bound");
    check(whole.report.offeredKeys.size() <= ClientLog::maxListed, "the keys have no bound");
    check(whole.report.offeredMethods.size() <= ClientLog::maxListed, "the ways to log in have no bound");
}

void checkFailure(std::string_view bytes)
{
    auto report = hear(bytes, 0).report;
    report.printed = bytes.substr(0, HostFailure::maxSaysBytes);
    auto const failure = HostFailure::of(RemoteShellError::ConnectFailed("web", "", std::move(report)));
    check(failure.hostSays.size() <= HostFailure::maxSaysBytes, "the words of the host have no bound");
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size > 0) {
        std::string_view const bytes(reinterpret_cast<char const *>(data) + 1, size - 1);
        tw::checkLog(bytes, data[0]);
        tw::checkFailure(bytes);
    }
    return 0;
}
