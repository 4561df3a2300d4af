#include "KeyboardShortcuts/MenuItem.h"

#include <optional>

#include "KeyboardShortcuts/Utilities.h"
#include "Platform/KeyCodes.h"

namespace KeyboardShortcuts {
namespace {

bool usesShortcut(const MenuItem& item, const Shortcut& shortcut, const std::string& keyText)
{
    auto keyEquivalent = item.keyEquivalent;
    auto mask = item.keyEquivalentModifierMask;
    const auto character = singleCharacter(keyEquivalent);
    if ((shortcut.modifiers() & Platform::ModifierFlag::shift) != 0 && character && lowercased(*character) != keyEquivalent) {
        keyEquivalent = lowercased(*character);
        mask |= Platform::ModifierFlag::shift;
    }
    return keyText == keyEquivalent && shortcut.modifiers() == mask;
}

const MenuItem* firstItem(const Shortcut& shortcut, std::span<const MenuItem> menu, const std::string& keyText)
{
    for (const auto& item : menu) {
        if (usesShortcut(item, shortcut, keyText))
            return &item;
        if (const auto* const found = firstItem(shortcut, item.submenu, keyText))
            return found;
    }
    return nullptr;
}

}  // namespace

const MenuItem* menuItemWithMatchingShortcut(const Shortcut& shortcut, std::span<const MenuItem> menu, Platform::KeyboardLayout& layout)
{
    const auto keyText = shortcut.nsMenuItemKeyEquivalent(layout);
    return keyText ? firstItem(shortcut, menu, *keyText) : nullptr;
}

}  // namespace KeyboardShortcuts
