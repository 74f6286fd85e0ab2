#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tw {

struct PictureFrame {
    std::chrono::milliseconds shownFor{};
    std::string pixels{}; ///< as those of a Picture
};

/// A decoded picture, made small enough for the room that it is shown in.
struct Picture {
    int width = 0; ///< pixels, as are the others
    int height = 0;
    int wholeWidth = 0; ///< as the file has it
    int wholeHeight = 0;
    std::string pixels; ///< red, green, blue and opacity, a byte each; rows from the top without gaps

    // Of a picture that moves; its first frame is `pixels`.
    std::chrono::milliseconds firstShownFor{};
    std::vector<PictureFrame> furtherFrames{};
};

/// The room for a picture, in pixels.
struct PictureBounds {
    /// A picture of this size is 16 MiB; no screen shows more of it beside a pane.
    static constexpr int most = 2048;

    /// Of a picture that is looked at pixel by pixel, which is 96 MiB then: what cameras of this time make.
    static constexpr int mostSide = 16384;
    static constexpr std::int64_t mostPixels = 24 << 20;

    /// Of a picture that moves. Its frames are made smaller until all of them have room.
    static constexpr int mostFrames = 500;
    static constexpr std::int64_t mostBytesOfFrames = 64 << 20;

    int width = 0;
    int height = 0;
    int frames = 1; ///< at most; 1: the first one of a picture that moves

    /// The room in which a picture of that size is shown pixel by pixel, or nearly so if it is larger than may be.
    static PictureBounds ofWhole(int width, int height);

    friend bool operator==(PictureBounds const &, PictureBounds const &) = default;
};

/// Whether a photograph that takes long to decode is answered twice: coarse and soon, then sharp.
enum class PictureDraft { none, wanted };

/// Why a file is not shown as a picture.
enum class PictureFailure {
    damaged,
    tooLarge,      ///< for the memory that a decoder may use
    unknownFormat, ///< no plugin of this system reads it
    noProgram,     ///< pdftoppm is not installed
    tooSlow,
    crashed, ///< or has answered nonsense
};

/// What a decoder says about a failure of its own. Other failures are seen from outside.
constexpr std::string_view wordOf(PictureFailure failure)
{
    switch (failure) {
    case PictureFailure::damaged:
        return "damaged";
    case PictureFailure::tooLarge:
        return "too-large";
    case PictureFailure::unknownFormat:
        return "unknown-format";
    case PictureFailure::noProgram:
        return "no-program";
    default:
        return {};
    }
}

/// The answer of a decoder, as it comes through the pipe: one line, and the pixels behind it. A draft may come before
/// it.
///
///     draft WIDTH HEIGHT WHOLEWIDTH WHOLEHEIGHT
///     picture WIDTH HEIGHT WHOLEWIDTH WHOLEHEIGHT
///     moving WIDTH HEIGHT WHOLEWIDTH WHOLEHEIGHT
///     nothing REASON
///
/// Of a picture that moves, the pixels of each frame come behind a line of seven digits: the milliseconds that the
/// frame is shown for.
///
/// A decoder has read a hostile file, so nothing that it answers is believed before it has been checked.
class PictureAnswer {
public:
    /// `room` is what the decoder was given.
    explicit PictureAnswer(PictureBounds room, PictureDraft asked = PictureDraft::none) : bounds(room), drafts(asked) {}

    static constexpr std::string_view draftWord = "draft";
    static constexpr std::string_view pictureWord = "picture";
    static constexpr std::string_view movingWord = "moving";
    static constexpr std::string_view nothingWord = "nothing";
    static constexpr std::size_t digitsOfFrame = 7;

    /// Takes the next bytes. False if this is no answer; what follows is not wanted then.
    bool take(std::string_view bytes);

    /// The draft, once it is whole; nothing before, and nothing when it has been taken.
    std::optional<Picture> takeDraft() { return std::exchange(draft, std::nullopt); }

    /// The picture, at the end of the pipe.
    std::expected<Picture, PictureFailure> finish() &&;

private:
    enum class Part {
        line,
        draft, ///< its pixels
        picture,
        frames
    };

    bool takePart(std::string_view &bytes);
    bool takeOfLine(std::string_view &bytes);
    bool takeOfPixels(std::string_view &bytes);
    bool readLine();
    bool readSizes(std::string_view words);
    bool readReason(std::string_view word);
    bool takeOfFrame(std::string_view &bytes);
    bool beginFrame();
    std::size_t pixelBytes() const;

    PictureBounds const bounds;
    PictureDraft drafts; ///< that may still come
    Part part = Part::line;
    std::string line; ///< as far as it has come
    bool isBroken = false;
    std::string frameLine; ///< of the frame that is coming
    std::vector<PictureFrame> frames;
    Picture picture; ///< or the draft while that is coming
    std::optional<Picture> draft;
    std::optional<PictureFailure> reason;
};

} // namespace tw
