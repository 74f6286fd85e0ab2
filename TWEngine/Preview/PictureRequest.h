#pragma once

#include "TWEngine/Preview/PictureAnswer.h"

#include <optional>
#include <sstream>
#include <string>

namespace tw {

/// What a decoder process is asked for: the one message that it gets, together with the open file.
///
/// Without a source file of its own, so that the decoder needs nothing of the engine.
struct PictureRequest {
    /// Longer than any line.
    static constexpr std::size_t mostBytes = 128;

    std::string format; ///< a name that Qt knows, or "pdf" for the first page of a document
    PictureBounds room;
    PictureDraft draft = PictureDraft::none;

    /// FORMAT WIDTH HEIGHT FRAMES DRAFT
    std::string line() const
    {
        std::ostringstream words;
        words << format << ' ' << room.width << ' ' << room.height << ' ' << room.frames << ' '
              << (draft == PictureDraft::wanted ? 1 : 0);
        return words.str();
    }

    /// Nothing if `line` is none.
    static std::optional<PictureRequest> of(std::string const &line)
    {
        PictureRequest request;
        int draft = 0;
        std::istringstream words(line);
        words >> request.format >> request.room.width >> request.room.height >> request.room.frames >> draft;
        if (words.fail() || !words.eof())
            return std::nullopt;
        request.draft = draft == 1 ? PictureDraft::wanted : PictureDraft::none;
        return request;
    }

    friend bool operator==(PictureRequest const &, PictureRequest const &) = default;
};

} // namespace tw
