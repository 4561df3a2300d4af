// A menu as data, for asking whether one of its items already uses a shortcut. The
// toolkit's side fills it from its menus.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "KeyboardShortcuts/Shortcut.h"
#include "Platform/KeyboardLayout.h"

namespace KeyboardShortcuts {

struct MenuItem {
    std::string title;
    std::string keyEquivalent;                    // UTF-8, as Shortcut::nsMenuItemKeyEquivalent() gives; upper case means shift
    std::uint32_t keyEquivalentModifierMask = 0;  // Platform::ModifierFlag
    std::vector<MenuItem> submenu;
};

// The first item that uses the shortcut: in order, an item before its submenu, a submenu
// before the next item. Null where none does. The item is one of those passed.
const MenuItem* menuItemWithMatchingShortcut(const Shortcut&, std::span<const MenuItem> menu, Platform::KeyboardLayout&);

}  // namespace KeyboardShortcuts
