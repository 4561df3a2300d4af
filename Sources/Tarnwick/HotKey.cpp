#include "Tarnwick/HotKey.h"

#include <limits>
#include <string>

#include "Platform/FatalError.h"
#include "Platform/KeyCodes.h"

namespace Tarnwick {
namespace {

using KeyboardShortcuts::Key;
using KeyboardShortcuts::Shortcut;

constexpr std::string_view keyCodeKey = "tarnwick.hotkey.keyCode";
constexpr std::string_view modifiersKey = "tarnwick.hotkey.modifiers";
constexpr std::string_view crosshairShortcutKey = "KeyboardShortcuts_toggleCrosshair";

constexpr std::uint32_t defaultModifiers = Platform::ModifierFlag::option | Platform::ModifierFlag::command;

std::uint32_t modifierFlags(std::int64_t mask)
{
    if (mask < 0 || mask > std::numeric_limits<std::uint32_t>::max())
        Platform::fatalError("the stored modifier mask is no unsigned 32-bit value", std::to_string(mask));
    namespace Old = Platform::CarbonModifier;
    namespace New = Platform::ModifierFlag;
    const auto translated = [mask](std::uint32_t oldBit, std::uint32_t newFlag) { return (mask & oldBit) != 0 ? newFlag : 0; };
    return translated(Old::command, New::command) | translated(Old::shift, New::shift) | translated(Old::option, New::option) |
        translated(Old::control, New::control);
}

}  // namespace

const KeyboardShortcuts::Name& ShortcutNames::toggleCrosshair()
{
    if (!m_toggleCrosshair)
        m_toggleCrosshair = m_shortcuts.declareName("toggleCrosshair", Shortcut(Key::x, defaultModifiers));
    return *m_toggleCrosshair;
}

const KeyboardShortcuts::Name& ShortcutNames::toggleLoupe()
{
    if (!m_toggleLoupe)
        m_toggleLoupe = m_shortcuts.declareName("toggleLoupe", Shortcut(Key::l, defaultModifiers));
    return *m_toggleLoupe;
}

void LegacyHotKeyMigration::runIfNeeded(Platform::UserDefaults& defaults, KeyboardShortcuts::KeyboardShortcuts& shortcuts, ShortcutNames& names)
{
    if (!defaults.object(keyCodeKey))
        return;
    if (!defaults.object(crosshairShortcutKey)) {
        const auto keyCode = defaults.integerValue(keyCodeKey).value_or(0);
        const auto flags = modifierFlags(defaults.integerValue(modifiersKey).value_or(0));
        if (flags != 0)
            shortcuts.setShortcut(Shortcut(Key(keyCode), flags), names.toggleCrosshair());
    }
    defaults.removeObject(keyCodeKey);
    defaults.removeObject(modifiersKey);
}

}  // namespace Tarnwick
