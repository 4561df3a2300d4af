#include "Platform/Freedesktop/Shortcuts/GSettingsShortcuts.h"

#include <array>
#include <string>

#include "Platform/Freedesktop/Shortcuts/GLibPointer.h"
#include "Platform/Freedesktop/Shortcuts/SessionBus.h"

namespace Platform::Freedesktop {
namespace {

constexpr std::array gnome = {"org.gnome.desktop.wm.keybindings", "org.gnome.settings-daemon.plugins.media-keys", "org.gnome.shell.keybindings",
    "org.gnome.mutter.keybindings", "org.gnome.mutter.wayland.keybindings"};
constexpr std::array cinnamon = {
    "org.cinnamon.desktop.keybindings", "org.cinnamon.desktop.keybindings.wm", "org.cinnamon.desktop.keybindings.media-keys"};
constexpr std::array mate = {"org.mate.Marco.global-keybindings", "org.mate.Marco.window-keybindings", "org.mate.SettingsDaemon.plugins.media-keys"};

SchemaPointer installedSchema(const char* name)
{
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    return SchemaPointer(source != nullptr ? g_settings_schema_source_lookup(source, name, TRUE) : nullptr);
}

// As GLib demands of a path; it stops at others.
bool isSettingsPath(const std::string& path)
{
    return path.size() > 1 && path.starts_with('/') && path.ends_with('/') && path.find("//") == std::string::npos;
}

// The texts of a value, be it one or a list; none for other types.
std::vector<std::string> textsOf(GVariant* value)
{
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING))
        return {g_variant_get_string(value, nullptr)};
    std::vector<std::string> texts;
    if (!g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY))
        return texts;
    for (gsize i = 0; i < g_variant_n_children(value); ++i) {
        const VariantPointer text(g_variant_get_child_value(value, i));
        texts.emplace_back(g_variant_get_string(text.get(), nullptr));
    }
    return texts;
}

std::vector<std::string> textsOf(GSettings* settings, const char* key)
{
    const VariantPointer value(g_settings_get_value(settings, key));
    return textsOf(value.get());
}

// Whether anything was found.
bool addAccelerators(std::vector<Accelerator>& accelerators, const std::vector<std::string>& texts)
{
    const auto before = accelerators.size();
    for (const auto& text : texts) {
        if (const auto accelerator = parseAccelerator(text))
            accelerators.push_back(*accelerator);
    }
    return accelerators.size() != before;
}

void addSchema(std::vector<Accelerator>& accelerators, const char* name)
{
    const auto schema = installedSchema(name);
    if (!schema || g_settings_schema_get_path(schema.get()) == nullptr)
        return;
    const ObjectPointer<GSettings> settings(g_settings_new_full(schema.get(), nullptr, nullptr));
    const TextsPointer keys(g_settings_schema_list_keys(schema.get()));
    for (gchar** key = keys.get(); *key != nullptr; ++key)
        addAccelerators(accelerators, textsOf(settings.get(), *key));
}

bool addCustom(std::vector<Accelerator>& accelerators, GSettingsSchema* schema, const std::string& path)
{
    constexpr auto* key = "binding";
    if (!isSettingsPath(path) || g_settings_schema_has_key(schema, key) == FALSE)
        return false;
    const ObjectPointer<GSettings> settings(g_settings_new_full(schema, nullptr, path.c_str()));
    return addAccelerators(accelerators, textsOf(settings.get(), key));
}

void addListedCustom(std::vector<Accelerator>& accelerators, GSettingsSchema* schema, const CustomShortcuts& custom, Deadline deadline)
{
    const auto listSchema = installedSchema(custom.listSchema);
    if (!listSchema || g_settings_schema_has_key(listSchema.get(), custom.listKey) == FALSE)
        return;
    const ObjectPointer<GSettings> list(g_settings_new_full(listSchema.get(), nullptr, nullptr));
    for (const auto& entry : textsOf(list.get(), custom.listKey)) {
        if (std::chrono::steady_clock::now() >= deadline)
            return;
        addCustom(accelerators, schema, entry.starts_with('/') ? entry : custom.parentPath + entry + '/');
    }
}

// Deleted shortcuts leave gaps, which new ones fill first.
void addNumberedCustom(std::vector<Accelerator>& accelerators, GSettingsSchema* schema, const CustomShortcuts& custom, Deadline deadline)
{
    constexpr int widestGap = 16;
    int gap = 0;
    for (int number = 0; gap < widestGap && std::chrono::steady_clock::now() < deadline; ++number)
        gap = addCustom(accelerators, schema, custom.parentPath + ("custom" + std::to_string(number) + '/')) ? 0 : gap + 1;
}

}  // namespace

const SettingsSchemas gnomeSchemas = {gnome,
    {"org.gnome.settings-daemon.plugins.media-keys.custom-keybinding", "org.gnome.settings-daemon.plugins.media-keys", "custom-keybindings", "/"}};
const SettingsSchemas cinnamonSchemas = {cinnamon,
    {"org.cinnamon.desktop.keybindings.custom-keybinding", "org.cinnamon.desktop.keybindings", "custom-list",
        "/org/cinnamon/desktop/keybindings/custom-keybindings/"}};
const SettingsSchemas mateSchemas = {mate, {"org.mate.control-center.keybinding", nullptr, nullptr, "/org/mate/desktop/keybindings/"}};

std::vector<Accelerator> GSettingsShortcuts::accelerators(Deadline deadline)
{
    std::vector<Accelerator> found;
    // The settings back end watches for changes over the bus: where there is none, it
    // would start one.
    const auto bus = SessionBus::share(deadline);
    if (!bus)
        return found;
    const PrivateMainContext context;
    for (const auto* schema : m_schemas.schemas) {
        if (std::chrono::steady_clock::now() < deadline)
            addSchema(found, schema);
    }
    const auto customSchema = installedSchema(m_schemas.custom.schema);
    if (customSchema && m_schemas.custom.listSchema != nullptr)
        addListedCustom(found, customSchema.get(), m_schemas.custom, deadline);
    else if (customSchema)
        addNumberedCustom(found, customSchema.get(), m_schemas.custom, deadline);
    return found;
}

}  // namespace Platform::Freedesktop
