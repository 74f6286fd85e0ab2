#pragma once

#include "TWEngine/Preview/PictureAnswer.h"
#include "TWEngine/Viewing/ViewedFile.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace tw {

class EngineRuntime;

/// A file as a picture: read whole, here or on a host, and decoded in a process of its own.
class PictureReading {
public:
    /// A larger file is not shown as a picture.
    static constexpr std::int64_t mostBytes = 0x4000000;

    /// Every read of a picture.
    static constexpr std::size_t chunkBytes = 0x100000;

    using Result = std::expected<Picture, PictureFailure>;

    /// What fits on a screen, and all frames of what moves.
    static constexpr PictureBounds usualRoom{
        .width = PictureBounds::most, .height = PictureBounds::most, .frames = PictureBounds::mostFrames};

    /// Makes a picture of the bytes of a file that has that name.
    using Decode = std::function<Task<Result>(std::string bytes, std::string name, PictureBounds room)>;

    /// `size` is as far as is known; reading ends where the file does.
    ///
    /// Cancellation: a stop ends the reading, and the decoder's process.
    static Task<Result> read(std::shared_ptr<ViewedFile> file, std::string name, std::int64_t size, Decode decode,
                             PictureBounds room = usualRoom);

    /// The decoder of the program. The engine outlives it.
    static Decode decoder(EngineRuntime &engine);
};

} // namespace tw
