#include "Support/Desktop/TrayMenu.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace TestSupport {

using namespace Platform::Freedesktop;

namespace {

constexpr int root = 0;
constexpr int allLevels = -1;

// Separate texts for each key: {{"Super", "Alt", "X"}}.
std::string shortcutText(GVariant* chords)
{
    std::string text;
    if (g_variant_n_children(chords) == 0)
        return text;
    const VariantPointer keys(g_variant_get_child_value(chords, 0));
    for (gsize i = 0; i < g_variant_n_children(keys.get()); ++i) {
        const VariantPointer key(g_variant_get_child_value(keys.get(), i));
        text += (text.empty() ? "" : "+") + std::string(g_variant_get_string(key.get(), nullptr));
    }
    return text;
}

// What is not said has its default.
TrayMenuEntry entryFrom(int id, GVariant* properties)
{
    TrayMenuEntry entry{.id = id};
    const char* text = nullptr;
    if (g_variant_lookup(properties, "label", "&s", &text) != 0)
        entry.label = text;
    if (g_variant_lookup(properties, "type", "&s", &text) != 0 && std::string(text) == "separator")
        entry.label = "---";
    gboolean isTrue = 1;
    if (g_variant_lookup(properties, "enabled", "b", &isTrue) != 0)
        entry.isEnabled = isTrue != 0;
    if (g_variant_lookup(properties, "visible", "b", &isTrue) != 0)
        entry.isVisible = isTrue != 0;
    if (const VariantPointer chords(g_variant_lookup_value(properties, "shortcut", G_VARIANT_TYPE("aas"))); chords)
        entry.shortcut = shortcutText(chords.get());
    return entry;
}

std::vector<TrayMenuEntry> entriesFrom(GVariant* variants)
{
    std::vector<TrayMenuEntry> entries;
    for (gsize i = 0; i < g_variant_n_children(variants); ++i) {
        const VariantPointer boxed(g_variant_get_child_value(variants, i));
        const VariantPointer item(
            g_variant_is_of_type(boxed.get(), G_VARIANT_TYPE_VARIANT) != 0 ? g_variant_get_variant(boxed.get()) : g_variant_ref(boxed.get()));
        const VariantPointer id(g_variant_get_child_value(item.get(), 0));
        const VariantPointer properties(g_variant_get_child_value(item.get(), 1));
        entries.push_back(entryFrom(g_variant_get_int32(id.get()), properties.get()));
    }
    return entries;
}

GVariant* allProperties() { return g_variant_new_strv(nullptr, 0); }

}  // namespace

std::ostream& operator<<(std::ostream& stream, const TrayMenuEntry& entry)
{
    return stream << entry.id << " \"" << entry.label << "\" [" << entry.shortcut << "]" << (entry.isEnabled ? "" : " disabled")
                  << (entry.isVisible ? "" : " invisible");
}

TrayMenu::TrayMenu(std::shared_ptr<BusConnection> bus, const std::string& service, const std::string& path)
    : m_bus(std::move(bus)), m_object{service, path, "com.canonical.dbusmenu"}
{
}

std::vector<TrayMenuEntry> TrayMenu::entries() const
{
    const auto reply = m_bus->call(m_object, "GetLayout", g_variant_new("(ii@as)", root, allLevels, allProperties()));
    const VariantPointer layout(g_variant_get_child_value(reply.get(), 1));
    const VariantPointer children(g_variant_get_child_value(layout.get(), 2));
    return entriesFrom(children.get());
}

std::vector<TrayMenuEntry> TrayMenu::entriesAskedForOneByOne() const
{
    GVariantBuilder ids;
    g_variant_builder_init(&ids, G_VARIANT_TYPE("ai"));
    for (const auto& entry : entries())
        g_variant_builder_add(&ids, "i", entry.id);
    const auto reply = m_bus->call(m_object, "GetGroupProperties", g_variant_new("(@ai@as)", g_variant_builder_end(&ids), allProperties()));
    const VariantPointer all(g_variant_get_child_value(reply.get(), 0));
    return entriesFrom(all.get());
}

std::vector<std::string> TrayMenu::labels() const
{
    std::vector<std::string> labels;
    for (auto& entry : entries()) {
        if (entry.isVisible)
            labels.push_back(std::move(entry.label));
    }
    return labels;
}

std::string TrayMenu::shortcutOf(const std::string& label) const { return entryOf(label).shortcut; }

void TrayMenu::open() const
{
    m_bus->call(m_object, "AboutToShow", g_variant_new("(i)", root));
    sendEvent(root, "opened");
}

void TrayMenu::close() const { sendEvent(root, "closed"); }

void TrayMenu::click(const std::string& label) const { sendEvent(entryOf(label).id, "clicked"); }

TrayMenuEntry TrayMenu::entryOf(const std::string& label) const
{
    const auto all = entries();
    const auto entry = std::find_if(all.begin(), all.end(), [&](const TrayMenuEntry& one) { return one.label == label; });
    if (entry == all.end())
        throw std::runtime_error("the menu has no '" + label + "'");
    return *entry;
}

void TrayMenu::sendEvent(int id, const char* what) const
{
    m_bus->call(m_object, "Event", g_variant_new("(isvu)", id, what, g_variant_new_int32(0), guint32{0}));
}

}  // namespace TestSupport
