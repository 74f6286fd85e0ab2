#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// A decoded picture, made small enough for the room that it is shown in.
struct Picture {
    int width = 0; ///< pixels, as are the others
    int height = 0;
    int wholeWidth = 0; ///< as the file has it
    int wholeHeight = 0;
    std::string pixels; ///< red, green, blue and opacity, a byte each; rows from the top without gaps
};

/// The room for a picture, in pixels.
struct PictureBounds {
    /// A picture of this size is 16 MiB; no screen shows more of it beside a pane.
    static constexpr int most = 2048;

    int width = 0;
    int height = 0;

    friend bool operator==(PictureBounds const &, PictureBounds const &) = default;
};

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

/// The answer of a decoder, as it comes through the pipe: one line, and the pixels behind it.
///
///     picture WIDTH HEIGHT WHOLEWIDTH WHOLEHEIGHT
///     nothing REASON
///
/// A decoder has read a hostile file, so nothing that it answers is believed before it has been checked.
class PictureAnswer {
public:
    /// `room` is what the decoder was given.
    explicit PictureAnswer(PictureBounds room) : bounds(room) {}

    static constexpr std::string_view pictureWord = "picture";
    static constexpr std::string_view nothingWord = "nothing";

    /// Takes the next bytes. False if this is no answer; what follows is not wanted then.
    bool take(std::string_view bytes);

    /// The picture, at the end of the pipe.
    std::expected<Picture, PictureFailure> finish() &&;

private:
    bool readLine();
    bool readSizes(std::string_view words);
    bool readReason(std::string_view word);
    std::size_t pixelBytes() const;

    PictureBounds const bounds;
    std::string line; ///< the first one, as far as it has come
    bool isLineWhole = false;
    bool isBroken = false;
    Picture picture;
    std::optional<PictureFailure> reason;
};

} // namespace tw
