#include "Platform/Freedesktop/Accelerator.h"

#include <linux/input-event-codes.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

#include "Platform/KeyCodes.h"

namespace Platform::Freedesktop {
namespace {

constexpr unsigned xKeycodeOffset = 8;

struct NamedModifier {
    std::string_view name;
    std::uint32_t carbonModifier;
};

constexpr std::array namedModifiers = {
    NamedModifier{"shift", CarbonModifier::shift},
    NamedModifier{"shft", CarbonModifier::shift},
    NamedModifier{"control", CarbonModifier::control},
    NamedModifier{"ctrl", CarbonModifier::control},
    NamedModifier{"ctl", CarbonModifier::control},
    NamedModifier{"primary", CarbonModifier::control},
    NamedModifier{"alt", CarbonModifier::option},
    NamedModifier{"mod1", CarbonModifier::option},
    NamedModifier{"meta", CarbonModifier::option},
    NamedModifier{"super", CarbonModifier::command},
    NamedModifier{"mod4", CarbonModifier::command},
    NamedModifier{"hyper", CarbonModifier::command},
    NamedModifier{"lock", 0},
    NamedModifier{"mod2", 0},
    NamedModifier{"release", 0},
};

std::string inLowerCase(std::string_view text)
{
    std::string lower(text);
    for (char& character : lower) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return lower;
}

std::optional<std::uint32_t> carbonModifierOf(std::string_view name)
{
    const auto lower = inLowerCase(name);
    const auto* found = std::find_if(namedModifiers.begin(), namedModifiers.end(), [&](const NamedModifier& each) { return each.name == lower; });
    return found != namedModifiers.end() ? std::optional(found->carbonModifier) : std::nullopt;
}

// Before libxkbcommon is asked: it would take the number for a key symbol.
std::optional<std::uint16_t> placeOf(std::string_view key)
{
    if (key == "Above_Tab")
        return KEY_GRAVE;
    if (!key.starts_with("0x"))
        return std::nullopt;
    unsigned keycode = 0;
    const auto* end = key.data() + key.size();
    const auto result = std::from_chars(key.data() + 2, end, keycode, 16);
    const bool isKeycode = result.ec == std::errc() && result.ptr == end && keycode > xKeycodeOffset && keycode <= 255;
    return isKeycode ? std::optional(static_cast<std::uint16_t>(keycode - xKeycodeOffset)) : std::nullopt;
}

std::uint32_t keysymOf(std::string_view name)
{
    const std::string text(name);
    const auto exact = xkb_keysym_from_name(text.c_str(), XKB_KEYSYM_NO_FLAGS);
    return xkb_keysym_to_lower(exact != XKB_KEY_NoSymbol ? exact : xkb_keysym_from_name(text.c_str(), XKB_KEYSYM_CASE_INSENSITIVE));
}

// Bits of Qt::KeyboardModifier and values of Qt::Key, which Qt promises to keep.
namespace Qt {
constexpr std::uint32_t shift = 0x02000000;
constexpr std::uint32_t control = 0x04000000;
constexpr std::uint32_t alt = 0x08000000;
constexpr std::uint32_t meta = 0x10000000;
constexpr std::uint32_t keypad = 0x20000000;
constexpr std::uint32_t keyMask = 0x01ffffff;
constexpr std::uint32_t firstSpecialKey = 0x01000000;
constexpr std::uint32_t f1 = 0x01000030;
constexpr std::uint32_t f35 = 0x01000052;
}  // namespace Qt

struct SpecialKey {
    std::uint32_t key;
    std::uint32_t keysym;
};

constexpr std::array specialKeys = {
    SpecialKey{0x01000000, XKB_KEY_Escape},
    SpecialKey{0x01000001, XKB_KEY_Tab},
    SpecialKey{0x01000002, XKB_KEY_ISO_Left_Tab},
    SpecialKey{0x01000003, XKB_KEY_BackSpace},
    SpecialKey{0x01000004, XKB_KEY_Return},
    SpecialKey{0x01000005, XKB_KEY_KP_Enter},
    SpecialKey{0x01000006, XKB_KEY_Insert},
    SpecialKey{0x01000007, XKB_KEY_Delete},
    SpecialKey{0x01000008, XKB_KEY_Pause},
    SpecialKey{0x01000009, XKB_KEY_Print},
    SpecialKey{0x0100000a, XKB_KEY_Sys_Req},
    SpecialKey{0x0100000b, XKB_KEY_Clear},
    SpecialKey{0x01000010, XKB_KEY_Home},
    SpecialKey{0x01000011, XKB_KEY_End},
    SpecialKey{0x01000012, XKB_KEY_Left},
    SpecialKey{0x01000013, XKB_KEY_Up},
    SpecialKey{0x01000014, XKB_KEY_Right},
    SpecialKey{0x01000015, XKB_KEY_Down},
    SpecialKey{0x01000016, XKB_KEY_Page_Up},
    SpecialKey{0x01000017, XKB_KEY_Page_Down},
    SpecialKey{0x01000055, XKB_KEY_Menu},
    SpecialKey{0x01000058, XKB_KEY_Help},
    SpecialKey{0x01000070, XKB_KEY_XF86AudioLowerVolume},
    SpecialKey{0x01000071, XKB_KEY_XF86AudioMute},
    SpecialKey{0x01000072, XKB_KEY_XF86AudioRaiseVolume},
};

std::uint32_t keypadKeysymOf(std::uint32_t key)
{
    if (key >= '0' && key <= '9')
        return XKB_KEY_KP_0 + (key - '0');
    switch (key) {
    case '*':
        return XKB_KEY_KP_Multiply;
    case '+':
        return XKB_KEY_KP_Add;
    case '-':
        return XKB_KEY_KP_Subtract;
    case '.':
        return XKB_KEY_KP_Decimal;
    case '/':
        return XKB_KEY_KP_Divide;
    case '=':
        return XKB_KEY_KP_Equal;
    default:
        return XKB_KEY_NoSymbol;
    }
}

std::uint32_t keysymOfQtKey(std::uint32_t key)
{
    if (key >= Qt::f1 && key <= Qt::f35)
        return XKB_KEY_F1 + (key - Qt::f1);
    if (key < Qt::firstSpecialKey)
        return key != 0 ? xkb_keysym_to_lower(xkb_utf32_to_keysym(key)) : XKB_KEY_NoSymbol;
    const auto* found = std::find_if(specialKeys.begin(), specialKeys.end(), [&](const SpecialKey& each) { return each.key == key; });
    return found != specialKeys.end() ? found->keysym : XKB_KEY_NoSymbol;
}

std::uint32_t carbonModifiersOfQt(std::uint32_t combination)
{
    std::uint32_t modifiers = 0;
    modifiers |= (combination & Qt::shift) != 0 ? CarbonModifier::shift : 0;
    modifiers |= (combination & Qt::control) != 0 ? CarbonModifier::control : 0;
    modifiers |= (combination & Qt::alt) != 0 ? CarbonModifier::option : 0;
    modifiers |= (combination & Qt::meta) != 0 ? CarbonModifier::command : 0;
    return modifiers;
}

}  // namespace

std::optional<Accelerator> parseAccelerator(std::string_view text)
{
    Accelerator accelerator;
    while (text.starts_with('<')) {
        const auto end = text.find('>');
        const auto modifier = end != std::string_view::npos ? carbonModifierOf(text.substr(1, end - 1)) : std::nullopt;
        if (!modifier)
            return std::nullopt;
        accelerator.carbonModifiers |= *modifier;
        text.remove_prefix(end + 1);
    }
    accelerator.evdevCode = placeOf(text).value_or(0);
    if (accelerator.evdevCode == 0 && !text.starts_with("0x"))
        accelerator.keysym = keysymOf(text);
    return accelerator.keysym != 0 || accelerator.evdevCode != 0 ? std::optional(accelerator) : std::nullopt;
}

std::optional<Accelerator> acceleratorOfQtKey(std::uint32_t combination)
{
    const auto key = combination & Qt::keyMask;
    auto keysym = (combination & Qt::keypad) != 0 ? keypadKeysymOf(key) : XKB_KEY_NoSymbol;
    if (keysym == XKB_KEY_NoSymbol)
        keysym = keysymOfQtKey(key);
    if (keysym == XKB_KEY_NoSymbol)
        return std::nullopt;
    return Accelerator{.keysym = keysym, .carbonModifiers = carbonModifiersOfQt(combination), .takesShiftOfSymbol = true};
}

}  // namespace Platform::Freedesktop
