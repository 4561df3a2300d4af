// A key combination as desktops write it down, before it is known which physical key
// the keyboard layout puts the symbol on.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Platform::Freedesktop {

struct Accelerator {
    std::uint32_t keysym = 0;     // of libxkbcommon, letters in lower case; 0 where the key is named by its place
    std::uint16_t evdevCode = 0;  // the key's place; 0 where it is named by its symbol
    std::uint32_t carbonModifiers = 0;
    bool takesShiftOfSymbol = false;  // a symbol typed with Shift means Shift too

    friend bool operator==(const Accelerator&, const Accelerator&) = default;
};

// The form of GTK and its desktops: "<Super><Shift>l", "<Primary>Escape", "XF86Mail",
// "Above_Tab", "0x2f" (an X key code). Meta counts as Alt and Hyper as Super, as X
// servers have them; lock modifiers do not count. Nothing for "disabled", an empty text,
// modifiers alone, unknown names and modifiers that no shortcut of ours can have.
std::optional<Accelerator> parseAccelerator(std::string_view);

// The form of Qt and KDE: the sum of a Qt::Key and Qt::KeyboardModifiers. Its Meta is
// Super, and "Meta++" means Shift where that types the plus sign. Nothing for keys that
// no keyboard layout has a symbol for.
std::optional<Accelerator> acceleratorOfQtKey(std::uint32_t combination);

}  // namespace Platform::Freedesktop
