#include "TWEngine/Preview/PictureAnswer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

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

PictureBounds PictureBounds::ofWhole(int width, int height)
{
    auto const pixels = static_cast<double>(width) * height;
    auto const scale = std::min({1.0, std::sqrt(static_cast<double>(mostPixels) / std::max(pixels, 1.0)),
                                 static_cast<double>(mostSide) / std::max({width, height, 1})});
    auto const scaled = [scale](int side) { return std::max(static_cast<int>(side * scale), 1); };
    return {.width = scaled(width), .height = scaled(height)};
}

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
    while (isMoving && !isBroken && !bytes.empty())
        isBroken = !takeOfFrame(bytes);
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
    isMoving = words.starts_with(movingWord) && bounds.frames > 1;
    if (isMoving)
        return readSizes(words.substr(movingWord.size()));
    if (words.starts_with(nothingWord) && words.substr(nothingWord.size()).starts_with(' '))
        return readReason(words.substr(nothingWord.size() + 1));
    return false;
}

bool PictureAnswer::readSizes(std::string_view words)
{
    auto const width = takeNumber(words, std::min(bounds.width, PictureBounds::mostSide));
    auto const height = takeNumber(words, std::min(bounds.height, PictureBounds::mostSide));
    auto const wholeWidth = takeNumber(words, mostWholePixels);
    auto const wholeHeight = takeNumber(words, mostWholePixels);
    if (!width || !height || !wholeWidth || !wholeHeight || !words.empty() ||
        std::int64_t(*width) * *height > PictureBounds::mostPixels)
        return false;
    picture = {
        .width = *width, .height = *height, .wholeWidth = *wholeWidth, .wholeHeight = *wholeHeight, .pixels = {}};
    if (!isMoving)
        picture.pixels.reserve(pixelBytes());
    return true;
}

bool PictureAnswer::takeOfFrame(std::string_view &bytes)
{
    constexpr auto lineBytes = digitsOfFrame + 1;
    if (frameLine.size() < lineBytes) {
        auto const part = bytes.substr(0, lineBytes - frameLine.size());
        frameLine += part;
        bytes.remove_prefix(part.size());
        return frameLine.size() < lineBytes || beginFrame();
    }
    auto &pixels = frames.back().pixels;
    auto const part = bytes.substr(0, pixelBytes() - pixels.size());
    pixels += part;
    bytes.remove_prefix(part.size());
    if (pixels.size() == pixelBytes())
        frameLine.clear();
    return true;
}

bool PictureAnswer::beginFrame()
{
    int milliseconds = 0;
    auto const *const end = frameLine.data() + digitsOfFrame;
    auto const [stop, error] = std::from_chars(frameLine.data(), end, milliseconds);
    auto const bytes = static_cast<std::int64_t>((frames.size() + 1) * pixelBytes());
    if (error != std::errc() || stop != end || *end != '\n' || milliseconds < 1 ||
        std::ssize(frames) >= bounds.frames || bytes > PictureBounds::mostBytesOfFrames)
        return false;
    frames.push_back({.shownFor = std::chrono::milliseconds(milliseconds)});
    frames.back().pixels.reserve(pixelBytes());
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
    if (isMoving && !frames.empty() && frameLine.empty()) {
        picture.pixels = std::move(frames.front().pixels);
        picture.firstShownFor = frames.front().shownFor;
        picture.furtherFrames.assign(std::move_iterator(frames.begin() + 1), std::move_iterator(frames.end()));
    }
    if (picture.pixels.size() != pixelBytes())
        return std::unexpected(PictureFailure::crashed);
    return std::move(picture);
}

} // namespace tw
