#include "Platform/KeyCodes.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>

namespace Platform {
namespace {

struct Key {
    std::uint16_t virtualKeyCode;
    std::uint16_t evdevCode;
};

// By place, not by engraving. Two keys of other keyboards are taken by the PC's key in
// that place: keypad clear is NumLock, help is Insert.
constexpr std::array keys = {
    // letters
    Key{0, KEY_A},
    Key{11, KEY_B},
    Key{8, KEY_C},
    Key{2, KEY_D},
    Key{14, KEY_E},
    Key{3, KEY_F},
    Key{5, KEY_G},
    Key{4, KEY_H},
    Key{34, KEY_I},
    Key{38, KEY_J},
    Key{40, KEY_K},
    Key{37, KEY_L},
    Key{46, KEY_M},
    Key{45, KEY_N},
    Key{31, KEY_O},
    Key{35, KEY_P},
    Key{12, KEY_Q},
    Key{15, KEY_R},
    Key{1, KEY_S},
    Key{17, KEY_T},
    Key{32, KEY_U},
    Key{9, KEY_V},
    Key{13, KEY_W},
    Key{7, KEY_X},
    Key{16, KEY_Y},
    Key{6, KEY_Z},
    // digits
    Key{29, KEY_0},
    Key{18, KEY_1},
    Key{19, KEY_2},
    Key{20, KEY_3},
    Key{21, KEY_4},
    Key{23, KEY_5},
    Key{22, KEY_6},
    Key{26, KEY_7},
    Key{28, KEY_8},
    Key{25, KEY_9},
    // modifiers
    Key{57, KEY_CAPSLOCK},
    Key{56, KEY_LEFTSHIFT},
    Key{59, KEY_LEFTCTRL},
    Key{58, KEY_LEFTALT},
    Key{55, KEY_LEFTMETA},
    Key{54, KEY_RIGHTMETA},
    Key{61, KEY_RIGHTALT},
    Key{62, KEY_RIGHTCTRL},
    Key{60, KEY_RIGHTSHIFT},
    // punctuation
    Key{36, KEY_ENTER},
    Key{42, KEY_BACKSLASH},
    Key{50, KEY_GRAVE},
    Key{43, KEY_COMMA},
    Key{24, KEY_EQUAL},
    Key{27, KEY_MINUS},
    Key{47, KEY_DOT},
    Key{39, KEY_APOSTROPHE},
    Key{41, KEY_SEMICOLON},
    Key{44, KEY_SLASH},
    Key{49, KEY_SPACE},
    Key{48, KEY_TAB},
    Key{33, KEY_LEFTBRACE},
    Key{30, KEY_RIGHTBRACE},
    Key{10, KEY_102ND},
    // navigation
    Key{116, KEY_PAGEUP},
    Key{121, KEY_PAGEDOWN},
    Key{115, KEY_HOME},
    Key{119, KEY_END},
    Key{126, KEY_UP},
    Key{124, KEY_RIGHT},
    Key{125, KEY_DOWN},
    Key{123, KEY_LEFT},
    Key{53, KEY_ESC},
    Key{51, KEY_BACKSPACE},
    Key{117, KEY_DELETE},
    Key{114, KEY_INSERT},
    Key{114, KEY_HELP},
    // media
    Key{74, KEY_MUTE},
    Key{72, KEY_VOLUMEUP},
    Key{73, KEY_VOLUMEDOWN},
    // function keys
    Key{122, KEY_F1},
    Key{120, KEY_F2},
    Key{99, KEY_F3},
    Key{118, KEY_F4},
    Key{96, KEY_F5},
    Key{97, KEY_F6},
    Key{98, KEY_F7},
    Key{100, KEY_F8},
    Key{101, KEY_F9},
    Key{109, KEY_F10},
    Key{103, KEY_F11},
    Key{111, KEY_F12},
    Key{105, KEY_F13},
    Key{107, KEY_F14},
    Key{113, KEY_F15},
    Key{106, KEY_F16},
    Key{64, KEY_F17},
    Key{79, KEY_F18},
    Key{80, KEY_F19},
    Key{90, KEY_F20},
    // keypad
    Key{82, KEY_KP0},
    Key{83, KEY_KP1},
    Key{84, KEY_KP2},
    Key{85, KEY_KP3},
    Key{86, KEY_KP4},
    Key{87, KEY_KP5},
    Key{88, KEY_KP6},
    Key{89, KEY_KP7},
    Key{91, KEY_KP8},
    Key{92, KEY_KP9},
    Key{71, KEY_NUMLOCK},
    Key{65, KEY_KPDOT},
    Key{75, KEY_KPSLASH},
    Key{76, KEY_KPENTER},
    Key{81, KEY_KPEQUAL},
    Key{78, KEY_KPMINUS},
    Key{67, KEY_KPASTERISK},
    Key{69, KEY_KPPLUS},
};

}  // namespace

std::optional<std::uint16_t> evdevCode(std::int64_t virtualKeyCode)
{
    const auto* key = std::find_if(keys.begin(), keys.end(), [&](const Key& candidate) { return candidate.virtualKeyCode == virtualKeyCode; });
    if (key == keys.end())
        return std::nullopt;
    return key->evdevCode;
}

std::optional<std::uint16_t> virtualKeyCode(std::uint16_t evdevCode)
{
    const auto* key = std::find_if(keys.begin(), keys.end(), [&](const Key& candidate) { return candidate.evdevCode == evdevCode; });
    if (key == keys.end())
        return std::nullopt;
    return key->virtualKeyCode;
}

}  // namespace Platform
