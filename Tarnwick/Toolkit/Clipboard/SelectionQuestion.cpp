#include "Tarnwick/Toolkit/Clipboard/SelectionQuestion.h"

#include <QGuiApplication>
#include <QTimer>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <xcb/xcb.h>

namespace tw {

namespace {

/// What the X library answers is allocated with malloc.
template <class T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

xcb_atom_t atomOf(xcb_connection_t *server, char const *name)
{
    auto const asked = xcb_intern_atom(server, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    Reply<xcb_intern_atom_reply_t> const reply(xcb_intern_atom_reply(server, asked, nullptr), &std::free);
    return reply ? reply->atom : XCB_ATOM_NONE;
}

xcb_window_t ownerOf(xcb_connection_t *server, xcb_atom_t selection)
{
    auto const asked = xcb_get_selection_owner(server, selection);
    Reply<xcb_get_selection_owner_reply_t> const reply(xcb_get_selection_owner_reply(server, asked, nullptr),
                                                       &std::free);
    return reply ? reply->owner : XCB_WINDOW_NONE;
}

} // namespace

void SelectionQuestion::ask(char const *selection, char const *target, std::chrono::milliseconds limit,
                            std::function<void(Answer)> onAnswer)
{
    auto *const question = new SelectionQuestion(std::move(onAnswer));
    auto const isAsked = question->send(selection, target);
    QTimer::singleShot(isAsked ? limit : std::chrono::milliseconds(0), question,
                       [question, isAsked] { question->end(isAsked ? Answer::silence : Answer::nobody); });
}

SelectionQuestion::SelectionQuestion(std::function<void(Answer)> onAnswer) : onEnd(std::move(onAnswer))
{
    if (auto *const native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
        server = native->connection();
}

SelectionQuestion::~SelectionQuestion()
{
    if (!window)
        return;
    qGuiApp->removeNativeEventFilter(this);
    xcb_destroy_window(server, window);
    xcb_flush(server);
}

bool SelectionQuestion::send(char const *selection, char const *target)
{
    if (!server)
        return false;
    auto const atom = atomOf(server, selection);
    if (ownerOf(server, atom) == XCB_WINDOW_NONE)
        return false;
    auto const *const screen = xcb_setup_roots_iterator(xcb_get_setup(server)).data;
    window = xcb_generate_id(server);
    xcb_create_window(server, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    qGuiApp->installNativeEventFilter(this);
    xcb_convert_selection(server, window, atom, atomOf(server, target), atomOf(server, "TARNWICK_ANSWER"),
                          XCB_CURRENT_TIME);
    xcb_flush(server);
    return true;
}

bool SelectionQuestion::nativeEventFilter(QByteArray const & /*type*/, void *message, qintptr * /*result*/)
{
    auto const *const event = static_cast<xcb_generic_event_t const *>(message);
    constexpr auto sentByClient = 0x80U;
    if ((event->response_type & ~sentByClient) != XCB_SELECTION_NOTIFY)
        return false;
    auto const *const answer = static_cast<xcb_selection_notify_event_t const *>(message);
    if (answer->requestor != window)
        return false;
    // Not from within the handling of the event, which knows of this filter.
    QTimer::singleShot(0, this, [this] { end(Answer::given); });
    return true;
}

void SelectionQuestion::end(Answer answer)
{
    if (auto const report = std::exchange(onEnd, nullptr)) {
        deleteLater();
        report(answer);
    }
}

} // namespace tw
