#pragma once

#include <glib-object.h>

#include <memory>

namespace tw {

struct GObjectDeleter {
    void operator()(void *object) const noexcept { g_object_unref(object); }
};

/// Owns a reference to an object of GLib.
template <class T>
using GObjectReference = std::unique_ptr<T, GObjectDeleter>;

} // namespace tw
