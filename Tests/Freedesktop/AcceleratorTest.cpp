#include "Platform/Freedesktop/Accelerator.h"

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <ostream>

namespace Platform::Freedesktop {
namespace {

struct AcceleratorCase {
    const char* text;
    std::uint32_t keysym;
    std::uint32_t carbonModifiers;
};

void PrintTo(const AcceleratorCase& each, std::ostream* stream) { *stream << each.text; }

class AcceleratorTexts : public testing::TestWithParam<AcceleratorCase> { };

TEST_P(AcceleratorTexts, NameSymbolAndModifiers)
{
    const auto accelerator = parseAccelerator(GetParam().text);
    ASSERT_TRUE(accelerator) << GetParam().text;
    EXPECT_EQ(accelerator->keysym, GetParam().keysym) << GetParam().text;
    EXPECT_EQ(accelerator->carbonModifiers, GetParam().carbonModifiers) << GetParam().text;
    EXPECT_EQ(accelerator->evdevCode, 0);
    EXPECT_FALSE(accelerator->takesShiftOfSymbol);
}

INSTANTIATE_TEST_SUITE_P(Accelerator, AcceleratorTexts,
    testing::Values(AcceleratorCase{"<Super><Shift>l", 'l', 0x300}, AcceleratorCase{"<Primary><Alt>T", 't', 0x1800},
        AcceleratorCase{"<Mod4>x", 'x', 0x100}, AcceleratorCase{"<Control><Shift><Alt><Super>Page_Up", XKB_KEY_Page_Up, 0x1b00},
        AcceleratorCase{"<Mod1>F4", XKB_KEY_F4, 0x800}, AcceleratorCase{"<Ctrl>grave", XKB_KEY_grave, 0x1000},
        AcceleratorCase{"<ctl><shft>Return", XKB_KEY_Return, 0x1200}, AcceleratorCase{"<SUPER>space", XKB_KEY_space, 0x100},
        AcceleratorCase{"<Meta>a", 'a', 0x800}, AcceleratorCase{"<Hyper>a", 'a', 0x100}, AcceleratorCase{"<Release><Super>a", 'a', 0x100},
        AcceleratorCase{"<Mod2><Lock>a", 'a', 0}, AcceleratorCase{"XF86AudioMute", XKB_KEY_XF86AudioMute, 0},
        AcceleratorCase{"Print", XKB_KEY_Print, 0}, AcceleratorCase{"<Super>page_down", XKB_KEY_Page_Down, 0x100},
        AcceleratorCase{"<Super>plus", '+', 0x100}, AcceleratorCase{"<Super>Adiaeresis", XKB_KEY_adiaeresis, 0x100},
        AcceleratorCase{"<Super>1", '1', 0x100}, AcceleratorCase{"<Super>Cyrillic_YA", XKB_KEY_Cyrillic_ya, 0x100}));

class NoAcceleratorTexts : public testing::TestWithParam<const char*> { };

TEST_P(NoAcceleratorTexts, AreNothing) { EXPECT_EQ(parseAccelerator(GetParam()), std::nullopt) << GetParam(); }

INSTANTIATE_TEST_SUITE_P(Accelerator, NoAcceleratorTexts,
    testing::Values("", "disabled", "Disabled", "<Super>", "<Super", "<", "<>x", "<Unknown>x", "<Mod3>x", "<Mod5>x", "<Super>nosuchkey", "x y",
        "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/custom0/", "custom0", "__dummy__", "0x", "0xzz", "0x7", "0x100", "0x2fz",
        "<Super>0x"));

TEST(Accelerator, NamesKeysByTheirPlace)
{
    EXPECT_EQ(parseAccelerator("<Super>Above_Tab"), (Accelerator{.evdevCode = 41, .carbonModifiers = 0x100}));
    EXPECT_EQ(parseAccelerator("<Alt>0x2f"), (Accelerator{.evdevCode = 39, .carbonModifiers = 0x800}));
}

struct QtCase {
    std::uint32_t combination;
    std::uint32_t keysym;
    std::uint32_t carbonModifiers;
};

void PrintTo(const QtCase& each, std::ostream* stream) { *stream << "0x" << std::hex << each.combination << std::dec; }

class QtKeys : public testing::TestWithParam<QtCase> { };

TEST_P(QtKeys, NameSymbolAndModifiers)
{
    EXPECT_EQ(acceleratorOfQtKey(GetParam().combination),
        (Accelerator{.keysym = GetParam().keysym, .carbonModifiers = GetParam().carbonModifiers, .takesShiftOfSymbol = true}))
        << std::hex << GetParam().combination;
}

INSTANTIATE_TEST_SUITE_P(Accelerator, QtKeys,
    testing::Values(QtCase{0x10000044, 'd', 0x100}, QtCase{0x0c000054, 't', 0x1800}, QtCase{0x12000041, 'a', 0x300}, QtCase{0x1000002b, '+', 0x100},
        QtCase{0x30000037, XKB_KEY_KP_7, 0x100}, QtCase{0x3000002b, XKB_KEY_KP_Add, 0x100}, QtCase{0x2c000005 | 0x01000000, XKB_KEY_KP_Enter, 0x1800},
        QtCase{0x09000033, XKB_KEY_F4, 0x800}, QtCase{0x01000030, XKB_KEY_F1, 0}, QtCase{0x01000052, XKB_KEY_F35, 0},
        QtCase{0x09000002, XKB_KEY_ISO_Left_Tab, 0x800}, QtCase{0x11000016, XKB_KEY_Page_Up, 0x100}, QtCase{0x01000009, XKB_KEY_Print, 0},
        QtCase{0x01000071, XKB_KEY_XF86AudioMute, 0}, QtCase{0x100000c4, XKB_KEY_adiaeresis, 0x100}, QtCase{0x1000042f, XKB_KEY_Cyrillic_ya, 0x100}));

TEST(Accelerator, IsNothingForQtKeysWithoutASymbol)
{
    EXPECT_EQ(acceleratorOfQtKey(0), std::nullopt);
    EXPECT_EQ(acceleratorOfQtKey(0x10000000), std::nullopt);
    EXPECT_EQ(acceleratorOfQtKey(0x010000ff), std::nullopt);
    EXPECT_EQ(acceleratorOfQtKey(0x01ffffff), std::nullopt);
}

}  // namespace
}  // namespace Platform::Freedesktop
