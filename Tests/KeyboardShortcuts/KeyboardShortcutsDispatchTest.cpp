#include "KeyboardShortcuts/ShortcutsFixture.h"

namespace KeyboardShortcuts {
namespace {

const Name other("other");

class KeyboardShortcutsDispatch : public ShortcutsFixture {
protected:
    void openMenu() { m_notifications.post("NSMenuDidBeginTrackingNotification"); }
    void closeMenu() { m_notifications.post("NSMenuDidEndTrackingNotification"); }
};

TEST_F(KeyboardShortcutsDispatch, InstallsNothingWithoutNames)
{
    openMenu();
    m_shortcuts.onKeyDown(plain, call("a"));
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(KeyboardShortcutsDispatch, CallsTheActionsOfANameInTheirOrder)
{
    const auto name = m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    const auto action = call("down");
    m_shortcuts.onKeyDown(name, action);
    m_shortcuts.onKeyDown(name, call("second"));
    m_shortcuts.onKeyDown(name, action);
    m_shortcuts.onKeyUp(name, call("up"));
    m_hotKeys.press({7, 0x900});
    EXPECT_EQ(takeCalls(), "down second down ");
    m_hotKeys.release({7, 0x900});
    EXPECT_EQ(takeCalls(), "up ");
}

TEST_F(KeyboardShortcutsDispatch, RegistersAShortcutOfAnEarlierRunWithTheFirstAction)
{
    stored()[plainKey] = jsonP;
    m_shortcuts.onKeyDown(plain, call("a"));
    m_shortcuts.onKeyDown(plain, call("b"));
    m_shortcuts.onKeyUp(plain, call("c"));
    EXPECT_EQ(m_log.count("hotKeys.register id=1 keyCode=35 modifiers=0x100"), 1);
    EXPECT_EQ(registered(), (Registered{{35, 0x100}}));
    m_hotKeys.press({35, 0x100});
    EXPECT_EQ(takeCalls(), "a b ");
}

TEST_F(KeyboardShortcutsDispatch, RegistersAShortcutOfAnEarlierRunWithAKeyUpAction)
{
    stored()[plainKey] = jsonP;
    m_shortcuts.onKeyUp(plain, call("up"));
    m_hotKeys.press({35, 0x100});
    EXPECT_EQ(takeCalls(), "");
    m_hotKeys.release({35, 0x100});
    EXPECT_EQ(takeCalls(), "up ");
}

TEST_F(KeyboardShortcutsDispatch, FiresAllNamesThatStoreTheShortcut)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.setShortcut(commandP, other);
    m_shortcuts.onKeyDown(plain, call("a"));
    m_shortcuts.onKeyDown(other, call("a"));
    m_shortcuts.onKeyDown(crosshair, call("b"));
    m_hotKeys.press({35, 0x100});
    EXPECT_EQ(takeCalls(), "a a ");
}

TEST_F(KeyboardShortcutsDispatch, GoesByWhatIsStoredAtThePress)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.onKeyDown(plain, call("a"));
    stored()[plainKey] = jsonX;
    EXPECT_EQ(m_hotKeys.press({35, 0x100}), Platform::noErr);
    EXPECT_EQ(takeCalls(), "");
}

TEST_F(KeyboardShortcutsDispatch, CallsStreamsAfterActions)
{
    m_shortcuts.setShortcut(commandP, plain);
    const auto token = m_shortcuts.events(EventType::keyDown, plain, call("stream"));
    m_shortcuts.onKeyDown(plain, call("action"));
    m_hotKeys.press({35, 0x100});
    EXPECT_EQ(takeCalls(), "action stream ");
}

TEST_F(KeyboardShortcutsDispatch, BringsBothKindsOfEventToAStreamUntilItsTokenEnds)
{
    stored()[plainKey] = jsonP;
    auto token = m_shortcuts.events(plain, [this](EventType type) { m_calls += type == EventType::keyDown ? "down " : "up "; });
    m_hotKeys.press({35, 0x100});
    m_hotKeys.release({35, 0x100});
    EXPECT_EQ(takeCalls(), "down up ");
    token.release();
    m_hotKeys.press({35, 0x100});
    m_hotKeys.release({35, 0x100});
    EXPECT_EQ(takeCalls(), "");
}

TEST_F(KeyboardShortcutsDispatch, GivesTheHotKeyBackWithTheActionsOfAName)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.onKeyDown(plain, call("down"));
    m_shortcuts.onKeyUp(plain, call("up"));
    m_shortcuts.removeHandler(plain);
    EXPECT_TRUE(registered().empty());
    EXPECT_FALSE(m_shortcuts.isEnabled(plain));
    m_shortcuts.onKeyDown(plain, call("new"));
    m_hotKeys.press({35, 0x100});
    m_hotKeys.release({35, 0x100});
    EXPECT_EQ(takeCalls(), "new ");
}

