#pragma once

#include "TWEngine/Platform/Scratch.h"
#include "Tarnwick/Clipboard/ScratchFile.h"

namespace tw {

class EngineRuntime;

/// Files of what is pasted as one, on their way to where they are pasted.
namespace PastedFile {

/// `engine` outlives the file. Throws FileOperationError::Failed.
Task<ScratchFile> make(EngineRuntime *engine, Scratch::Place place, std::string name, std::string bytes);

} // namespace PastedFile

} // namespace tw
