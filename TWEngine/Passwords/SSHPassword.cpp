#include "TWEngine/Passwords/SSHPassword.h"

#include "TWEngine/Passwords/BusSession.h"
#include "TWEngine/Passwords/SessionBus.h"

#include <vector>

// With the calls that name items by their paths. The others open a window to ask for the key of a locked store.
#define SECRET_WITH_UNSTABLE 1
#define SECRET_API_SUBJECT_TO_CHANGE 1
#include <libsecret/secret.h>

namespace tw::SSHPassword {

namespace {

constexpr auto store = "org.freedesktop.secrets";
constexpr auto storeObject = "/org/freedesktop/secrets";
constexpr auto defaultCollection = "/org/freedesktop/secrets/aliases/default";
/// The path of a prompt where none is needed.
constexpr std::string_view noPrompt = "/";

struct Items {
    std::vector<std::string> unlocked;
    std::vector<std::string> locked;
};

bool isUtf8(std::string_view text)
{
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

/// D-Bus transmits only UTF-8.
bool isAccount(std::string const &host)
{
    return !host.empty() && isUtf8(host);
}

GVariant *attributesOf(std::string const &host)
{
    GVariantBuilder attributes;
    g_variant_builder_init(&attributes, G_VARIANT_TYPE("a{ss}"));
    g_variant_builder_add(&attributes, "{ss}", "service", service);
    g_variant_builder_add(&attributes, "{ss}", "account", host.c_str());
    return g_variant_builder_end(&attributes);
}

std::vector<std::string> pathsIn(GVariant *reply, std::size_t index)
{
    GVariantReference const list(g_variant_get_child_value(reply, index));
    std::vector<std::string> paths;
    for (gsize at = 0; at < g_variant_n_children(list.get()); ++at) {
        GVariantReference const path(g_variant_get_child_value(list.get(), at));
        paths.emplace_back(g_variant_get_string(path.get(), nullptr));
    }
    return paths;
}

std::string_view textIn(GVariantReference const &reply, std::size_t index)
{
    char const *text = "";
    g_variant_get_child(reply.get(), index, "&o", &text);
    return text;
}

/// Reads the paths of the items only, and unlocks nothing.
Items itemsOf(BusSession &session, std::string const &host)
{
    auto *const attributes = attributesOf(host);
    auto const reply = session.call(store, {storeObject, "org.freedesktop.Secret.Service", "SearchItems"},
                                    g_variant_new_tuple(&attributes, 1), "(aoao)");
    if (!reply)
        return {};
    return {.unlocked = pathsIn(reply.get(), 0), .locked = pathsIn(reply.get(), 1)};
}

/// Opens the key store with an agreed key, so that a process that watches the bus cannot read a password.
///
/// libsecret uses the connection that the process shares. Making that connection cannot be cancelled, so this is the
/// last step: the session has just had replies from the same bus.
GObjectReference<SecretService> openStore(BusSession &session)
{
    auto const opened = session.await([](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
        secret_service_open(SECRET_TYPE_SERVICE, store, SECRET_SERVICE_OPEN_SESSION, cancellable, done, data);
    });
    GObjectReference<SecretService> service(secret_service_open_finish(opened.get(), nullptr));
    // Otherwise this process would end with the bus.
    if (service)
        g_dbus_connection_set_exit_on_close(g_dbus_proxy_get_connection(G_DBUS_PROXY(service.get())), FALSE);
    return service;
}

std::optional<SecretText> secretOf(BusSession &session, std::string const &item)
{
    auto const opened = openStore(session);
    if (!opened)
        return std::nullopt;
    auto const got = session.await([&](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
        secret_service_get_secret_for_dbus_path(opened.get(), item.c_str(), cancellable, done, data);
    });
    auto *const value = secret_service_get_secret_for_dbus_path_finish(opened.get(), got.get(), nullptr);
    if (!value)
        return std::nullopt;
    gsize length = 0;
    auto const *const bytes = secret_value_get(value, &length);
    std::optional<SecretText> text;
    if (std::string_view const read(bytes, length); isUtf8(read))
        text.emplace(read);
    secret_value_unref(value); // overwrites its memory
    return text;
}

bool removeItems(BusSession &session, Items const &items)
{
    bool areGone = items.locked.empty() && !items.unlocked.empty();
    for (auto const &item : items.unlocked) {
        auto const reply = session.call(store, {item.c_str(), "org.freedesktop.Secret.Item", "Delete"},
                                        g_variant_new_tuple(nullptr, 0), "(o)");
        areGone = areGone && reply && textIn(reply, 0) == noPrompt;
    }
    return areGone;
}

void askToUnlock(BusSession &session, std::vector<std::string> const &items, std::stop_token giveUp, Limit limit)
{
    GVariantBuilder paths;
    g_variant_builder_init(&paths, G_VARIANT_TYPE("ao"));
    for (auto const &item : items)
        g_variant_builder_add(&paths, "o", item.c_str());
    auto const reply = session.call(store, {storeObject, "org.freedesktop.Secret.Service", "Unlock"},
                                    g_variant_new("(ao)", &paths), "(aoo)");
    if (!reply || textIn(reply, 1) == noPrompt)
        return;
    std::string const prompt(textIn(reply, 1));
    auto const method = [&](char const *name) {
        return BusSession::Method{prompt.c_str(), "org.freedesktop.Secret.Prompt", name};
    };
    // No window of ours is named as the parent of the prompt: this works without windows.
    auto const isAnswered =
        session.callUntilSignal(store, method("Prompt"), g_variant_new("(s)", ""), "Completed", limit, giveUp);
    // The key store does not notice that nobody waits for the answer any more.
    if (!isAnswered)
        session.call(store, method("Dismiss"), g_variant_new_tuple(nullptr, 0), "()");
}

GVariant *newItem(std::string const &host, GVariant *secret)
{
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    auto const label = (host.starts_with('/') ? "SSH passphrase for " : "SSH password for ") + host;
    g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Label",
                          g_variant_new_string(label.c_str()));
    g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Attributes", attributesOf(host));
    return g_variant_new("(a{sv}@(oayays)b)", &properties, secret, TRUE);
}

bool add(BusSession &session, std::string_view password, std::string const &host)
{
    auto const opened = openStore(session);
    if (!opened)
        return false;
    auto *const value = secret_value_new(password.data(), static_cast<gssize>(password.size()), "text/plain");
    auto *const item = newItem(host, secret_service_encode_dbus_secret(opened.get(), value));
    secret_value_unref(value);
    // The agreed key belongs to this connection.
    auto *const connection = g_dbus_proxy_get_connection(G_DBUS_PROXY(opened.get()));
    auto const reply = session.callOn(
        connection, store, {defaultCollection, "org.freedesktop.Secret.Collection", "CreateItem"}, item, "(oo)");
    return reply && textIn(reply, 1) == noPrompt;
}

} // namespace

bool save(std::string_view password, std::string const &host, Limit limit)
{
    if (!isAccount(host) || !isUtf8(password))
        return false;
    BusSession session(SessionBus::address(), limit);
    if (!session.connection())
        return password.empty();
    auto const items = itemsOf(session, host);
    removeItems(session, items);
    // A locked item cannot be removed.
    return password.empty() ? items.locked.empty() : add(session, password, host);
}

std::optional<SecretText> read(std::string const &host, Limit limit)
{
    if (!isAccount(host))
        return std::nullopt;
    BusSession session(SessionBus::address(), limit);
    if (!session.connection())
        return std::nullopt;
    auto const items = itemsOf(session, host);
    return items.unlocked.empty() ? std::nullopt : secretOf(session, items.unlocked.front());
}

Presence presence(std::string const &host, Limit limit)
{
    return find({host}, limit).presence;
}

Found find(std::vector<std::string> const &accounts, Limit limit)
{
    BusSession session(SessionBus::address(), limit);
    Found found;
    for (auto const &account : accounts) {
        if (!session.connection() || !isAccount(account))
            continue;
        auto const items = itemsOf(session, account);
        if (!items.unlocked.empty())
            return {Presence::readable, account};
        if (!items.locked.empty() && found.presence == Presence::none)
            found = {Presence::locked, account};
    }
    return found;
}

bool exists(std::string const &host, Limit limit)
{
    return presence(host, limit) != Presence::none;
}

bool unlock(std::string const &host, std::stop_token giveUp, Limit limit)
{
    if (!isAccount(host))
        return false;
    BusSession session(SessionBus::address(),
                       limit + usualLimit); // the calls before and after the prompt need time of their own
    if (!session.connection())
        return false;
    auto const before = itemsOf(session, host);
    if (!before.unlocked.empty() || before.locked.empty())
        return !before.unlocked.empty();
    askToUnlock(session, before.locked, std::move(giveUp), limit);
    return !itemsOf(session, host).unlocked.empty();
}

bool canSave(Limit limit)
{
    BusSession session(SessionBus::address(), limit);
    if (!session.connection())
        return false;
    auto const reply = session.call(store, {defaultCollection, "org.freedesktop.DBus.Properties", "Get"},
                                    g_variant_new("(ss)", "org.freedesktop.Secret.Collection", "Locked"), "(v)");
    if (!reply)
        return false;
    GVariantReference const boxed(g_variant_get_child_value(reply.get(), 0));
    GVariantReference const isLocked(g_variant_get_variant(boxed.get()));
    return g_variant_is_of_type(isLocked.get(), G_VARIANT_TYPE_BOOLEAN) != FALSE &&
           g_variant_get_boolean(isLocked.get()) == FALSE;
}

bool remove(std::string const &host, Limit limit)
{
    if (!isAccount(host))
        return false;
    BusSession session(SessionBus::address(), limit);
    return session.connection() && removeItems(session, itemsOf(session, host));
}

} // namespace tw::SSHPassword
