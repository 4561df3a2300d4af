// Owners of what GLib's C interfaces hand out.
#pragma once

#include <gio/gio.h>

#include <memory>

namespace Platform::Freedesktop {

struct ObjectDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct VariantDeleter {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
struct MemoryDeleter {
    void operator()(gpointer memory) const { g_free(memory); }
};
struct TextsDeleter {
    void operator()(gchar** texts) const { g_strfreev(texts); }
};
struct SchemaDeleter {
    void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
};
struct SchemaKeyDeleter {
    void operator()(GSettingsSchemaKey* key) const { g_settings_schema_key_unref(key); }
};

template <typename Object> using ObjectPointer = std::unique_ptr<Object, ObjectDeleter>;
using VariantPointer = std::unique_ptr<GVariant, VariantDeleter>;
using TextPointer = std::unique_ptr<gchar, MemoryDeleter>;
using TextsPointer = std::unique_ptr<gchar*, TextsDeleter>;
using SchemaPointer = std::unique_ptr<GSettingsSchema, SchemaDeleter>;
using SchemaKeyPointer = std::unique_ptr<GSettingsSchemaKey, SchemaKeyDeleter>;

// While it lives, GLib answers asynchronous calls of this thread in a context of its
// own, so that nothing runs in, or is left behind for, the program's main loop.
class PrivateMainContext {
public:
    PrivateMainContext() : m_context(g_main_context_new()) { g_main_context_push_thread_default(m_context); }
    ~PrivateMainContext()
    {
        g_main_context_pop_thread_default(m_context);
        g_main_context_unref(m_context);
    }
    PrivateMainContext(const PrivateMainContext&) = delete;
    PrivateMainContext& operator=(const PrivateMainContext&) = delete;

    GMainContext* get() const { return m_context; }

private:
    GMainContext* m_context;
};

}  // namespace Platform::Freedesktop
