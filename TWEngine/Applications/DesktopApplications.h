#pragma once

#include "TWEngine/Applications/Applications.h"

#include <memory>

namespace tw {

class EngineRuntime;

/// The applications of the desktop, by its entries and its associations.
///
/// GIO says what opens what. Its own way to start programs is not used: it waits for the session bus without a limit,
/// and ends this process with the bus.
///
/// Lifetime: the engine outlives it. A started program outlives this process.
class DesktopApplications final : public Applications {
public:
    explicit DesktopApplications(EngineRuntime &engine) : runtime(engine) {}

    Task<FileNature> natureOf(std::string path, std::uint16_t modeThere = 0) override;
    Task<FileNature> natureOfBeginning(std::string name, std::string beginning, std::uint16_t mode) override;
    Task<std::vector<Application>> forType(std::string contentType) override;
    Task<std::vector<Application>> forName(std::string name) override;
    Task<std::vector<Application>> all() override;
    Task<Application> open(Opening opening) override;
    Task<void> runInTerminal(std::string name, std::vector<std::string> command, std::string activationToken) override;
    Task<void> run(std::string path, FileNature::Kind kind, std::string activationToken) override;

private:
    EngineRuntime &runtime;
};

} // namespace tw
