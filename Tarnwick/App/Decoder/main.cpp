// Decodes one picture in a process of its own, which nothing else depends on: a file may come from anywhere.
//
// Its standard input is a Unix socket through which one request comes with the open file (PictureRequest), at once or
// some time after the start. The picture is made to fit into the room of the request; the answer goes to the standard
// output and is described in TWEngine/Preview/PictureAnswer.h. Without the flags of other targets: what the sanitizers
// reserve is more than the limits of this process allow.

#include "TWEngine/Preview/PictureAnswer.h"
#include "Tarnwick/App/Decoder/Confinement.h"
#include "Tarnwick/App/Decoder/RequestSocket.h"

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <unistd.h>

namespace {

using namespace tw;

/// What Qt may take for one picture. It is less than the process may have, so that Qt says no before the system does.
constexpr int mostMebibytes = 128;

/// A picture whose header promises more is not begun: reading it would take longer than anybody waits for a preview.
constexpr qint64 mostPixels = 256'000'000;

void writeAll(char const *bytes, std::size_t count)
{
    while (count > 0) {
        auto const written = ::write(STDOUT_FILENO, bytes, count);
        if (written <= 0)
            std::_Exit(EXIT_FAILURE); // nobody reads any more
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

[[noreturn]] void answer(PictureFailure failure)
{
    auto const line = std::string(PictureAnswer::nothingWord) + ' ' + std::string(wordOf(failure)) + '\n';
    writeAll(line.data(), line.size());
    std::_Exit(EXIT_SUCCESS);
}

void writeSizes(std::string_view word, QSize size, QSize whole)
{
    std::string line(word);
    for (auto const number : {size.width(), size.height(), whole.width(), whole.height()})
        line += ' ' + std::to_string(number);
    line += '\n';
    writeAll(line.data(), line.size());
}

void writePixels(QImage const &picture)
{
    for (int row = 0; row < picture.height(); ++row)
        writeAll(reinterpret_cast<char const *>(picture.constScanLine(row)),
                 static_cast<std::size_t>(picture.width()) * 4);
}

/// False if there is no memory for it.
bool writePicture(std::string_view word, QImage picture, QSize whole)
{
    picture.convertTo(QImage::Format_RGBA8888);
    if (picture.isNull())
        return false;
    writeSizes(word, picture.size(), whole);
    writePixels(picture);
    return true;
}

[[noreturn]] void answer(QImage picture, QSize whole)
{
    if (!writePicture(PictureAnswer::pictureWord, std::move(picture), whole))
        answer(PictureFailure::tooLarge);
    // As it is: destroying the toolkit is work for nobody.
    std::_Exit(EXIT_SUCCESS);
}

/// A drawing may have text in it. Fonts are files, which cannot be opened later, so the usual ones are used once now.
void loadFonts()
{
    QImage canvas(8, 8, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&canvas);
    for (auto const *const family : {"sans-serif", "serif", "monospace", ""}) {
        for (auto const weight : {QFont::Normal, QFont::Bold}) {
            painter.setFont(QFont(QString::fromLatin1(family), 8, weight));
            painter.drawText(0, 8, QStringLiteral("a"));
        }
    }
}

/// Qt scales, converts and fills with a thread for each core. No thread can be made later, so the only one that it will
/// ever use is made now: Qt counts the cores that it may run on.
void makeThread()
{
    cpu_set_t all;
    cpu_set_t one;
    if (::sched_getaffinity(0, sizeof all, &all) != 0)
        return;
    CPU_ZERO(&one);
    CPU_SET(static_cast<unsigned>(std::max(::sched_getcpu(), 0)), &one);
    ::sched_setaffinity(0, sizeof one, &one);
    constexpr int sideOfTwoParts = 512; // Qt gives a part of 65,536 pixels to each thread
    QImage canvas(sideOfTwoParts, sideOfTwoParts, QImage::Format_RGB32);
    canvas.fill(0);
    auto const half = sideOfTwoParts / 2;
    static_cast<void>(canvas.scaled(half, half, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    std::error_code ignored;
    for (auto const &thread : std::filesystem::directory_iterator("/proc/self/task", ignored))
        ::sched_setaffinity(std::atoi(thread.path().filename().c_str()), sizeof all, &all);
}

/// The plugin is loaded now: it is a file too. Only this one, since each brings libraries that have to be loaded.
/// False: there is none.
bool loadPlugin(QByteArray const &format)
{
    QBuffer empty;
    empty.open(QIODevice::ReadOnly);
    QImageReader probe(&empty, format);
    probe.setAutoDetectImageFormat(false);
    probe.read();
    return probe.error() != QImageReader::UnsupportedFormatError;
}

/// Puts the pages of pdftoppm in the place of standard input, and answers the format that they come in.
QByteArray printPage(QSize room)
{
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0)
        answer(PictureFailure::damaged);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
    // By its path: of what comes through a pipe the program would make a copy first.
    std::string words[] = {"pdftoppm",  "-f",        "1",
                           "-l",        "1",         "-singlefile",
                           "-cropbox",  "-scale-to", std::to_string(std::max(room.width(), room.height())),
                           "/dev/stdin"};
    char *arguments[std::size(words) + 1] = {};
    std::ranges::transform(words, arguments, [](std::string &word) { return word.data(); });
    pid_t child = 0;
    if (::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments, environ) != 0)
        answer(PictureFailure::noProgram);
    ::dup2(pipe[0], STDIN_FILENO);
    ::close(pipe[0]);
    ::close(pipe[1]);
    return "ppm";
}

QSize fitting(QSize size, QSize room)
{
    return size.width() <= room.width() && size.height() <= room.height()
               ? size
               : size.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1});
}

/// Whether a picture that is not decoded may have failed by its size. Qt does not say.
bool isLarge(QSize size)
{
    constexpr qint64 bytesPerPixel = 4;
    return qint64(size.width()) * size.height() * bytesPerPixel > qint64(mostMebibytes) * 1024 * 1024;
}

/// The size at which that many frames have room together.
QSize sizeOfFrames(QSize size, int frames)
{
    auto const all = qint64(size.width()) * size.height() * 4 * frames;
    if (all <= PictureBounds::mostBytesOfFrames)
        return size;
    auto const scale = std::sqrt(static_cast<double>(PictureBounds::mostBytesOfFrames) / static_cast<double>(all));
    return QSize(static_cast<int>(size.width() * scale), static_cast<int>(size.height() * scale)).expandedTo({1, 1});
}

/// Answers the frames of a picture that moves, the first of which has been read; fewer if they take too long. Returns
/// if there is no second one.
void answerFrames(QImageReader &reader, QImage frame, QSize whole, int most)
{
    // A shorter time is that of a file that says nothing.
    constexpr int leastMilliseconds = 20;
    constexpr int usualMilliseconds = 100;
    constexpr int mostMilliseconds = 60'000;
    constexpr auto mostTime = 5 * CLOCKS_PER_SEC;
    auto const delay = [&] {
        auto const milliseconds = reader.nextImageDelay();
        return milliseconds < leastMilliseconds ? usualMilliseconds : std::min(milliseconds, mostMilliseconds);
    };
    auto shownFor = delay();
    auto next = reader.read();
    if (next.isNull())
        return;
    auto const count = reader.imageCount() > 1 ? std::min(reader.imageCount(), most) : most;
    auto const size = sizeOfFrames(frame.size(), count);
    writeSizes(PictureAnswer::movingWord, size, whole);
    for (int written = 0; written < count && !frame.isNull(); ++written) {
        if (frame.size() != size)
            frame = frame.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        frame.convertTo(QImage::Format_RGBA8888);
        auto const line = QByteArray::number(shownFor).rightJustified(PictureAnswer::digitsOfFrame, '0') + '\n';
        writeAll(line.constData(), static_cast<std::size_t>(line.size()));
        writePixels(frame);
        if (std::clock() > mostTime)
            break;
        frame = std::exchange(next, QImage());
        shownFor = delay();
        next = reader.read();
    }
    std::_Exit(EXIT_SUCCESS);
}

/// A picture in its file.
struct Stored {
    QSize size; ///< invalid: the file does not say
    bool isTurned = false;

