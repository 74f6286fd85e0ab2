#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Browsing/RecentMap.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/SSH/HostSettings.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tw {

class EngineRuntime;

/// Asks ssh what the user's configuration says of a host.
///
/// An answer is kept until one of the files that ssh has read for it changes, or a folder of one of them. What a
/// `Match exec` would say at another time is not noticed.
///
/// Threads: serialised on its own strand; every operation may be called from anywhere.
/// Lifetime: shared; the engine outlives it.
/// Errors: none. What cannot be found out is not set.
class HostConfiguration : public std::enable_shared_from_this<HostConfiguration> {
public:
    /// For everything that is asked of one host: a `Match exec` can hang, and so can the disk with the files.
    static constexpr std::chrono::seconds usualLimit{5};

    HostConfiguration(EngineRuntime &runtime, std::string sshProgram, std::chrono::nanoseconds limit = usualLimit);

    Task<HostSettings> settingsOf(std::string host);

    /// True if a client may share the connection at `controlPath`: its master answers in time.
    Task<bool> isMasterOpen(std::string host, std::string controlPath) const;

private:
    using Self = std::shared_ptr<HostConfiguration>;

    /// A file or folder as it was; all zero if there is none.
    struct Stamp {
        std::string path;
        std::array<std::int64_t, 5> state = {};

        friend bool operator==(Stamp const &, Stamp const &) = default;
    };

    using Stamps = std::vector<Stamp>;

    struct Answer {
        HostSettings settings;
        std::optional<Stamps> readFrom; ///< nothing: not known, so the answer is not kept
    };

    static Task<HostSettings> settingsHere(Self self, std::string host);
    static Task<HostSettings> keptOrNew(Self self, std::string host);
    static Task<Answer> ask(EngineRuntime *engine, std::string sshProgram, std::string host);
    static Task<Stamps> stampsOf(EngineRuntime *engine, std::vector<std::string> paths);

    // Constant after construction.
    EngineRuntime &engine;
    std::string const sshProgram;
    std::chrono::nanoseconds const limit;
    Strand const strand;

    // On the strand.
    RecentMap<Answer> answers;
};

} // namespace tw
