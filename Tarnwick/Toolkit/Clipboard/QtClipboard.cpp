#include "Tarnwick/Toolkit/Clipboard/QtClipboard.h"

#include "TWEngine/Runtime/Completion.h"
#include "Tarnwick/Toolkit/Clipboard/FileMimeData.h"
#include "Tarnwick/Toolkit/Clipboard/SelectionQuestion.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>

#include <array>
#include <utility>

namespace tw {

namespace {

using Answer = SelectionQuestion::Answer;

/// The name that X11 has for it.
constexpr auto clipboardSelection = "CLIPBOARD";

/// The images that programs offer, the best first, and the extensions of their files.
constexpr std::array<std::pair<std::string_view, std::string_view>, 7> images{{{"image/png", "png"},
                                                                               {"image/jpeg", "jpg"},
                                                                               {"image/webp", "webp"},
                                                                               {"image/gif", "gif"},
                                                                               {"image/svg+xml", "svg"},
                                                                               {"image/tiff", "tiff"},
                                                                               {"image/bmp", "bmp"}}};

/// Reads formats as long as the program that offers them answers.
class Reader {
public:
    explicit Reader(QMimeData const &offered) : data(offered) {}

    std::optional<std::string> operator()(std::string_view type)
    {
        auto const name = QString::fromUtf8(type.data(), static_cast<qsizetype>(type.size()));
        if (hangs || !data.hasFormat(name))
            return std::nullopt;
        QElapsedTimer timer;
        timer.start();
        auto const bytes = data.data(name);
        // Qt gives up without a word, after a second under Wayland.
        hangs = bytes.isEmpty() && timer.elapsed() > 900;
        return hangs ? std::nullopt : std::optional(bytes.toStdString());
    }

    bool isAnswered() const { return !hangs; }

private:
    QMimeData const &data;
    bool hangs = false;
};

/// Text first: programs offer a picture of their text beside it.
std::optional<ClipboardPiece> pieceIn(Reader &reader)
{
    if (auto text = reader("text/plain"); text && !text->empty())
        return ClipboardPiece{ClipboardPiece::Kind::text, "txt", *std::move(text)};
    for (auto const &[type, extension] : images) {
        if (auto image = reader(type); image && !image->empty())
            return ClipboardPiece{ClipboardPiece::Kind::image, std::string(extension), *std::move(image)};
    }
    return std::nullopt;
}

std::optional<ClipboardContent> contentOf(QMimeData const &data, std::uint64_t version)
{
    Reader reader(data);
    ClipboardContent content{.version = version};
    content.files = FileFormats::read(std::ref(reader));
    if (!content.files)
        content.piece = pieceIn(reader);
    return reader.isAnswered() ? std::optional(std::move(content)) : std::nullopt;
}

bool isOwn()
{
    auto const *const clipboard = QGuiApplication::clipboard();
    return clipboard->ownsClipboard() && qobject_cast<FileMimeData const *>(clipboard->mimeData());
}

} // namespace

QtClipboard::QtClipboard()
{
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &QtClipboard::changed);
}

void QtClipboard::changed()
{
    ++version;
    if (!isOwn() && onOfferGone)
        onOfferGone();
}

void QtClipboard::offer(FileDrag files)
{
    QGuiApplication::clipboard()->setMimeData(new FileMimeData(std::move(files)));
}

Task<std::optional<ClipboardContent>> QtClipboard::read()
{
    return readOnceAnswered(shared_from_this());
}

Task<std::optional<ClipboardContent>> QtClipboard::readOnceAnswered(std::shared_ptr<QtClipboard> self)
{
    auto const *const clipboard = QGuiApplication::clipboard();
    if (!clipboard->ownsClipboard()) {
        auto const answered = std::make_shared<Completion<Answer>>();
        SelectionQuestion::ask(clipboardSelection, "TARGETS", patience,
                               [answered](Answer answer) { answered->succeed(answer); });
        auto const answer = co_await Completion<Answer>::wait(answered);
        if (answer == Answer::silence)
            co_return std::nullopt;
    }
    auto const *const data = clipboard->mimeData();
    co_return data ? contentOf(*data, self->version) : ClipboardContent{.version = self->version};
}

void QtClipboard::clear(std::uint64_t read)
{
    if (read == version)
        QGuiApplication::clipboard()->clear();
}

void QtClipboard::leaveToManager(std::chrono::milliseconds limit)
{
    if (!QGuiApplication::clipboard()->ownsClipboard())
        return;
    auto const isDone = std::make_shared<bool>(false);
    SelectionQuestion::ask("CLIPBOARD_MANAGER", "SAVE_TARGETS", limit, [isDone](Answer) { *isDone = true; });
    // The manager asks for the formats meanwhile, which Qt answers.
    while (!*isDone)
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
}

} // namespace tw
