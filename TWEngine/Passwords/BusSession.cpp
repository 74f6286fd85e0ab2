#include "TWEngine/Passwords/BusSession.h"

namespace tw {

namespace {

/// GIO's callback: `data` is the place for the result.
void keepResult(GObject * /*source*/, GAsyncResult *result, gpointer data)
{
    static_cast<GObjectReference<GAsyncResult> *>(data)->reset(G_ASYNC_RESULT(g_object_ref(result)));
}

void noteSignal(GDBusConnection * /*connection*/, char const * /*sender*/, char const * /*object*/,
                char const * /*interface*/, char const * /*signal*/, GVariant * /*parameters*/, gpointer hasCome)
{
    *static_cast<bool *>(hasCome) = true;
}

gboolean noteTime(gpointer isOver)
{
    *static_cast<bool *>(isOver) = true;
    return G_SOURCE_REMOVE;
}

} // namespace

BusSession::BusSession(std::string const &address, std::chrono::milliseconds limit)
    : context(g_main_context_new()),
      limitTimer(g_timeout_source_new(static_cast<guint>(limit.count()))),
      giveUp(g_cancellable_new())
{
    g_main_context_push_thread_default(context);
    g_source_set_callback(limitTimer, endAll, this, nullptr);
    g_source_attach(limitTimer, context);
    if (!address.empty())
        connect(address);
}

BusSession::~BusSession()
{
    bus.reset();
    stream.reset();
    g_source_destroy(limitTimer);
    g_source_unref(limitTimer);
    // Callbacks that are still queued release what they hold.
    while (g_main_context_iteration(context, FALSE)) {
    }
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
}

gboolean BusSession::endAll(gpointer self)
{
    auto *const session = static_cast<BusSession *>(self);
    g_cancellable_cancel(session->giveUp.get());
    // Nothing else cancels the greeting of a bus.
    if (session->stream && G_IS_SOCKET_CONNECTION(session->stream.get()))
        g_socket_shutdown(g_socket_connection_get_socket(G_SOCKET_CONNECTION(session->stream.get())), TRUE, TRUE,
                          nullptr);
    return G_SOURCE_REMOVE;
}

void BusSession::connect(std::string const &address)
{
    auto const opened = await([&](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
        g_dbus_address_get_stream(address.c_str(), cancellable, done, data);
    });
    stream.reset(g_dbus_address_get_stream_finish(opened.get(), nullptr, nullptr));
    if (!stream)
        return;
    auto const connected = await([&](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
        auto const flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        g_dbus_connection_new(stream.get(), nullptr, flags, nullptr, cancellable, done, data);
    });
    bus.reset(g_dbus_connection_new_finish(connected.get(), nullptr));
}

GVariantReference BusSession::callOn(GDBusConnection *connection, char const *destination, Method method,
                                     GVariant *arguments, char const *reply)
{
    GVariantReference const owned(g_variant_ref_sink(arguments));
    auto *const type = g_variant_type_new(reply);
    auto const answered = await([&](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
        g_dbus_connection_call(connection, destination, method.object, method.interface, method.name, owned.get(), type,
                               G_DBUS_CALL_FLAGS_NONE, G_MAXINT, cancellable, done, data);
    });
    g_variant_type_free(type);
    return GVariantReference(g_dbus_connection_call_finish(connection, answered.get(), nullptr));
}

bool BusSession::callUntilSignal(char const *destination, Method method, GVariant *arguments, char const *signal,
                                 std::chrono::milliseconds atMost, std::stop_token stop)
{
    bool hasCome = false;
    bool isOver = false;
    // Before the call: the signal may follow the reply at once.
    auto const subscription =
        g_dbus_connection_signal_subscribe(bus.get(), destination, method.interface, signal, method.object, nullptr,
                                           G_DBUS_SIGNAL_FLAGS_NONE, noteSignal, &hasCome, nullptr);
    auto *const timer = g_timeout_source_new(static_cast<guint>(atMost.count()));
    g_source_set_callback(timer, noteTime, &isOver, nullptr);
    g_source_attach(timer, context);
    {
        std::stop_callback const wake(stop, [this] { g_main_context_wakeup(context); });
        if (call(destination, method, arguments, "()")) {
            while (!hasCome && !isOver && !stop.stop_requested())
                g_main_context_iteration(context, TRUE);
        }
    }
    g_source_destroy(timer);
    g_source_unref(timer);
    g_dbus_connection_signal_unsubscribe(bus.get(), subscription);
    return hasCome;
}

GObjectReference<GAsyncResult> BusSession::await(Start const &start)
{
    GObjectReference<GAsyncResult> result;
    start(giveUp.get(), keepResult, &result);
    while (!result)
        g_main_context_iteration(context, TRUE);
    return result;
}

} // namespace tw
