#include "KeyboardShortcuts/ShortcutsFixture.h"

namespace KeyboardShortcuts {
namespace {

class KeyboardShortcutsStorage : public ShortcutsFixture { };

TEST_F(KeyboardShortcutsStorage, StoresAShortcutAsText)
{
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(stored().at(plainKey), Platform::DefaultsValue(jsonP));
    EXPECT_EQ(m_shortcuts.getShortcut(plain), commandP);
}

TEST_F(KeyboardShortcutsStorage, ReadsTheStoreAtEveryCall)
{
    EXPECT_EQ(m_shortcuts.getShortcut(plain), std::nullopt);
    stored()[plainKey] = jsonX;
    EXPECT_EQ(m_shortcuts.getShortcut(plain), optionCommandX);
    stored()[plainKey] = jsonP;
    EXPECT_EQ(m_shortcuts.getShortcut(plain), commandP);
}

TEST_F(KeyboardShortcutsStorage, ReadsForeignValuesAsNoShortcut)
{
    for (const Platform::DefaultsValue& value :
        {Platform::DefaultsValue(false), Platform::DefaultsValue(true), Platform::DefaultsValue(std::int64_t{7}), Platform::DefaultsValue(7.5),
            Platform::DefaultsValue(std::string("no shortcut")), Platform::DefaultsValue(std::string(R"({"carbonKeyCode":7})"))}) {
        stored()[plainKey] = value;
        EXPECT_EQ(m_shortcuts.getShortcut(plain), std::nullopt);
        EXPECT_EQ(stored()[plainKey], value);
    }
}

TEST_F(KeyboardShortcutsStorage, RegistersThenWritesThenTells)
{
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(takeLines(),
        (Lines{"hotKeys.register id=1 keyCode=35 modifiers=0x100", "hotKeys.installHandler", "hotKeys.removeEventTypes rawKey",
            "hotKeys.addEventTypes hotKey", "userDefaults.setObject KeyboardShortcuts_plain=\"" + jsonP + "\"", "changed plain"}));
}

TEST_F(KeyboardShortcutsStorage, GivesTheFormerHotKeyBackFirst)
{
    m_shortcuts.setShortcut(commandP, plain);
    takeLines();
    m_shortcuts.setShortcut(optionCommandX, plain);
    EXPECT_EQ(takeLines(),
        (Lines{"hotKeys.unregister id=1", "hotKeys.register id=2 keyCode=7 modifiers=0x900",
            "userDefaults.setObject KeyboardShortcuts_plain=\"" + jsonX + "\"", "changed plain"}));
}

TEST_F(KeyboardShortcutsStorage, RegistersAgainAndTellsWhenTheSameShortcutIsAssigned)
{
    m_shortcuts.setShortcut(commandP, plain);
    takeLines();
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(takeLines(),
        (Lines{"hotKeys.unregister id=1", "hotKeys.register id=2 keyCode=35 modifiers=0x100",
            "userDefaults.setObject KeyboardShortcuts_plain=\"" + jsonP + "\"", "changed plain"}));
}

TEST_F(KeyboardShortcutsStorage, RegistersAShortcutOfTwoNamesOnce)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.setShortcut(commandP, Name("other"));
    EXPECT_EQ(registered(), (Registered{{35, 0x100}}));
}

TEST_F(KeyboardShortcutsStorage, TellsAfterTheStoreHasChanged)
{
    std::optional<Shortcut> seen;
    const auto token = m_notifications.addObserver("KeyboardShortcuts_shortcutByNameDidChange", [&](const Platform::Notification& notification) {
        const auto name = std::any_cast<Name>(notification.userInfo);
        seen = m_shortcuts.getShortcut(name);
    });
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(seen, commandP);
    m_shortcuts.setShortcut(std::nullopt, plain);
    EXPECT_EQ(seen, std::nullopt);
}

TEST_F(KeyboardShortcutsStorage, MarksAClearedNameThatHasADefault)
{
    const auto name = m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    takeLines();
    m_shortcuts.setShortcut(std::nullopt, name);
    EXPECT_EQ(
        takeLines(), (Lines{"userDefaults.setObject KeyboardShortcuts_toggleCrosshair=false", "hotKeys.unregister id=1", "changed toggleCrosshair"}));
    EXPECT_EQ(stored().at(crosshairKey), Platform::DefaultsValue(false));
    EXPECT_EQ(m_shortcuts.getShortcut(name), std::nullopt);
}

TEST_F(KeyboardShortcutsStorage, DoesNotBringTheDefaultOfAClearedNameBackAtTheNextStart)
{
    stored()[crosshairKey] = false;
    const auto name = m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    EXPECT_TRUE(takeLines().empty());
    EXPECT_EQ(m_shortcuts.getShortcut(name), std::nullopt);
    EXPECT_EQ(stored().at(crosshairKey), Platform::DefaultsValue(false));
}

TEST_F(KeyboardShortcutsStorage, RemovesAClearedNameThatHasNone)
{
    m_shortcuts.setShortcut(commandP, plain);
    takeLines();
    m_shortcuts.setShortcut(std::nullopt, plain);
    EXPECT_EQ(takeLines(), (Lines{"userDefaults.removeObject KeyboardShortcuts_plain", "hotKeys.unregister id=1", "changed plain"}));
    EXPECT_TRUE(stored().empty());
}

TEST_F(KeyboardShortcutsStorage, ClearsNothingWhereNothingIsStored)
{
    m_shortcuts.setShortcut(std::nullopt, plain);
    m_shortcuts.setShortcut(std::nullopt, crosshair);
    EXPECT_TRUE(takeLines().empty());
    EXPECT_TRUE(stored().empty());
}

TEST_F(KeyboardShortcutsStorage, ClearsNoForeignText)
{
    stored()[plainKey] = std::string("not a shortcut");
    m_shortcuts.setShortcut(std::nullopt, plain);
    EXPECT_TRUE(takeLines().empty());
    EXPECT_EQ(stored().at(plainKey), Platform::DefaultsValue(std::string("not a shortcut")));
}

TEST_F(KeyboardShortcutsStorage, OverwritesForeignText)
{
    stored()[plainKey] = std::string("not a shortcut");
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(m_shortcuts.getShortcut(plain), commandP);
}

TEST_F(KeyboardShortcutsStorage, StoresADefaultOnceWhenItsNameIsDeclared)
{
    const auto name = m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    EXPECT_EQ(name, crosshair);
    EXPECT_EQ(name.defaultShortcut, optionCommandX);
    EXPECT_EQ(takeChanges(), (Lines{"userDefaults.setObject KeyboardShortcuts_toggleCrosshair=\"" + jsonX + "\"", "changed toggleCrosshair"}));
    EXPECT_EQ(registered(), (Registered{{7, 0x900}}));
    m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(KeyboardShortcutsStorage, LeavesWhatIsStoredWhenANameIsDeclared)
{
    stored()[crosshairKey] = jsonP;
    stored()[plainKey] = std::string("not a shortcut");
    m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    m_shortcuts.declareName("plain", optionCommandX);
    m_shortcuts.declareName("nothing");
    EXPECT_TRUE(takeLines().empty());
    EXPECT_EQ(stored().size(), 2U);
}

TEST_F(KeyboardShortcutsStorage, ResetsANameToItsDefault)
{
    stored()[crosshairKey] = false;
    m_shortcuts.reset(crosshair);
    EXPECT_EQ(stored().at(crosshairKey), Platform::DefaultsValue(jsonX));
    EXPECT_EQ(registered(), (Registered{{7, 0x900}}));
    EXPECT_EQ(takeChanges().back(), "changed toggleCrosshair");
}

TEST_F(KeyboardShortcutsStorage, ResetsANameWithoutDefaultByRemovingIt)
{
    m_shortcuts.setShortcut(commandP, plain);
    takeLines();
    m_shortcuts.reset(plain);
    EXPECT_EQ(takeLines(), (Lines{"userDefaults.removeObject KeyboardShortcuts_plain", "hotKeys.unregister id=1", "changed plain"}));
}

TEST_F(KeyboardShortcutsStorage, ResetsNothingThatIsNotDecodable)
{
    stored()[plainKey] = std::string("not a shortcut");
    m_shortcuts.reset(plain);
    m_shortcuts.reset(Name("absent"));
    EXPECT_TRUE(takeLines().empty());
    EXPECT_EQ(stored().size(), 1U);
}

TEST_F(KeyboardShortcutsStorage, ResetsNamesInTheirOrder)
{
    m_shortcuts.setShortcut(commandP, plain);
    takeLines();
    const std::vector<Name> names = {crosshair, plain};
    m_shortcuts.reset(names);
    EXPECT_EQ(takeChanges(),
        (Lines{"userDefaults.setObject KeyboardShortcuts_toggleCrosshair=\"" + jsonX + "\"", "changed toggleCrosshair",
            "userDefaults.removeObject KeyboardShortcuts_plain", "changed plain"}));
}

TEST_F(KeyboardShortcutsStorage, ResetsAllNamesOfTheStore)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.setShortcut(optionCommandL, Name("other"));
    stored()["tarnwick.showMenuBarItem"] = false;
    m_shortcuts.resetAll();
    EXPECT_EQ(stored(), (std::map<std::string, Platform::DefaultsValue>{{"tarnwick.showMenuBarItem", false}}));
    EXPECT_TRUE(registered().empty());
}

TEST_F(KeyboardShortcutsStorage, FindsAllNamesOfTheStore)
{
    stored() = {{"KeyboardShortcuts_toggleLoupe", false}, {"KeyboardShortcuts_KeyboardShortcuts_x", jsonX}, {"KeyboardShortcuts_", jsonX},
        {"Keyboard", jsonX}, {"xKeyboardShortcuts_y", jsonX}, {"loupe.zoom", 4.0}};
    EXPECT_EQ(m_shortcuts.allNames(), (std::unordered_set<Name>{Name("toggleLoupe"), Name("KeyboardShortcuts_x"), Name("")}));
    for (const auto& name : m_shortcuts.allNames())
        EXPECT_EQ(name.defaultShortcut, std::nullopt);
}

TEST_F(KeyboardShortcutsStorage, KnowsWhetherTheStoreHoldsAnythingForAName)
{
    EXPECT_FALSE(m_shortcuts.userDefaultsContains(plain));
    stored()[plainKey] = false;
    EXPECT_TRUE(m_shortcuts.userDefaultsContains(plain));
    stored()[plainKey] = std::string("not a shortcut");
    EXPECT_TRUE(m_shortcuts.userDefaultsContains(plain));
}

TEST_F(KeyboardShortcutsStorage, GoesOnWhenAWriteIsLost)
{
    m_userDefaults.loseWrites(true);
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(m_shortcuts.getShortcut(plain), std::nullopt);
    EXPECT_EQ(registered(), (Registered{{35, 0x100}}));
}

TEST_F(KeyboardShortcutsStorage, LetsAnObserverChangeShortcuts)
{
    const auto token = m_notifications.addObserver("KeyboardShortcuts_shortcutByNameDidChange", [&](const Platform::Notification& notification) {
        if (std::any_cast<Name>(notification.userInfo) == plain)
            m_shortcuts.setShortcut(std::nullopt, Name("other"));
    });
    m_shortcuts.setShortcut(optionCommandL, Name("other"));
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(registered(), (Registered{{35, 0x100}}));
    EXPECT_EQ(stored().size(), 1U);
}

}  // namespace
}  // namespace KeyboardShortcuts
