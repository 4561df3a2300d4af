#include "Platform/Freedesktop/Shortcuts/ShortcutSource.h"

#include <algorithm>
#include <array>

#include "Platform/Freedesktop/Shortcuts/GSettingsShortcuts.h"
#include "Platform/Freedesktop/Shortcuts/KGlobalAccelShortcuts.h"
#include "Platform/Freedesktop/Shortcuts/XfconfShortcuts.h"

namespace Platform::Freedesktop {
namespace {

template <typename Source> std::unique_ptr<ShortcutSource> make() { return std::make_unique<Source>(); }
template <const SettingsSchemas& schemas> std::unique_ptr<ShortcutSource> makeSettings() { return std::make_unique<GSettingsShortcuts>(schemas); }

struct Desktop {
    std::string_view name;
    std::unique_ptr<ShortcutSource> (*makeSource)();
};

// Budgie, Unity and Pantheon keep their shortcuts where GNOME does.
constexpr std::array desktops = {
    Desktop{"GNOME", makeSettings<gnomeSchemas>},
    Desktop{"Budgie", makeSettings<gnomeSchemas>},
    Desktop{"Unity", makeSettings<gnomeSchemas>},
    Desktop{"Pantheon", makeSettings<gnomeSchemas>},
    Desktop{"X-Cinnamon", makeSettings<cinnamonSchemas>},
    Desktop{"Cinnamon", makeSettings<cinnamonSchemas>},
    Desktop{"MATE", makeSettings<mateSchemas>},
    Desktop{"XFCE", make<XfconfShortcuts>},
    Desktop{"KDE", make<KGlobalAccelShortcuts>},
};

}  // namespace

std::unique_ptr<ShortcutSource> shortcutSourceFor(std::string_view currentDesktop)
{
    while (!currentDesktop.empty()) {
        const auto name = currentDesktop.substr(0, currentDesktop.find(':'));
        const auto* found = std::find_if(desktops.begin(), desktops.end(), [&](const Desktop& each) { return each.name == name; });
        if (found != desktops.end())
            return found->makeSource();
        currentDesktop.remove_prefix(std::min(name.size() + 1, currentDesktop.size()));
    }
    return nullptr;
}

}  // namespace Platform::Freedesktop
