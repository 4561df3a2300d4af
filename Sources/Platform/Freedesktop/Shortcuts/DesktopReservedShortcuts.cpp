#include "Platform/Freedesktop/Shortcuts/DesktopReservedShortcuts.h"

#include <algorithm>
#include <cstdlib>

#include "Platform/Freedesktop/Shortcuts/ShortcutSource.h"
#include "Platform/KeyCodes.h"

namespace Platform::Freedesktop {
namespace {

std::optional<SymbolicHotKey> hotKeyOf(const Accelerator& accelerator, const KeyOfSymbol& keyOfSymbol)
{
    if (accelerator.evdevCode != 0) {
        const auto code = virtualKeyCode(accelerator.evdevCode);
        return code ? std::optional(SymbolicHotKey{true, *code, accelerator.carbonModifiers}) : std::nullopt;
    }
    const auto key = keyOfSymbol(accelerator.keysym);
    if (!key)
        return std::nullopt;
    const auto shift = accelerator.takesShiftOfSymbol && key->isShifted ? CarbonModifier::shift : 0;
    return SymbolicHotKey{true, key->virtualKeyCode, accelerator.carbonModifiers | shift};
}

}  // namespace

std::vector<SymbolicHotKey> DesktopReservedShortcuts::copySymbolicHotKeys()
{
    const auto source = shortcutSourceFor(m_options.currentDesktop);
    const auto accelerators = source ? source->accelerators(std::chrono::steady_clock::now() + m_options.patience) : std::vector<Accelerator>();
    std::vector<SymbolicHotKey> hotKeys;
    if (accelerators.empty())
        return hotKeys;
    const auto keyOfSymbol = m_options.currentKeys();
    for (const auto& accelerator : accelerators) {
        const auto hotKey = hotKeyOf(accelerator, keyOfSymbol);
        if (hotKey && std::find(hotKeys.begin(), hotKeys.end(), *hotKey) == hotKeys.end())
            hotKeys.push_back(*hotKey);
    }
    return hotKeys;
}

std::string DesktopReservedShortcuts::runningDesktop()
{
    const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
    return desktop != nullptr ? desktop : "";
}

}  // namespace Platform::Freedesktop
