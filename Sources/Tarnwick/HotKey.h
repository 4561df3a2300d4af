// The program's two global shortcuts, and the one hot key that an earlier version kept
// in settings of its own. Main thread only.
#pragma once

#include <optional>

#include "KeyboardShortcuts/KeyboardShortcuts.h"
#include "Platform/UserDefaults.h"

namespace Tarnwick {

// Each name is declared on first use; that stores its default shortcut where the store
// holds nothing for it.
class ShortcutNames {
public:
    explicit ShortcutNames(KeyboardShortcuts::KeyboardShortcuts& shortcuts) : m_shortcuts(shortcuts) { }

    const KeyboardShortcuts::Name& toggleCrosshair();  // default Option-Command-X
    const KeyboardShortcuts::Name& toggleLoupe();      // default Option-Command-L

private:
    KeyboardShortcuts::KeyboardShortcuts& m_shortcuts;
    std::optional<KeyboardShortcuts::Name> m_toggleCrosshair;
    std::optional<KeyboardShortcuts::Name> m_toggleLoupe;
};

namespace LegacyHotKeyMigration {

// Moves the old crosshair hot key into the shortcut store, unless something is stored
// there already, and removes the old settings. Must run before the names are used. A
// stored modifier mask that is no unsigned 32-bit value is a fatal error.
void runIfNeeded(Platform::UserDefaults&, KeyboardShortcuts::KeyboardShortcuts&, ShortcutNames&);

}  // namespace LegacyHotKeyMigration
}  // namespace Tarnwick
