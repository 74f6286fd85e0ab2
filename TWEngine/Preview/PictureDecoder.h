#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Preview/PictureAnswer.h"
#include "TWEngine/Runtime/FileDescriptor.h"

#include <expected>
#include <string>

namespace tw {

class EngineRuntime;

/// Decodes pictures, each in a process of its own: a file may come from anywhere, and what reads it may crash, hang or
/// be taken over. The process has the file as its input and nothing else; Tarnwick/App/Decoder says what it may do.
namespace PictureDecoder {

using Result = std::expected<Picture, PictureFailure>;

/// Decodes `file`, which must be a regular one, from its beginning. `format` is a name that Qt knows, or "pdf" for the
/// first page of a document. A picture that fits into `room` keeps its size,
/// unless it moves and has too many frames for that.
///
/// A process that takes too long ends itself. Cancellation: a stop ends it at once.
Task<Result> decode(EngineRuntime &engine, FileDescriptor file, std::string format, PictureBounds room);

} // namespace PictureDecoder

} // namespace tw
