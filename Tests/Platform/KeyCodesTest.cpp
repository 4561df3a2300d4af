#include "Platform/KeyCodes.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

namespace {

struct Pair {
    std::uint16_t virtualKeyCode;
    std::uint16_t evdevCode;
};

// Both numberings are other people's and fixed for ever, so the table is repeated here in
// bare numbers.
constexpr std::array pairs = {
    // a to z
    Pair{0, 30}, Pair{11, 48}, Pair{8, 46}, Pair{2, 32}, Pair{14, 18}, Pair{3, 33}, Pair{5, 34}, Pair{4, 35}, Pair{34, 23}, Pair{38, 36},
    Pair{40, 37}, Pair{37, 38}, Pair{46, 50}, Pair{45, 49}, Pair{31, 24}, Pair{35, 25}, Pair{12, 16}, Pair{15, 19}, Pair{1, 31}, Pair{17, 20},
    Pair{32, 22}, Pair{9, 47}, Pair{13, 17}, Pair{7, 45}, Pair{16, 21}, Pair{6, 44},
    // 0 to 9
    Pair{29, 11}, Pair{18, 2}, Pair{19, 3}, Pair{20, 4}, Pair{21, 5}, Pair{23, 6}, Pair{22, 7}, Pair{26, 8}, Pair{28, 9}, Pair{25, 10},
    // caps lock, shift, control, option, command and their right ones
    Pair{57, 58}, Pair{56, 42}, Pair{59, 29}, Pair{58, 56}, Pair{55, 125}, Pair{54, 126}, Pair{61, 100}, Pair{62, 97}, Pair{60, 54},
    // return, backslash, backtick, comma, equal, minus, period, quote, semicolon, slash, space, tab, brackets, ISO section
    Pair{36, 28}, Pair{42, 43}, Pair{50, 41}, Pair{43, 51}, Pair{24, 13}, Pair{27, 12}, Pair{47, 52}, Pair{39, 40}, Pair{41, 39}, Pair{44, 53},
    Pair{49, 57}, Pair{48, 15}, Pair{33, 26}, Pair{30, 27}, Pair{10, 86},
    // page up, page down, home, end, up, right, down, left, escape, delete, delete forward, help
    Pair{116, 104}, Pair{121, 109}, Pair{115, 102}, Pair{119, 107}, Pair{126, 103}, Pair{124, 106}, Pair{125, 108}, Pair{123, 105}, Pair{53, 1},
    Pair{51, 14}, Pair{117, 111}, Pair{114, 110},
    // mute, volume up, volume down
    Pair{74, 113}, Pair{72, 115}, Pair{73, 114},
    // F1 to F20
    Pair{122, 59}, Pair{120, 60}, Pair{99, 61}, Pair{118, 62}, Pair{96, 63}, Pair{97, 64}, Pair{98, 65}, Pair{100, 66}, Pair{101, 67}, Pair{109, 68},
    Pair{103, 87}, Pair{111, 88}, Pair{105, 183}, Pair{107, 184}, Pair{113, 185}, Pair{106, 186}, Pair{64, 187}, Pair{79, 188}, Pair{80, 189},
    Pair{90, 190},
    // keypad 0 to 9, clear, decimal, divide, enter, equals, minus, multiply, plus
    Pair{82, 82}, Pair{83, 79}, Pair{84, 80}, Pair{85, 81}, Pair{86, 75}, Pair{87, 76}, Pair{88, 77}, Pair{89, 71}, Pair{91, 72}, Pair{92, 73},
    Pair{71, 69}, Pair{65, 83}, Pair{75, 98}, Pair{76, 96}, Pair{81, 117}, Pair{78, 74}, Pair{67, 55}, Pair{69, 78}};

}  // namespace

TEST(KeyCodes, VirtualKeyCodesNameEvdevCodes)
{
    for (const auto& [virtualKey, evdev] : pairs)
        EXPECT_EQ(Platform::evdevCode(virtualKey), evdev) << "virtual key code " << virtualKey;
}

TEST(KeyCodes, EvdevCodesNameVirtualKeyCodes)
{
    for (const auto& [virtualKey, evdev] : pairs)
        EXPECT_EQ(Platform::virtualKeyCode(evdev), virtualKey) << "evdev code " << evdev;
}

TEST(KeyCodes, KnowsNoFurtherKeysButHelpItself)
{
    std::set<std::int64_t> virtualKeys;
    std::set<std::uint16_t> evdevCodes;
    for (const auto& [virtualKey, evdev] : pairs) {
        virtualKeys.insert(virtualKey);
        evdevCodes.insert(evdev);
    }
    ASSERT_EQ(virtualKeys.size(), 113U);
    ASSERT_EQ(evdevCodes.size(), 113U);
    for (std::int64_t code = -300; code <= 70000; ++code)
        EXPECT_EQ(Platform::evdevCode(code).has_value(), virtualKeys.contains(code)) << "virtual key code " << code;
    for (std::uint16_t code = 0; code < 1024; ++code)
        EXPECT_EQ(Platform::virtualKeyCode(code).has_value(), evdevCodes.contains(code) || code == 138) << "evdev code " << code;
}

TEST(KeyCodes, HelpIsTheInsertKeyOfPcKeyboardsAndAnyHelpKeyIsHelp)
{
    EXPECT_EQ(Platform::evdevCode(114), 110);
    EXPECT_EQ(Platform::virtualKeyCode(110), 114);
    EXPECT_EQ(Platform::virtualKeyCode(138), 114);
}

TEST(KeyCodes, TheFunctionModifierHasNoKey) { EXPECT_EQ(Platform::evdevCode(63), std::nullopt); }

TEST(KeyCodes, ModifierBitsAreThoseOfStoredShortcuts)
{
    EXPECT_EQ(Platform::ModifierFlag::capsLock, 0x10000U);
    EXPECT_EQ(Platform::ModifierFlag::shift, 0x20000U);
    EXPECT_EQ(Platform::ModifierFlag::control, 0x40000U);
    EXPECT_EQ(Platform::ModifierFlag::option, 0x80000U);
    EXPECT_EQ(Platform::ModifierFlag::command, 0x100000U);
    EXPECT_EQ(Platform::ModifierFlag::numericPad, 0x200000U);
    EXPECT_EQ(Platform::ModifierFlag::function, 0x800000U);
    EXPECT_EQ(Platform::CarbonModifier::command, 0x100U);
    EXPECT_EQ(Platform::CarbonModifier::shift, 0x200U);
    EXPECT_EQ(Platform::CarbonModifier::option, 0x800U);
    EXPECT_EQ(Platform::CarbonModifier::control, 0x1000U);
    EXPECT_EQ(Platform::CarbonModifier::function, 0x20000U);
}