TEST_F(KeyboardShortcutsDispatch, KeepsAHotKeyThatAStreamUses)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.onKeyDown(plain, call("action"));
    const auto token = m_shortcuts.events(EventType::keyDown, plain, call("stream"));
    m_shortcuts.removeHandler(plain);
    m_hotKeys.press({35, 0x100});
    EXPECT_EQ(takeCalls(), "stream ");
}

TEST_F(KeyboardShortcutsDispatch, RemovesAllActionsAndTheirHotKeysButThoseOfStreams)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.setShortcut(optionCommandL, other);
    m_shortcuts.setShortcut(optionCommandX, crosshair);
    m_shortcuts.onKeyDown(plain, call("plain"));
    m_shortcuts.onKeyUp(crosshair, call("crosshair"));
    const auto token = m_shortcuts.events(EventType::keyUp, crosshair, call("stream"));
    m_shortcuts.removeAllHandlers();
    EXPECT_EQ(registered(), (Registered{{37, 0x900}, {7, 0x900}}));  // that without actions stays, too
    m_hotKeys.release({7, 0x900});
    EXPECT_EQ(takeCalls(), "stream ");
}

TEST_F(KeyboardShortcutsDispatch, CallsNoActionWhilePaused)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.onKeyDown(plain, call("a"));
    m_shortcuts.onKeyUp(plain, call("a"));
    const auto token = m_shortcuts.events(plain, [this](EventType) { m_calls += "s "; });
    m_shortcuts.setPaused(true);
    EXPECT_TRUE(m_shortcuts.isPaused());
    EXPECT_EQ(m_hotKeys.press({35, 0x100}), Platform::noErr);
    EXPECT_EQ(m_hotKeys.release({35, 0x100}), Platform::noErr);
    EXPECT_EQ(takeCalls(), "");
    EXPECT_EQ(registered(), (Registered{{35, 0x100}}));
    m_shortcuts.setPaused(false);
    m_hotKeys.press({35, 0x100});
    EXPECT_EQ(takeCalls(), "a s ");
}

TEST_F(KeyboardShortcutsDispatch, SwitchesAllHotKeys)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.onKeyDown(plain, call("a"));
    EXPECT_TRUE(m_shortcuts.isEnabled());
    EXPECT_TRUE(m_shortcuts.isEnabled(plain));
    m_shortcuts.setEnabled(false);
    EXPECT_FALSE(m_shortcuts.isEnabled());
    EXPECT_FALSE(m_shortcuts.isEnabled(plain));
    EXPECT_TRUE(registered().empty());
    m_shortcuts.setEnabled(true);
    EXPECT_TRUE(m_shortcuts.isEnabled(plain));
    m_hotKeys.press({35, 0x100});
    EXPECT_EQ(takeCalls(), "a ");
}

TEST_F(KeyboardShortcutsDispatch, AsksNothingWhenTheSwitchIsThereAlready)
{
    m_shortcuts.setShortcut(commandP, plain);
    takeLines();
    m_shortcuts.setEnabled(true);
    EXPECT_TRUE(takeLines().empty());
    m_shortcuts.setEnabled(false);
    takeLines();
    m_shortcuts.setEnabled(false);
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(KeyboardShortcutsDispatch, EnablesAndDisablesSingleNames)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.setShortcut(optionCommandL, other);
    m_shortcuts.onKeyDown(plain, call("a"));
    const std::vector<Name> names = {plain, Name("absent")};
    m_shortcuts.disable(names);
    EXPECT_FALSE(m_shortcuts.isEnabled(plain));
    EXPECT_TRUE(m_shortcuts.isEnabled(other));
    EXPECT_EQ(registered(), (Registered{{37, 0x900}}));
    m_shortcuts.enable(names);
    m_shortcuts.enable(names);
    EXPECT_TRUE(m_shortcuts.isEnabled(plain));
    EXPECT_FALSE(m_shortcuts.isEnabled(Name("absent")));
    EXPECT_EQ(registered(), (Registered{{37, 0x900}, {35, 0x100}}));
    m_hotKeys.press({35, 0x100});
    EXPECT_EQ(takeCalls(), "a ");
}

TEST_F(KeyboardShortcutsDispatch, CallsOnceForAPressWhileAMenuIsOpen)
{
    const auto name = m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    m_shortcuts.onKeyDown(name, call("a"));
    openMenu();
    EXPECT_TRUE(registered().empty());
    EXPECT_EQ(m_hotKeys.press({7, 0x900}), Platform::noErr);
    EXPECT_EQ(takeCalls(), "a ");
    EXPECT_EQ(m_hotKeys.press({7, 0x100}), Platform::eventNotHandledErr);
    closeMenu();
    EXPECT_EQ(m_hotKeys.registered().begin()->first, 1U);
    EXPECT_EQ(m_hotKeys.press({7, 0x900}), Platform::noErr);
    EXPECT_EQ(takeCalls(), "a ");
}