    explicit Stored(QImageReader const &reader)
        : size(reader.size()), isTurned(reader.transformation().testFlag(QImageIOHandler::TransformationRotate90))
    {
    }

    bool isTooLarge() const { return qint64(size.width()) * size.height() > mostPixels; }

    QSize turned(QSize other) const { return isTurned ? other.transposed() : other; }
};

/// Answers the means of each eight by eight pixels, which a JPEG has in itself: the rest of it is not computed. Nothing
/// if the picture is decoded to no more than that anyway.
void answerDraft(QFile &file, QSize room)
{
    constexpr int block = 8;
    QImageReader reader(&file, "jpeg");
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    Stored const stored(reader);
    auto const size = QSize(stored.size.width() / block, stored.size.height() / block);
    auto const sharp = fitting(stored.size, stored.turned(room));
    if (size.isEmpty() || stored.isTooLarge() || size.width() >= sharp.width() || size.height() >= sharp.height())
        return;
    reader.setScaledSize(size);
    if (auto picture = reader.read(); !picture.isNull())
        writePicture(PictureAnswer::draftWord, std::move(picture), stored.turned(stored.size));
}

[[noreturn]] void decode(QFile &file, QByteArray const &format, QSize room, int frames)
{
    QImageReader reader(&file, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    Stored const stored(reader);
    if (stored.isTooLarge())
        answer(PictureFailure::tooLarge);
    auto const isDrawing = format == "svg" || format == "svgz";
    auto const turned = stored.turned(room);
    if (stored.size.isValid() && !stored.size.isEmpty())
        reader.setScaledSize(isDrawing ? stored.size.scaled(turned, Qt::KeepAspectRatio)
                                       : fitting(stored.size, turned));
    auto picture = reader.read();
    if (picture.isNull())
        answer(isLarge(stored.size) ? PictureFailure::tooLarge : PictureFailure::damaged);
    auto const whole = stored.size.isValid() ? stored.turned(stored.size) : picture.size();
    if (auto const size = fitting(picture.size(), room); size != picture.size())
        picture = picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (frames > 1 && reader.supportsAnimation())
        answerFrames(reader, picture, whole, frames);
    answer(std::move(picture), whole);
}

[[noreturn]] void decodeInput(QByteArray const &format, QSize room, int frames, PictureDraft draft)
{
    QFile file;
    if (!file.open(STDIN_FILENO, QIODevice::ReadOnly))
        answer(PictureFailure::damaged);
    if (draft == PictureDraft::wanted && format == "jpeg") {
        answerDraft(file, room);
        file.seek(0);
    }
    decode(file, format, room, frames);
}

} // namespace

int main(int count, char **arguments)
{
    Confinement::limitResources();
    // Most large pictures are of this format. Another one's plugin is loaded once it is known.
    loadPlugin("jpeg");
    auto const request = RequestSocket::receive();
    if (!request)
        return EXIT_FAILURE;
    QByteArray format(request->format.c_str());
    QSize const room(std::clamp(request->room.width, 1, PictureBounds::mostSide),
                     std::clamp(request->room.height, 1, PictureBounds::mostSide));
    auto const frames = std::clamp(request->room.frames, 1, PictureBounds::mostFrames);
    auto const isLarge = room.width() > PictureBounds::most || room.height() > PictureBounds::most;
    Confinement::limitPicture(isLarge ? Confinement::Memory::large : Confinement::Memory::usual);
    std::optional<QGuiApplication> application;
    if (format == "svg" || format == "svgz") {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qunsetenv("QT_QPA_PLATFORMTHEME");
        application.emplace(count, arguments);
        loadFonts();
    }
    QImageReader::setAllocationLimit(mostMebibytes);
    if (format == "pdf")
        format = printPage(room);
    if (!loadPlugin(format))
        answer(PictureFailure::unknownFormat);
    // Not before: the thread ends when it has nothing to do for long.
    makeThread();
    Confinement::closeDoors();
    decodeInput(format, room, frames, request->draft);
}
