#include "KeyboardShortcuts/SpecialKey.h"

#include <algorithm>
#include <array>

#include "KeyboardShortcuts/Utilities.h"

namespace KeyboardShortcuts {
namespace {

constexpr std::array specialKeys = {
    SpecialKey{Key::return_, "\u21A9", 0x0D},
    SpecialKey{Key::delete_, "\u232B", 0x08},
    SpecialKey{Key::deleteForward, "\u2326", 0xF728},
    SpecialKey{Key::end, "\u2198", 0xF72B},
    SpecialKey{Key::escape, "\u238B", 0x1B},
    SpecialKey{Key::help, "?\u20DD", 0xF746},
    SpecialKey{Key::home, "\u2196", 0xF729},
    SpecialKey{Key::space, "", 0x20},
    SpecialKey{Key::tab, "\u21E5", 0x09},
    SpecialKey{Key::pageUp, "\u21DE", 0xF72C},
    SpecialKey{Key::pageDown, "\u21DF", 0xF72D},
    SpecialKey{Key::upArrow, "\u2191", 0xF700},
    SpecialKey{Key::rightArrow, "\u2192", 0xF703},
    SpecialKey{Key::downArrow, "\u2193", 0xF701},
    SpecialKey{Key::leftArrow, "\u2190", 0xF702},
    SpecialKey{Key::f1, "F1", 0xF704},
    SpecialKey{Key::f2, "F2", 0xF705},
    SpecialKey{Key::f3, "F3", 0xF706},
    SpecialKey{Key::f4, "F4", 0xF707},
    SpecialKey{Key::f5, "F5", 0xF708},
    SpecialKey{Key::f6, "F6", 0xF709},
    SpecialKey{Key::f7, "F7", 0xF70A},
    SpecialKey{Key::f8, "F8", 0xF70B},
    SpecialKey{Key::f9, "F9", 0xF70C},
    SpecialKey{Key::f10, "F10", 0xF70D},
    SpecialKey{Key::f11, "F11", 0xF70E},
    SpecialKey{Key::f12, "F12", 0xF70F},
    SpecialKey{Key::f13, "F13", 0xF710},
    SpecialKey{Key::f14, "F14", 0xF711},
    SpecialKey{Key::f15, "F15", 0xF712},
    SpecialKey{Key::f16, "F16", 0xF713},
    SpecialKey{Key::f17, "F17", 0xF714},
    SpecialKey{Key::f18, "F18", 0xF715},
    SpecialKey{Key::f19, "F19", 0xF716},
    SpecialKey{Key::f20, "F20", 0xF717},
    SpecialKey{Key::keypad0, "0\u20E3"},
    SpecialKey{Key::keypad1, "1\u20E3"},
    SpecialKey{Key::keypad2, "2\u20E3"},
    SpecialKey{Key::keypad3, "3\u20E3"},
    SpecialKey{Key::keypad4, "4\u20E3"},
    SpecialKey{Key::keypad5, "5\u20E3"},
    SpecialKey{Key::keypad6, "6\u20E3"},
    SpecialKey{Key::keypad7, "7\u20E3"},
    SpecialKey{Key::keypad8, "8\u20E3"},
    SpecialKey{Key::keypad9, "9\u20E3"},
    SpecialKey{Key::keypadClear, "\u2612\u20E3", 0xF739},
    SpecialKey{Key::keypadDecimal, ".\u20E3"},
    SpecialKey{Key::keypadDivide, "/\u20E3"},
    SpecialKey{Key::keypadEnter, "\u21A9\u20E3", 0x03},
    SpecialKey{Key::keypadEquals, "=\u20E3"},
    SpecialKey{Key::keypadMinus, "-\u20E3"},
    SpecialKey{Key::keypadMultiply, "*\u20E3"},
    SpecialKey{Key::keypadPlus, "+\u20E3"},
};

}  // namespace

std::string SpecialKey::presentableDescription(const Texts& texts) const { return symbol.empty() ? texts.text("space_key") : std::string(symbol); }

std::optional<std::string> SpecialKey::appKitMenuItemKeyEquivalent() const
{
    if (menuItemKeyEquivalent == 0)
        return std::nullopt;
    return encoded(menuItemKeyEquivalent);
}

const SpecialKey* specialKey(Key key)
{
    const auto* const found = std::find_if(specialKeys.begin(), specialKeys.end(), [&](const SpecialKey& special) { return special.key == key; });
    return found != specialKeys.end() ? found : nullptr;
}

}  // namespace KeyboardShortcuts
