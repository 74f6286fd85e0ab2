#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tw {

struct GObjectDeleter {
    void operator()(void *object) const noexcept { g_object_unref(object); }
};

struct GVariantDeleter {
    void operator()(GVariant *value) const noexcept { g_variant_unref(value); }
};

/// Owns a reference to an object of GLib.
template <class T>
using GObjectReference = std::unique_ptr<T, GObjectDeleter>;
using GVariantReference = std::unique_ptr<GVariant, GVariantDeleter>;

/// A connection of one's own to a message bus, on which the calling thread waits for answers, within one limit over all
/// that is done with it.
///
/// Not the connection that a process shares: that one ends the process with the bus, and no call on it has a limit
/// while it is being made.
///
/// Threads: one. Errors: none is told apart; a call that fails answers nothing.
class BusSession {
public:
    /// The limit runs from here on. An empty address is that of no bus.
    BusSession(std::string const &address, std::chrono::milliseconds limit);
    ~BusSession();

    BusSession(BusSession const &) = delete;
    BusSession &operator=(BusSession const &) = delete;

    /// Absent if there is no bus, or if it did not answer in time.
    GDBusConnection *connection() const noexcept { return bus.get(); }

    struct Method {
        char const *object;
        char const *interface;
        char const *name;
    };

    /// Calls a method of `destination` and answers what it returned, which is of the type `reply`. Takes `arguments`.
    GVariantReference call(char const *destination, Method method, GVariant *arguments, char const *reply)
    {
        return callOn(bus.get(), destination, method, arguments, reply);
    }

    /// The same on another connection.
    GVariantReference callOn(GDBusConnection *connection, char const *destination, Method method, GVariant *arguments,
                             char const *reply);

    /// Waits for an asynchronous operation of GIO, which `start` begins. It is called off at the limit.
    using Start = std::function<void(GCancellable *, GAsyncReadyCallback, gpointer)>;
    GObjectReference<GAsyncResult> await(Start const &start);

private:
    static gboolean endAll(gpointer self);

    void connect(std::string const &address);

    GMainContext *const context;
    GSource *const limitTimer;
    GObjectReference<GCancellable> const giveUp;
    GObjectReference<GIOStream> stream;
    GObjectReference<GDBusConnection> bus;
};

} // namespace tw