TEST_F(KeyboardShortcutsDispatch, FollowsMenusOnceEvenIfToldTwice)
{
    m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    m_shortcuts.initialize();
    takeLines();
    closeMenu();
    EXPECT_TRUE(takeLines().empty());
    openMenu();
    EXPECT_EQ(takeLines(), (Lines{"hotKeys.unregister id=1", "hotKeys.removeEventTypes hotKey", "hotKeys.addEventTypes rawKey"}));
    openMenu();
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(KeyboardShortcutsDispatch, BeginsToFollowMenusWithTheFirstNameOnly)
{
    m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    std::size_t heldForLaterObservers = 1;
    const auto token = m_notifications.addObserver(
        "NSMenuDidBeginTrackingNotification", [&](const Platform::Notification&) { heldForLaterObservers = registered().size(); });
    m_shortcuts.declareName("toggleLoupe", optionCommandL);
    openMenu();
    EXPECT_EQ(heldForLaterObservers, 0U);
}

TEST_F(KeyboardShortcutsDispatch, TellsOfAFailedRegistrationAndKeepsTheShortcut)
{
    m_hotKeys.refuse({7, 0x900});
    const auto name = m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    m_shortcuts.onKeyDown(name, call("a"));
    EXPECT_EQ(m_output.str(), "Error registering hotkey ⌥⌘X: -9878\n");
    EXPECT_EQ(m_shortcuts.getShortcut(name), optionCommandX);
    EXPECT_TRUE(m_shortcuts.isEnabled(name));
    m_hotKeys.allow({7, 0x900});
    m_shortcuts.onKeyDown(name, call("b"));
    EXPECT_TRUE(registered().empty());  // not before it is stored again
    m_shortcuts.setShortcut(optionCommandX, name);
    m_hotKeys.press({7, 0x900});
    EXPECT_EQ(takeCalls(), "a b ");
}

TEST_F(KeyboardShortcutsDispatch, TellsOfAFailedRegistrationOnStandardOutput)
{
    m_hotKeys.refuse({35, 0x100});
    KeyboardShortcuts shortcuts(m_userDefaults, m_notifications, m_hotKeys, m_layout, m_reserved, m_texts);
    testing::internal::CaptureStdout();
    shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error registering hotkey ⌘P: -9878\n");
}

TEST_F(KeyboardShortcutsDispatch, LetsAnActionChangeShortcutsAndActions)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.onKeyDown(plain, [this] {
        m_shortcuts.setShortcut(optionCommandL, plain);
        for (int i = 0; i < 100; ++i)
            m_shortcuts.onKeyDown(Name("name" + std::to_string(i)), call("never"));
        m_calls += "first ";
    });
    m_shortcuts.onKeyDown(plain, call("second"));
    EXPECT_EQ(m_hotKeys.press({35, 0x100}), Platform::noErr);
    EXPECT_EQ(takeCalls(), "first second ");
    EXPECT_EQ(registered(), (Registered{{37, 0x900}}));
}

TEST_F(KeyboardShortcutsDispatch, LetsAnActionEndEverything)
{
    m_shortcuts.setShortcut(commandP, plain);
    m_shortcuts.onKeyDown(plain, [this] {
        m_shortcuts.setShortcut(std::nullopt, plain);
        m_shortcuts.removeAllHandlers();
        m_calls += "last ";
    });
    m_shortcuts.onKeyDown(plain, call("removed"));
    auto token = m_shortcuts.events(EventType::keyDown, plain, call("cleared"));
    openMenu();
    EXPECT_EQ(m_hotKeys.press({35, 0x100}), Platform::noErr);
    EXPECT_EQ(takeCalls(), "last ");
    closeMenu();
    EXPECT_TRUE(registered().empty());
}

TEST_F(KeyboardShortcutsDispatch, LetsAnActionCloseTheMenuAndSwitchOff)
{
    const auto name = m_shortcuts.declareName("toggleCrosshair", optionCommandX);
    m_shortcuts.onKeyDown(name, [this] {
        closeMenu();
        m_shortcuts.setEnabled(false);
        m_calls += "a ";
    });
    openMenu();
    EXPECT_EQ(m_hotKeys.press({7, 0x900}), Platform::noErr);
    EXPECT_EQ(takeCalls(), "a ");
    EXPECT_TRUE(registered().empty());
}

TEST_F(KeyboardShortcutsDispatch, KnowsWhatTheSystemKeepsForItself)
{
    m_reserved.set({{true, 35, 0x100}, {false, 7, 0x900}});
    EXPECT_TRUE(m_shortcuts.isTakenBySystem(commandP));
    EXPECT_FALSE(m_shortcuts.isTakenBySystem(optionCommandX));
    EXPECT_FALSE(m_shortcuts.isTakenBySystem(Shortcut::fromCarbon(35, 0x300)));
}

}  // namespace
}  // namespace KeyboardShortcuts
