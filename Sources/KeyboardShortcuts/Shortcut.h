// A key with modifiers, in the form in which hot keys are registered and stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "KeyboardShortcuts/Event.h"
#include "KeyboardShortcuts/Key.h"
#include "KeyboardShortcuts/Texts.h"
#include "Platform/KeyboardLayout.h"

namespace KeyboardShortcuts {

class Shortcut {
public:
    // Modifiers that do not exist here are dropped (Utilities.h); the key code is taken
    // as it is.
    Shortcut(Key key, std::uint32_t modifierFlags);
    static Shortcut fromCarbon(std::int64_t carbonKeyCode, std::int64_t carbonModifiers);

    // Nothing unless a key went down or up. Never with the function modifier.
    static std::optional<Shortcut> fromEvent(const Event&);

    // The stored form: a JSON object with the integer members "carbonKeyCode" and
    // "carbonModifiers". Read back, further members are ignored and a number counts as
    // integer when its value is one (7, 7.0, 7e0); anything else gives nothing.
    static std::optional<Shortcut> fromJson(std::string_view);
    std::string toJson() const;

    std::int64_t carbonKeyCode() const { return m_carbonKeyCode; }
    std::int64_t carbonModifiers() const { return m_carbonModifiers; }
    Key key() const { return Key(m_carbonKeyCode); }
    std::uint32_t modifiers() const;  // Platform::ModifierFlag

    // The symbols of the modifiers and the key: "⌃⌥⌘P". A key that the layout cannot show
    // as one character is "�". UTF-8.
    std::string presentableDescription(Platform::KeyboardLayout&, const Texts&) const;

    // By which text a menu item names this key, without its modifiers; UTF-8. Nothing for
    // a special key that menus cannot name and for a key that types no single character.
    std::optional<std::string> nsMenuItemKeyEquivalent(Platform::KeyboardLayout&) const;

    friend bool operator==(const Shortcut&, const Shortcut&) = default;

private:
    Shortcut() = default;

    std::int64_t m_carbonKeyCode = 0;
    std::int64_t m_carbonModifiers = 0;  // of the existing modifiers only
};

// The character of the bare key in the layout that types ASCII, asked afresh. Nothing for
// special keys and where it is not exactly one character. A code outside 0...65535 stops
// the program.
std::optional<char32_t> keyToCharacter(Key, Platform::KeyboardLayout&);

}  // namespace KeyboardShortcuts

template <> struct std::hash<KeyboardShortcuts::Shortcut> {
    std::size_t operator()(const KeyboardShortcuts::Shortcut&) const noexcept;
};
