// Raw keys: what counts while a menu of this program has the keyboard.
#include "X11/Keys/X11HotKeyCenterFixture.h"

using namespace Platform;

namespace {

class X11HotKeyCenterRawKeys : public X11HotKeyCenterFixture { };

}  // namespace

TEST_F(X11HotKeyCenterRawKeys, TellsRawKeysWhileAnotherClientHasTheKeyboard)
{
    m_center->removeEventTypes(KeyboardEventTypes::hotKey);
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    ASSERT_TRUE(m_other.grabKeyboard());
    pressShortcut(KEY_X);
    m_keyboard.chord({KEY_LEFTSHIFT, KEY_LEFTCTRL, KEY_1});
    m_keyboard.tap(KEY_A);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty() && m_events.back() == "up 0 0"; }));
    EXPECT_EQ(m_events, (Lines{"down 7 2304", "up 7 2304", "down 18 4608", "up 18 4608", "down 0 0", "up 0 0"}));
}

TEST_F(X11HotKeyCenterRawKeys, TellsRawKeysWithoutLocks)
{
    m_keyboard.lockModifiers(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    m_keyboard.tap(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 2; }));
    EXPECT_EQ(m_events, (Lines{"down 7 0", "up 7 0"}));
}

TEST_F(X11HotKeyCenterRawKeys, KnowsTheModifiersThatWereDownBeforeRawKeysWereWanted)
{
    m_keyboard.press(KEY_LEFTMETA);
    m_keyboard.press(KEY_RIGHTALT);
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    m_keyboard.tap(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 2; }));
    EXPECT_EQ(m_events, (Lines{"down 7 2304", "up 7 2304"}));
}

TEST_F(X11HotKeyCenterRawKeys, DoesNotRepeatRawKeys)
{
    m_keyboard.repeatQuickly();
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    m_keyboard.press(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_keyboard.repeats() >= 5; }));
    m_keyboard.release(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 2; }));
    EXPECT_EQ(m_events, (Lines{"down 7 0", "up 7 0"}));
}

TEST_F(X11HotKeyCenterRawKeys, TellsNoRawKeyAfterTheirTypesAreRemoved)
{
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    m_keyboard.tap(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 2; }));
    m_center->removeEventTypes(KeyboardEventTypes::rawKey);
    m_events.clear();
    m_keyboard.tap(KEY_X);
    EXPECT_EQ(takeEvents(), Lines{});
}

// A shortcut is pressed just when a menu opens or closes: one path tells of it.

TEST_F(X11HotKeyCenterRawKeys, AHotKeyThatIsHeldWhenItComesDoesNotFireByItsRepeat)
{
    m_keyboard.repeatQuickly();
    m_center->removeEventTypes(KeyboardEventTypes::hotKey);
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    for (const auto key : {KEY_LEFTMETA, KEY_LEFTALT, KEY_X})
        m_keyboard.press(static_cast<std::uint16_t>(key));
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events == Lines{"down 7 2304"}; }));
    const auto hotKey = registerKey(keyX, commandOption, 1);
    m_center->removeEventTypes(KeyboardEventTypes::rawKey);
    m_center->addEventTypes(KeyboardEventTypes::hotKey);
    const auto repeats = m_keyboard.repeats();
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_keyboard.repeats() >= repeats + 5; }));
    for (const auto key : {KEY_X, KEY_LEFTALT, KEY_LEFTMETA})
        m_keyboard.release(static_cast<std::uint16_t>(key));
    EXPECT_EQ(takeEvents(), Lines{"down 7 2304"});
    pressShortcut(KEY_X);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterRawKeys, AHotKeyThatIsHeldWhenTheFirstTypesComeDoesNotFireByItsRepeat)
{
    m_keyboard.repeatQuickly();
    for (const auto key : {KEY_LEFTMETA, KEY_LEFTALT, KEY_X})
        m_keyboard.press(static_cast<std::uint16_t>(key));
    const auto hotKey = registerKey(keyX, commandOption, 1);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_keyboard.repeats() >= 5; }));
    m_keyboard.release(KEY_X);
    m_keyboard.tap(KEY_X);
    m_keyboard.release(KEY_LEFTALT);
    m_keyboard.release(KEY_LEFTMETA);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterRawKeys, APressOnItsWayWhenTheMenuClosesStillFires)
{
    m_center->removeEventTypes(KeyboardEventTypes::hotKey);
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    for (const auto key : {KEY_LEFTMETA, KEY_LEFTALT, KEY_X})
        m_keyboard.press(static_cast<std::uint16_t>(key));
    // The loop has not run yet: the raw press waits unread.
    const auto hotKey = registerKey(keyX, commandOption, 1);
    m_center->removeEventTypes(KeyboardEventTypes::rawKey);
    m_center->addEventTypes(KeyboardEventTypes::hotKey);
    for (const auto key : {KEY_X, KEY_LEFTALT, KEY_LEFTMETA})
        m_keyboard.release(static_cast<std::uint16_t>(key));
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterRawKeys, AHotKeyGivenBackAndRegisteredWhileHeldDoesNotFireAgain)
{
    m_keyboard.repeatQuickly();
    auto hotKey = registerKey(keyX, commandOption, 1);
    for (const auto key : {KEY_LEFTMETA, KEY_LEFTALT, KEY_X})
        m_keyboard.press(static_cast<std::uint16_t>(key));
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events == Lines{"pressed 1"}; }));
    hotKey.reference.reset();
    hotKey = registerKey(keyX, commandOption, 1);
    const auto repeats = m_keyboard.repeats();
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_keyboard.repeats() >= repeats + 5; }));
    EXPECT_EQ(m_events, Lines{"pressed 1"});
    for (const auto key : {KEY_X, KEY_LEFTALT, KEY_LEFTMETA})
        m_keyboard.release(static_cast<std::uint16_t>(key));
    takeEvents();
    pressShortcut(KEY_X);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterRawKeys, AKeyThatOutlastsTheHotKeyItWentDownUnderIsNotTakenForHeldLater)
{
    const auto first = registerKey(keyX, commandOption, 1);
    const auto second = registerKey(keyL, commandOption, 2);
    for (const auto key : {KEY_LEFTMETA, KEY_LEFTALT, KEY_X, KEY_L})
        m_keyboard.press(static_cast<std::uint16_t>(key));
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events == Lines{"pressed 1", "pressed 2"}; }));
    m_keyboard.release(KEY_X);
    m_keyboard.release(KEY_L);
    m_keyboard.tap(KEY_L);
    m_keyboard.release(KEY_LEFTALT);
    m_keyboard.release(KEY_LEFTMETA);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "pressed 2", "released 1", "released 2", "pressed 2", "released 2"}));
}
