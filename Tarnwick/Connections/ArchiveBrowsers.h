#pragma once

#include "Tarnwick/Connections/OpenArchive.h"

#include <string>

namespace tw {

class EngineRuntime;

/// Opens archives that lie on this machine or on a host, each with a Browser of its own, which keeps nothing for the
/// next start. `sshProgram` reads members of archives on hosts. The engine outlives what is opened.
ArchiveOpener archiveOpener(EngineRuntime &engine, std::string sshProgram);

} // namespace tw
