#include "Tarnwick/HotKey.h"

#include <gtest/gtest.h>

#include <sstream>

#include "Support/FakeSystem.h"

namespace Tarnwick {
namespace {

using Combination = TestSupport::FakeHotKeyCenter::Combination;
using KeyboardShortcuts::Key;
using KeyboardShortcuts::Shortcut;
using Platform::DefaultsValue;

constexpr std::string_view newKey = "KeyboardShortcuts_toggleCrosshair";

class HotKeyTest : public testing::Test {
protected:
    void setOld(std::optional<std::int64_t> keyCode, std::optional<std::int64_t> modifiers)
    {
        if (keyCode)
            values()["tarnwick.hotkey.keyCode"] = *keyCode;
        if (modifiers)
            values()["tarnwick.hotkey.modifiers"] = *modifiers;
    }
    void migrate() { LegacyHotKeyMigration::runIfNeeded(fake.userDefaults, shortcuts, names); }
    bool hasOldValues() { return values().contains("tarnwick.hotkey.keyCode") || values().contains("tarnwick.hotkey.modifiers"); }
    bool hasNewValue() { return values().contains(std::string(newKey)); }
    std::optional<Shortcut> crosshairShortcut() { return shortcuts.getShortcut(names.toggleCrosshair()); }
    std::map<std::string, DefaultsValue>& values() { return fake.userDefaults.values(); }

