#include "TWEngine/Preview/PictureAnswer.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tw {

namespace {

/// Longer than any line that a decoder writes.
constexpr std::size_t mostLineBytes = 80;

/// Of a picture in its file. A format that allows more has no pictures of that size.
constexpr int mostWholePixels = 10'000'000;

constexpr std::size_t bytesPerPixel = 4;

constexpr std::array saidFailures{PictureFailure::damaged, PictureFailure::tooLarge, PictureFailure::unknownFormat,
                                  PictureFailure::noProgram};

/// Takes a number and the space before it off `words`; nothing outside of 1 to `most`.
std::optional<int> takeNumber(std::string_view &words, int most)
{
    if (!words.starts_with(' '))
        return std::nullopt;
    words.remove_prefix(1);
    int number = 0;
    auto const [end, error] = std::from_chars(words.data(), words.data() + words.size(), number);
    if (error != std::errc() || number < 1 || number > most)
        return std::nullopt;
    words.remove_prefix(static_cast<std::size_t>(end - words.data()));
    return number;
}

} // namespace

bool PictureAnswer::take(std::string_view bytes)
{
    if (isBroken)
        return false;
    if (!isLineWhole) {
        auto const end = bytes.find('\n');
        line += bytes.substr(0, std::min(end, mostLineBytes));
        if (end == std::string_view::npos)
            return !(isBroken = line.size() >= mostLineBytes);
        isLineWhole = true;
        isBroken = !readLine();
        bytes.remove_prefix(end + 1);
    }
    isBroken = isBroken || picture.pixels.size() + bytes.size() > pixelBytes();
    if (!isBroken)
        picture.pixels += bytes;
    return !isBroken;
}

bool PictureAnswer::readLine()
{
    std::string_view words = line;
    if (words.starts_with(pictureWord))
        return readSizes(words.substr(pictureWord.size()));
    if (words.starts_with(nothingWord) && words.substr(nothingWord.size()).starts_with(' '))
        return readReason(words.substr(nothingWord.size() + 1));
    return false;
}

bool PictureAnswer::readSizes(std::string_view words)
{
    auto const width = takeNumber(words, std::min(bounds.width, PictureBounds::most));
    auto const height = takeNumber(words, std::min(bounds.height, PictureBounds::most));
    auto const wholeWidth = takeNumber(words, mostWholePixels);
    auto const wholeHeight = takeNumber(words, mostWholePixels);
    if (!width || !height || !wholeWidth || !wholeHeight || !words.empty())
        return false;
    picture = {
        .width = *width, .height = *height, .wholeWidth = *wholeWidth, .wholeHeight = *wholeHeight, .pixels = {}};
    picture.pixels.reserve(pixelBytes());
    return true;
}

bool PictureAnswer::readReason(std::string_view word)
{
    auto const *const said = std::ranges::find(saidFailures, word, wordOf);
    if (said != saidFailures.end())
        reason = *said;
    return reason.has_value();
}

std::size_t PictureAnswer::pixelBytes() const
{
    return static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height) * bytesPerPixel;
}

std::expected<Picture, PictureFailure> PictureAnswer::finish() &&
{
    if (isBroken || !isLineWhole)
        return std::unexpected(PictureFailure::crashed);
    if (reason)
        return std::unexpected(*reason);
    if (picture.pixels.size() != pixelBytes())
        return std::unexpected(PictureFailure::crashed);
    return std::move(picture);
}

} // namespace tw
