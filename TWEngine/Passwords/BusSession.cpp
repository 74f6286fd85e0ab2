#include "TWEngine/Passwords/BusSession.h"

namespace tw {

namespace {

/// GIO's callback: `data` is where the result goes.
void keepResult(GObject * /*source*/, GAsyncResult *result, gpointer data)
{
    static_cast<GObjectReference<GAsyncResult> *>(data)->reset(G_ASYNC_RESULT(g_object_ref(result)));
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
    // What was left to be let go here.
    while (g_main_context_iteration(context, FALSE)) {
    }
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
}

gboolean BusSession::endAll(gpointer self)
{
    auto *const session = static_cast<BusSession *>(self);
    g_cancellable_cancel(session->giveUp.get());
    // The greeting of a bus cannot be called off otherwise.
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

GObjectReference<GAsyncResult> BusSession::await(Start const &start)
{
    GObjectReference<GAsyncResult> result;
    start(giveUp.get(), keepResult, &result);
    while (!result)
        g_main_context_iteration(context, TRUE);
    return result;
}

} // namespace tw
