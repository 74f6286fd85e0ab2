// A stand-in for a key store that is locked and asks its user: no real prompt can be answered without a screen. It has
// the methods that lead to a prompt, and no passwords.
//
// standin_key_store answered  the user answers the prompt at once, and the store is unlocked
// standin_key_store stays     the prompt stays on the screen until it is dismissed

#include <gio/gio.h>

#include <cstring>
#include <string>

namespace {

constexpr auto storeName = "org.freedesktop.secrets";
constexpr auto storeObject = "/org/freedesktop/secrets";
constexpr auto itemObject = "/org/freedesktop/secrets/collection/login/1";
constexpr auto promptObject = "/org/freedesktop/secrets/prompt/1";

constexpr auto interfaces = R"(<node>
<interface name="org.freedesktop.Secret.Service">
  <method name="SearchItems"><arg direction="in" type="a{ss}"/><arg direction="out" type="ao"/><arg direction="out" type="ao"/></method>
  <method name="Unlock"><arg direction="in" type="ao"/><arg direction="out" type="ao"/><arg direction="out" type="o"/></method>
</interface>
<interface name="org.freedesktop.Secret.Prompt">
  <method name="Prompt"><arg direction="in" type="s"/></method>
  <method name="Dismiss"/>
  <signal name="Completed"><arg type="b"/><arg type="v"/></signal>
</interface>
<interface name="com.velmora.Tarnwick.StandIn">
  <method name="Shown"><arg direction="out" type="u"/></method>
  <method name="Dismissed"><arg direction="out" type="u"/></method>
</interface>
</node>)";

struct Store {
    bool isAnswered = false;
    bool isLocked = true;
    guint32 shown = 0;
    guint32 dismissed = 0;
};

GVariant *paths(bool hasItem)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("ao"));
    if (hasItem)
        g_variant_builder_add(&list, "o", itemObject);
    return g_variant_builder_end(&list);
}

bool isForBox(GVariant *arguments)
{
    char const *account = nullptr;
    auto *const attributes = g_variant_get_child_value(arguments, 0);
    auto const isBox =
        g_variant_lookup(attributes, "account", "&s", &account) != FALSE && std::strcmp(account, "box") == 0;
    g_variant_unref(attributes);
    return isBox;
}

void complete(GDBusConnection *bus, bool isDismissed)
{
    g_dbus_connection_emit_signal(bus, nullptr, promptObject, "org.freedesktop.Secret.Prompt", "Completed",
                                  g_variant_new("(bv)", isDismissed, paths(!isDismissed)), nullptr);
}

void answer(GDBusConnection *bus, char const * /*caller*/, char const * /*object*/, char const * /*interface*/,
            char const *method, GVariant *arguments, GDBusMethodInvocation *call, gpointer data)
{
    auto &store = *static_cast<Store *>(data);
    std::string const name(method);
    GVariant *reply = nullptr;
    if (name == "SearchItems") {
        auto const isThere = isForBox(arguments);
        reply = g_variant_new("(@ao@ao)", paths(isThere && !store.isLocked), paths(isThere && store.isLocked));
    } else if (name == "Unlock") {
        reply = g_variant_new("(@aoo)", paths(!store.isLocked), store.isLocked ? promptObject : "/");
    } else if (name == "Shown") {
        reply = g_variant_new("(u)", store.shown);
    } else if (name == "Dismissed") {
        reply = g_variant_new("(u)", store.dismissed);
    }
    g_dbus_method_invocation_return_value(call, reply);
    if (name == "Prompt") {
        ++store.shown;
        if (store.isAnswered) {
            store.isLocked = false;
            complete(bus, false);
        }
    } else if (name == "Dismiss") {
        ++store.dismissed;
        complete(bus, true);
    }
}

constexpr GDBusInterfaceVTable table{
    .method_call = answer, .get_property = nullptr, .set_property = nullptr, .padding = {}};

void publish(GDBusConnection *bus, char const * /*name*/, gpointer store)
{
    auto *const node = g_dbus_node_info_new_for_xml(interfaces, nullptr);
    for (auto const *const object : {storeObject, promptObject}) {
        for (auto *const *interface = node->interfaces; *interface; ++interface)
            g_dbus_connection_register_object(bus, object, *interface, &table, store, nullptr, nullptr);
    }
    g_dbus_node_info_unref(node);
}

} // namespace

int main(int count, char **arguments)
{
    if (count != 2)
        return 2;
    Store store{.isAnswered = std::string(arguments[1]) == "answered"};
    g_bus_own_name(G_BUS_TYPE_STARTER, storeName, G_BUS_NAME_OWNER_FLAGS_NONE, publish, nullptr, nullptr, &store,
                   nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