    TestSupport::FakeSystem fake;
    KeyboardShortcuts::Texts texts;
    std::ostringstream output;
    KeyboardShortcuts::KeyboardShortcuts shortcuts{
        fake.userDefaults, fake.notifications, fake.hotKeys, fake.keyboardLayout, fake.reservedShortcuts, texts, output};
    ShortcutNames names{shortcuts};
};

using ShortcutNamesTest = HotKeyTest;
using LegacyHotKeyMigrationTest = HotKeyTest;
using LegacyHotKeyMigrationDeathTest = HotKeyTest;

TEST_F(ShortcutNamesTest, StoreNothingBeforeTheirFirstUse) { EXPECT_TRUE(values().empty()); }

TEST_F(ShortcutNamesTest, HaveTheirDefaults)
{
    EXPECT_EQ(names.toggleCrosshair().rawValue, "toggleCrosshair");
    EXPECT_EQ(names.toggleCrosshair().defaultShortcut, Shortcut(Key(7), 0x180000));
    EXPECT_EQ(names.toggleLoupe().rawValue, "toggleLoupe");
    EXPECT_EQ(names.toggleLoupe().defaultShortcut, Shortcut(Key(37), 0x180000));
}

TEST_F(ShortcutNamesTest, StoreTheirDefaultsOnFirstUseOnly)
{
    names.toggleCrosshair();
    EXPECT_EQ(shortcuts.getShortcut(names.toggleCrosshair()), Shortcut(Key(7), 0x180000));
    EXPECT_FALSE(values().contains("KeyboardShortcuts_toggleLoupe"));
    names.toggleLoupe();
    EXPECT_EQ(shortcuts.getShortcut(names.toggleLoupe()), Shortcut(Key(37), 0x180000));
    values().clear();
    names.toggleCrosshair();
    names.toggleLoupe();
    EXPECT_TRUE(values().empty());
}

TEST_F(LegacyHotKeyMigrationTest, CarriesTheOldHotKeyOver)
{
    setOld(7, 0x900);
    migrate();
    EXPECT_EQ(crosshairShortcut(), Shortcut(Key(7), 0x180000));
    EXPECT_FALSE(hasOldValues());
}

TEST_F(LegacyHotKeyMigrationTest, TranslatesEachModifierBit)
{
    const std::vector<std::pair<std::int64_t, std::uint32_t>> bits = {{0x100, 0x100000}, {0x200, 0x20000}, {0x800, 0x80000}, {0x1000, 0x40000}};
    for (const auto& [oldMask, newFlag] : bits) {
        values().clear();
        setOld(40, oldMask);
        migrate();
        EXPECT_EQ(crosshairShortcut(), Shortcut(Key(40), newFlag)) << oldMask;
    }
}

TEST_F(LegacyHotKeyMigrationTest, IgnoresOtherModifierBits)
{
    setOld(40, 0xFFFFFFFF);
    migrate();
    EXPECT_EQ(crosshairShortcut(), Shortcut(Key(40), 0x1E0000));
}

TEST_F(LegacyHotKeyMigrationTest, RegistersWhatItCarriedOver)
{
    setOld(40, 0x1200);
    migrate();
    const auto registered = fake.hotKeys.registered();
    ASSERT_EQ(registered.size(), 1U);
    EXPECT_EQ(registered.begin()->second, (Combination{40, 0x1200}));
}

TEST_F(LegacyHotKeyMigrationTest, DropsAnOldHotKeyWithoutModifiers)
{
    for (const std::optional<std::int64_t> mask :
        {std::optional<std::int64_t>(0), std::optional<std::int64_t>(0x400), std::optional<std::int64_t>()}) {
        values().clear();
        setOld(40, mask);
        migrate();
        EXPECT_FALSE(hasNewValue());
        EXPECT_FALSE(hasOldValues());
    }
    EXPECT_EQ(crosshairShortcut(), Shortcut(Key(7), 0x180000));
}

TEST_F(LegacyHotKeyMigrationTest, LeavesAStoredShortcutAlone)
{
    const std::string stored = R"({"carbonKeyCode":35,"carbonModifiers":6400})";
    values()[std::string(newKey)] = stored;
    setOld(7, 0x900);
    migrate();
    EXPECT_EQ(values().at(std::string(newKey)), DefaultsValue(stored));
    EXPECT_FALSE(hasOldValues());
}

TEST_F(LegacyHotKeyMigrationTest, LeavesAClearedShortcutAlone)
{
    values()[std::string(newKey)] = false;
    setOld(7, 0x900);
    migrate();
    EXPECT_EQ(values().at(std::string(newKey)), DefaultsValue(false));
    EXPECT_FALSE(hasOldValues());
}

TEST_F(LegacyHotKeyMigrationTest, DoesNotLookAtTheMaskWhereAShortcutIsStored)
{
    values()[std::string(newKey)] = false;
    setOld(7, -1);
    migrate();
    EXPECT_FALSE(hasOldValues());
}

TEST_F(LegacyHotKeyMigrationTest, DoesNothingWithoutAnOldKeyCode)
{
    setOld(std::nullopt, 0x900);
    migrate();
    EXPECT_EQ(values().size(), 1U);
    EXPECT_EQ(values().at("tarnwick.hotkey.modifiers"), DefaultsValue(std::int64_t(0x900)));
    EXPECT_TRUE(fake.hotKeys.registered().empty());
}

TEST_F(LegacyHotKeyMigrationTest, DoesNothingTheSecondTime)
{
    setOld(40, 0x900);
    migrate();
    shortcuts.setShortcut(Shortcut(Key(35), 0x40000), names.toggleCrosshair());
    migrate();
    EXPECT_EQ(crosshairShortcut(), Shortcut(Key(35), 0x40000));
}

TEST_F(LegacyHotKeyMigrationTest, DoesNotCheckTheKeyCode)
{
    setOld(9999, 0x100);
    migrate();
    EXPECT_EQ(crosshairShortcut(), Shortcut(Key(9999), 0x100000));
}

TEST_F(LegacyHotKeyMigrationDeathTest, StopsTheProgramOnAMaskOutside32Bits)
{
    setOld(7, -1);
    EXPECT_DEATH(migrate(), "fatal error: .*modifier mask.*: -1\n");
    setOld(7, 4294967296);
    EXPECT_DEATH(migrate(), "fatal error: .*modifier mask.*: 4294967296\n");
}

}  // namespace
}  // namespace Tarnwick
