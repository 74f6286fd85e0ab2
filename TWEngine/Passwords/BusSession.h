#pragma once

#include "TWEngine/Platform/GObjectReference.h"

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>

namespace tw {

struct GVariantDeleter {
    void operator()(GVariant *value) const noexcept { g_variant_unref(value); }
};

using GVariantReference = std::unique_ptr<GVariant, GVariantDeleter>;

/// A private connection to a message bus, on which the calling thread waits for replies. One limit covers its whole
/// life.
///
/// It is not the connection that GLib shares in a process: the shared connection ends the process with the bus, and
/// making it has no limit.
///
/// Threads: one.
/// Errors: not distinguished; a call that fails returns null.
class BusSession {
public:
    /// The limit starts now. An empty address means that there is no bus.
    BusSession(std::string const &address, std::chrono::milliseconds limit);
    ~BusSession();

    BusSession(BusSession const &) = delete;
    BusSession &operator=(BusSession const &) = delete;

    /// Null if there is no bus, or if it did not answer in time.
    GDBusConnection *connection() const noexcept { return bus.get(); }

    struct Method {
        char const *object;
        char const *interface;
        char const *name;
    };

    /// Calls a method of `destination` and returns its reply, which has the type `reply`. Takes `arguments`.
    GVariantReference call(char const *destination, Method method, GVariant *arguments, char const *reply)
    {
        return callOn(bus.get(), destination, method, arguments, reply);
    }

    /// Calls a method without results that starts something, and waits for the signal of the same object that ends it.
    /// True if the signal came within `atMost` and before the stop. Takes `arguments`.
    bool callUntilSignal(char const *destination, Method method, GVariant *arguments, char const *signal,
                         std::chrono::milliseconds atMost, std::stop_token stop);

    /// The same as `call` on another connection.
    GVariantReference callOn(GDBusConnection *connection, char const *destination, Method method, GVariant *arguments,
                             char const *reply);

    /// Waits for an asynchronous operation of GIO, which `start` starts. The limit cancels the operation.
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
