#include "KeyboardShortcuts/MenuItemShortcut.h"

#include <gtest/gtest.h>

#include "KeyboardShortcuts/ShortcutsFixture.h"
#include "Support/FakeMainLoop.h"
#include "Support/FakeStatusBar.h"

namespace KeyboardShortcuts {
namespace {

using Platform::KeyEquivalent;

class MenuItemShortcutTest : public ShortcutsFixture {
protected:
    const KeyEquivalent& shown() const { return m_item.keyEquivalent(); }

    static inline const KeyEquivalent none{"", 0, true};
    static inline const KeyEquivalent hintX{"x", 0x180000, false};
    static inline const KeyEquivalent hintL{"l", 0x180000, false};
    static inline const KeyEquivalent hintP{"p", 0x100000, false};

    TestSupport::FakeMainLoop m_mainLoop{m_log};
    TestSupport::FakeMenuItem m_item{"Show Crosshair", {}, nullptr};
    std::optional<MenuItemShortcut> m_hint{std::in_place, m_item, MenuItemShortcut::System{m_shortcuts, m_layout, m_notifications, m_mainLoop}};
};

TEST_F(MenuItemShortcutTest, ShowsAShortcutThatTheSystemMustNotMove)
{
    m_hint->setShortcut(optionCommandX);
    EXPECT_EQ(shown(), hintX);
}

TEST_F(MenuItemShortcutTest, ShowsEveryModifier)
{
    m_hint->setShortcut(Shortcut::fromCarbon(7, 0x1b00));
    EXPECT_EQ(shown(), (KeyEquivalent{"x", 0x1e0000, false}));
    m_hint->setShortcut(Shortcut::fromCarbon(7, 0));
    EXPECT_EQ(shown(), (KeyEquivalent{"x", 0, false}));
}

TEST_F(MenuItemShortcutTest, ShowsNothingWithoutAShortcut)
{
    m_hint->setShortcut(optionCommandX);
    m_hint->setShortcut(std::optional<Shortcut>());
    EXPECT_EQ(shown(), none);
}

TEST_F(MenuItemShortcutTest, ShowsNoKeyButTheModifiersWhereMenusCannotNameTheKey)
{
    m_hint->setShortcut(Shortcut::fromCarbon(82, 0x100));  // keypad 0
    EXPECT_EQ(shown(), (KeyEquivalent{"", 0x100000, false}));
    m_layout.removeText(7);
    m_hint->setShortcut(optionCommandX);
    EXPECT_EQ(shown(), (KeyEquivalent{"", 0x180000, false}));
}

TEST_F(MenuItemShortcutTest, NamesSpecialKeysByTheirCharacter)
{
    m_hint->setShortcut(Shortcut::fromCarbon(126, 0x100));
    EXPECT_EQ(shown(), (KeyEquivalent{"\uF700", 0x100000, false}));
}

TEST_F(MenuItemShortcutTest, ShowsTheStoredShortcutOfAName)
{
    m_shortcuts.setShortcut(optionCommandX, plain);
    m_hint->setShortcut(plain);
    EXPECT_EQ(shown(), hintX);
}

TEST_F(MenuItemShortcutTest, FollowsAChangeAfterTheCurrentTurnOfTheLoop)
{
    m_shortcuts.setShortcut(optionCommandX, plain);
    m_hint->setShortcut(plain);
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(shown(), hintX);
    m_mainLoop.runTurn();
    EXPECT_EQ(shown(), hintP);
}

TEST_F(MenuItemShortcutTest, ShowsWhatIsStoredWhenItsTurnComes)
{
    m_hint->setShortcut(plain);
    m_shortcuts.setShortcut(optionCommandX, plain);
    m_shortcuts.setShortcut(commandP, plain);
    m_mainLoop.runTurn();
    EXPECT_EQ(shown(), hintP);
}

TEST_F(MenuItemShortcutTest, ShowsNothingOnceTheShortcutOfItsNameIsCleared)
{
    m_shortcuts.setShortcut(optionCommandX, crosshair);
    m_hint->setShortcut(crosshair);
    m_shortcuts.setShortcut(std::nullopt, crosshair);
    m_mainLoop.runUntilIdle();
    EXPECT_EQ(shown(), none);
    m_hint->setShortcut(crosshair);
    EXPECT_EQ(shown(), none);
}

TEST_F(MenuItemShortcutTest, IgnoresChangesOfOtherNames)
{
    m_hint->setShortcut(plain);
    m_shortcuts.setShortcut(optionCommandX, crosshair);
    EXPECT_EQ(m_mainLoop.waitingTasks(), 0);
    EXPECT_EQ(shown(), none);
}

TEST_F(MenuItemShortcutTest, IgnoresNotificationsThatNameNothing)
{
    m_observer.release();  // the fixture's own wants a name
    m_hint->setShortcut(plain);
    m_notifications.post(shortcutByNameDidChange);
    m_notifications.post(shortcutByNameDidChange, std::string("plain"));
    EXPECT_EQ(m_mainLoop.waitingTasks(), 0);
}

TEST_F(MenuItemShortcutTest, FollowsTheLastNameOnly)
{
    m_hint->setShortcut(plain);
    m_hint->setShortcut(crosshair);
    m_shortcuts.setShortcut(commandP, plain);
    EXPECT_EQ(m_mainLoop.waitingTasks(), 0);
    m_shortcuts.setShortcut(optionCommandL, crosshair);
    m_mainLoop.runUntilIdle();
    EXPECT_EQ(shown(), hintL);
}

TEST_F(MenuItemShortcutTest, ChangesOnceHoweverOftenANameWasSet)
{
    for (int i = 0; i < 3; ++i)
        m_hint->setShortcut(plain);
    const int before = m_item.keyEquivalentChanges();
    m_shortcuts.setShortcut(commandP, plain);
    m_mainLoop.runUntilIdle();
    EXPECT_EQ(m_item.keyEquivalentChanges(), before + 1);
}

TEST_F(MenuItemShortcutTest, ShowsAndFollowsNothingOnceTheNameIsTakenAway)
{
    m_shortcuts.setShortcut(optionCommandX, plain);
    m_hint->setShortcut(plain);
    m_shortcuts.setShortcut(commandP, plain);
    m_hint->setShortcut(std::nullopt);
    EXPECT_EQ(shown(), none);
    m_mainLoop.runUntilIdle();
    EXPECT_EQ(shown(), none);
    m_shortcuts.setShortcut(optionCommandL, plain);
    EXPECT_EQ(m_mainLoop.waitingTasks(), 0);
}

TEST_F(MenuItemShortcutTest, LeavesTheItemAloneOnceItIsGone)
{
    m_hint->setShortcut(plain);
    m_shortcuts.setShortcut(commandP, plain);
    m_hint.reset();
    m_mainLoop.runUntilIdle();
    EXPECT_EQ(shown(), none);
    m_shortcuts.setShortcut(optionCommandL, plain);
    EXPECT_EQ(m_mainLoop.waitingTasks(), 0);
}

}  // namespace
}  // namespace KeyboardShortcuts
