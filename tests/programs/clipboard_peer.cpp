// Another program that uses the clipboard of an X server.
//
//     clipboard_peer show               writes every format and its bytes, percent-encoded, and ends
//     clipboard_peer offer TYPE BYTES…  offers them (percent-encoded)
//     clipboard_peer hang               owns the clipboard, says what it is asked for, and answers nothing
//     clipboard_peer keep               is the clipboard manager: takes over what a program leaves that ends

#include "TWCore/Model/PercentCoding.h"

#include <QAbstractNativeEventFilter>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace {

using namespace tw;

void say(std::string const &line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

xcb_connection_t *server()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_atom_t atomOf(std::string const &name)
{
    auto const asked = xcb_intern_atom(server(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> const reply(
        xcb_intern_atom_reply(server(), asked, nullptr), &std::free);
    return reply->atom;
}

std::string nameOf(xcb_atom_t atom)
{
    auto const asked = xcb_get_atom_name(server(), atom);
    std::unique_ptr<xcb_get_atom_name_reply_t, decltype(&std::free)> const reply(
        xcb_get_atom_name_reply(server(), asked, nullptr), &std::free);
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

/// Owns a selection without Qt, and hears what is asked of it.
class Owner final : public QAbstractNativeEventFilter {
public:
    using Request = xcb_selection_request_event_t;

    Owner(std::string const &selection, std::function<void(Request)> onRequest) : hear(std::move(onRequest))
    {
        auto const *const screen = xcb_setup_roots_iterator(xcb_get_setup(server())).data;
        window = xcb_generate_id(server());
        xcb_create_window(server(), XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(server(), window, atomOf(selection), XCB_CURRENT_TIME);
        xcb_flush(server());
        qGuiApp->installNativeEventFilter(this);
    }

    bool nativeEventFilter(QByteArray const & /*type*/, void *message, qintptr * /*result*/) override
    {
        auto const *const event = static_cast<xcb_generic_event_t const *>(message);
        auto const *const request = static_cast<Request const *>(message);
        if ((event->response_type & 0x7f) != XCB_SELECTION_REQUEST || request->owner != window)
            return false;
        QTimer::singleShot(0, qGuiApp, [this, asked = *request] { hear(asked); });
        return true;
    }

private:
    std::function<void(Request)> hear;
    xcb_window_t window = 0;
};

void answer(Owner::Request const &request)
{
    xcb_selection_notify_event_t event{};
    event.response_type = XCB_SELECTION_NOTIFY;
    event.time = request.time;
    event.requestor = request.requestor;
    event.selection = request.selection;
    event.target = request.target;
    event.property = request.property;
    xcb_send_event(server(), 0, request.requestor, 0, reinterpret_cast<char const *>(&event));
    xcb_flush(server());
}

void show()
{
    auto const *const data = QGuiApplication::clipboard()->mimeData();
    for (auto const &format : data->formats())
        say(format.toStdString() + " " + PercentCoding::encoded(data->data(format).toStdString()));
}

std::unique_ptr<QMimeData> copyOf(QMimeData const &data)
{
    auto copy = std::make_unique<QMimeData>();
    for (auto const &format : data.formats())
        copy->setData(format, data.data(format));
    return copy;
}

void offer(int count, char **arguments)
{
    auto data = std::make_unique<QMimeData>();
    for (int at = 0; at + 1 < count; at += 2)
        data->setData(QString::fromUtf8(arguments[at]),
                      QByteArray::fromStdString(PercentCoding::decoded(arguments[at + 1])));
    QGuiApplication::clipboard()->setMimeData(data.release());
}

std::unique_ptr<Owner> hang()
{
    return std::make_unique<Owner>("CLIPBOARD", [](auto const &request) { say("asked " + nameOf(request.target)); });
}

std::unique_ptr<Owner> keep()
{
    return std::make_unique<Owner>("CLIPBOARD_MANAGER", [](auto const &request) {
        auto *const clipboard = QGuiApplication::clipboard();
        clipboard->setMimeData(copyOf(*clipboard->mimeData()).release());
        answer(request);
        say("kept");
    });
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication const application(argc, argv);
    std::string const role = argc > 1 ? argv[1] : "";
    if (role == "show") {
        show();
        return EXIT_SUCCESS;
    }
    std::unique_ptr<Owner> owner;
    if (role == "offer")
        offer(argc - 2, argv + 2);
    else if (role == "hang")
        owner = hang();
    else if (role == "keep")
        owner = keep();
    else
        return EXIT_FAILURE;
    say("ready");
    return QGuiApplication::exec();
}
