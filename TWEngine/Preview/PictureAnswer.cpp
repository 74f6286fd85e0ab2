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
    while (!isBroken && !bytes.empty())
        isBroken = !takePart(bytes);
    return !isBroken;
}

/// Takes what belongs together off `bytes`.
bool PictureAnswer::takePart(std::string_view &bytes)
{
    switch (part) {
    case Part::line:
        return takeOfLine(bytes);
    case Part::frames:
        return takeOfFrame(bytes);
    case Part::draft:
    case Part::picture:
        return takeOfPixels(bytes);
    }
    return false;
}

bool PictureAnswer::takeOfLine(std::string_view &bytes)
{
    auto const end = std::min(bytes.find('\n'), bytes.size());
    line += bytes.substr(0, std::min(end, mostLineBytes));
    if (line.size() >= mostLineBytes)
        return false;
    if (end == bytes.size()) {
        bytes = {};
        return true;
    }
    bytes.remove_prefix(end + 1);
    return readLine();
}

bool PictureAnswer::takeOfPixels(std::string_view &bytes)
{
    auto const pixels = bytes.substr(0, pixelBytes() - picture.pixels.size());
    if (pixels.empty())
        return false; // more than was announced
    picture.pixels += pixels;
    bytes.remove_prefix(pixels.size());
    if (part == Part::draft && picture.pixels.size() == pixelBytes()) {
        draft = std::exchange(picture, Picture());
        line.clear();
        part = Part::line;
    }
    return true;
}

bool PictureAnswer::readLine()
{
    std::string_view words = line;
    auto const takeWord = [&words](std::string_view word) {
        auto const isThere = words.starts_with(word);
        words.remove_prefix(isThere ? word.size() : 0);
        return isThere;
    };
    if (drafts == PictureDraft::wanted && takeWord(draftWord)) {
        drafts = PictureDraft::none;
        part = Part::draft;
        return readSizes(words);
    }
    if (bounds.frames > 1 && takeWord(movingWord)) {
        part = Part::frames;
        return readSizes(words);
    }
    part = Part::picture;
    if (takeWord(pictureWord))
        return readSizes(words);
    return takeWord(nothingWord) && takeWord(" ") && readReason(words);
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
    if (part != Part::frames)
        picture.pixels.reserve(pixelBytes());
    return true;
}

bool PictureAnswer::takeOfFrame(std::string_view &bytes)
{
    constexpr auto lineBytes = digitsOfFrame + 1;
    if (frameLine.size() < lineBytes) {
        auto const more = bytes.substr(0, lineBytes - frameLine.size());
        frameLine += more;
        bytes.remove_prefix(more.size());
        return frameLine.size() < lineBytes || beginFrame();
    }
    auto &pixels = frames.back().pixels;
    auto const more = bytes.substr(0, pixelBytes() - pixels.size());
    pixels += more;
    bytes.remove_prefix(more.size());
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
    if (isBroken || part == Part::line || part == Part::draft)
        return std::unexpected(PictureFailure::crashed);
    if (reason)
        return std::unexpected(*reason);
    if (part == Part::frames && !frames.empty() && frameLine.empty()) {
        picture.pixels = std::move(frames.front().pixels);
        picture.firstShownFor = frames.front().shownFor;
        picture.furtherFrames.assign(std::move_iterator(frames.begin() + 1), std::move_iterator(frames.end()));
    }
    if (picture.pixels.size() != pixelBytes())
        return std::unexpected(PictureFailure::crashed);
    return std::move(picture);
}

} // namespace tw
