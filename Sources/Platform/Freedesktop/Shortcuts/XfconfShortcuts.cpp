#include "Platform/Freedesktop/Shortcuts/XfconfShortcuts.h"

#include <algorithm>
#include <array>

#include "Platform/Freedesktop/Shortcuts/SessionBus.h"

namespace Platform::Freedesktop {
namespace {

// Keys that the window manager takes only while a window is being moved or resized.
constexpr std::array<std::string_view, 5> contextKeys = {"cancel_key", "up_key", "down_key", "left_key", "right_key"};

bool isInForce(GVariant* value)
{
    if (!g_variant_is_of_type(value, G_VARIANT_TYPE_STRING))
        return false;
    const std::string_view action = g_variant_get_string(value, nullptr);
    return !action.empty() && std::find(contextKeys.begin(), contextKeys.end(), action) == contextKeys.end();
}

VariantPointer propertiesOf(const SessionBus& bus, const std::string& base, Deadline deadline)
{
    const BusObject xfconf = {"org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf"};
    return bus.call(xfconf, "GetAllProperties", g_variant_new("(ss)", "xfce4-keyboard-shortcuts", base.c_str()), "(a{sv})", deadline);
}

bool hasOverride(GVariant* properties, const std::string& base)
{
    const VariantPointer dictionary(g_variant_get_child_value(properties, 0));
    gboolean isOverridden = FALSE;
    return g_variant_lookup(dictionary.get(), (base + "/override").c_str(), "b", &isOverridden) != FALSE && isOverridden != FALSE;
}

// Property names are the base, a slash and the accelerator; what has further slashes
// are details of one.
void addAccelerators(std::vector<Accelerator>& accelerators, GVariant* properties, const std::string& base)
{
    const VariantPointer dictionary(g_variant_get_child_value(properties, 0));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, dictionary.get());
    const gchar* name = nullptr;
    GVariant* value = nullptr;
    while (g_variant_iter_next(&iterator, "{&sv}", &name, &value) != FALSE) {
        const VariantPointer owned(value);
        const std::string_view property = name;
        if (!property.starts_with(base + '/') || !isInForce(value))
            continue;
        if (const auto accelerator = parseAccelerator(property.substr(base.size() + 1)))
            accelerators.push_back(*accelerator);
    }
}

// As Xfce does: the user's tree counts as a whole once it says so, else the default one.
void addProvider(std::vector<Accelerator>& accelerators, const SessionBus& bus, const std::string& provider, Deadline deadline)
{
    auto base = provider + "/custom";
    auto properties = propertiesOf(bus, base, deadline);
    if (!properties || !hasOverride(properties.get(), base)) {
        base = provider + "/default";
        properties = propertiesOf(bus, base, deadline);
    }
    if (properties)
        addAccelerators(accelerators, properties.get(), base);
}

}  // namespace

std::vector<Accelerator> XfconfShortcuts::accelerators(Deadline deadline)
{
    std::vector<Accelerator> found;
    if (const auto bus = SessionBus::connect(deadline)) {
        addProvider(found, *bus, "/commands", deadline);
        addProvider(found, *bus, "/xfwm4", deadline);
    }
    return found;
}

}  // namespace Platform::Freedesktop
