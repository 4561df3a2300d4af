#include "Platform/Freedesktop/KeymapKeys.h"

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

namespace Platform::Freedesktop {
namespace {

KeyOfSymbol keysOfLayout(const char* layout)
{
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    const xkb_rule_names names = {.rules = "evdev", .model = "pc105", .layout = layout, .variant = "", .options = ""};
    xkb_keymap* keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    auto keys = keysOf(*keymap);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return keys;
}

TEST(KeymapKeys, FindsTheKeysOfTheUsLayout)
{
    const auto keys = usKeys();
    EXPECT_EQ(keys('a'), (KeyPosition{0, false}));
    EXPECT_EQ(keys('z'), (KeyPosition{6, false}));
    EXPECT_EQ(keys('1'), (KeyPosition{18, false}));
    EXPECT_EQ(keys('/'), (KeyPosition{44, false}));
    EXPECT_EQ(keys('!'), (KeyPosition{18, true}));
    EXPECT_EQ(keys('+'), (KeyPosition{24, true}));
    EXPECT_EQ(keys(XKB_KEY_Escape), (KeyPosition{53, false}));
    EXPECT_EQ(keys(XKB_KEY_F12), (KeyPosition{111, false}));
    EXPECT_EQ(keys(XKB_KEY_Page_Up), (KeyPosition{116, false}));
    EXPECT_EQ(keys(XKB_KEY_Left), (KeyPosition{123, false}));
    EXPECT_EQ(keys(XKB_KEY_ISO_Left_Tab), (KeyPosition{48, true}));
    EXPECT_EQ(keys(XKB_KEY_XF86AudioMute), (KeyPosition{74, false}));
    EXPECT_EQ(keys(XKB_KEY_adiaeresis), std::nullopt);
    EXPECT_EQ(keys(XKB_KEY_Super_L), (KeyPosition{55, false}));
}

TEST(KeymapKeys, DoesNotTakeKeypadDigitsForShifted)
{
    const auto keys = usKeys();
    EXPECT_EQ(keys(XKB_KEY_KP_7), (KeyPosition{89, false}));
    EXPECT_EQ(keys(XKB_KEY_KP_Home), (KeyPosition{89, false}));
    EXPECT_EQ(keys(XKB_KEY_KP_Add), (KeyPosition{69, false}));
}

TEST(KeymapKeys, FollowsTheLayout)
{
    EXPECT_EQ(keysOfLayout("de")('z'), (KeyPosition{16, false}));
    EXPECT_EQ(keysOfLayout("de")('+'), (KeyPosition{30, false}));
    EXPECT_EQ(keysOfLayout("fr")('1'), (KeyPosition{18, true}));
    EXPECT_EQ(keysOfLayout("us(dvorak)")('x'), (KeyPosition{11, false}));
}

TEST(KeymapKeys, PrefersTheFirstLayoutThatTypesTheSymbol)
{
    EXPECT_EQ(keysOfLayout("ru,us")('x'), (KeyPosition{7, false}));
    EXPECT_EQ(keysOfLayout("ru,us")(XKB_KEY_Cyrillic_che), (KeyPosition{7, false}));
    EXPECT_EQ(keysOfLayout("de,us")('z'), (KeyPosition{16, false}));
    EXPECT_EQ(keysOfLayout("us,de")('z'), (KeyPosition{6, false}));
}

}  // namespace
}  // namespace Platform::Freedesktop
