#include "Platform/Freedesktop/Shortcuts/KGlobalAccelShortcuts.h"

#include "Platform/Freedesktop/Shortcuts/SessionBus.h"

namespace Platform::Freedesktop {
namespace {

constexpr auto* service = "org.kde.kglobalaccel";

// A component of a program that does not run now has shortcuts, but no keys.
bool isActive(const SessionBus& bus, const BusObject& component, Deadline deadline)
{
    const auto reply = bus.call(component, "isActive", nullptr, "(b)", deadline);
    gboolean active = TRUE;
    if (reply)
        g_variant_get(reply.get(), "(b)", &active);
    return active != FALSE;
}

// Each information: names of action, component and context, the keys in force, the
// default keys; each key a Qt key combination, 0 for none.
void addComponent(std::vector<Accelerator>& accelerators, const SessionBus& bus, const BusObject& component, Deadline deadline)
{
    const auto reply = bus.call(component, "allShortcutInfos", nullptr, "(a(ssssssaiai))", deadline);
    if (!reply || !isActive(bus, component, deadline))
        return;
    const VariantPointer informations(g_variant_get_child_value(reply.get(), 0));
    constexpr gsize keysIndex = 6;
    for (gsize i = 0; i < g_variant_n_children(informations.get()); ++i) {
        const VariantPointer information(g_variant_get_child_value(informations.get(), i));
        const VariantPointer keys(g_variant_get_child_value(information.get(), keysIndex));
        gsize count = 0;
        const auto* combinations = static_cast<const gint32*>(g_variant_get_fixed_array(keys.get(), &count, sizeof(gint32)));
        for (gsize key = 0; key < count; ++key) {
            if (const auto accelerator = acceleratorOfQtKey(static_cast<std::uint32_t>(combinations[key])))
                accelerators.push_back(*accelerator);
        }
    }
}

}  // namespace

std::vector<Accelerator> KGlobalAccelShortcuts::accelerators(Deadline deadline)
{
    std::vector<Accelerator> found;
    const auto bus = SessionBus::connect(deadline);
    if (!bus)
        return found;
    const auto reply = bus->call({service, "/kglobalaccel", "org.kde.KGlobalAccel"}, "allComponents", nullptr, "(ao)", deadline);
    if (!reply)
        return found;
    const VariantPointer paths(g_variant_get_child_value(reply.get(), 0));
    for (gsize i = 0; i < g_variant_n_children(paths.get()); ++i) {
        const VariantPointer path(g_variant_get_child_value(paths.get(), i));
        addComponent(found, *bus, {service, g_variant_get_string(path.get(), nullptr), "org.kde.kglobalaccel.Component"}, deadline);
    }
    return found;
}

}  // namespace Platform::Freedesktop
