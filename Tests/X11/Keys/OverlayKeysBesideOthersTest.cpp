// The overlay's keys where others want keys too: hot keys, grabs, menus, screen lockers.
#include "Platform/X11/Keys/X11HotKeyCenter.h"
#include "X11/Keys/OverlayKeysFixture.h"

using namespace OverlayKeysTests;

TEST_F(OverlayKeysTest, OtherClientsHotKeysStillFire)
{
    OtherClient desktop(m_server.displayName());
    ASSERT_TRUE(desktop.grabKey(KEY_2, XCB_MOD_MASK_CONTROL));
    ASSERT_TRUE(desktop.grabKey(KEY_F4, XCB_MOD_MASK_1));
    grab();
    m_keyboard.chord({KEY_LEFTCTRL, KEY_2});
    m_keyboard.chord({KEY_LEFTALT, KEY_F4});
    EXPECT_EQ(desktop.pressed(), (std::vector<int>{KEY_2, KEY_F4}));
    EXPECT_EQ(takeEvents(), Lines{});
}

TEST_F(OverlayKeysTest, TakesTheOtherCombinationsOfAHotKeysKey)
{
    OtherClient desktop(m_server.displayName());
    ASSERT_TRUE(desktop.grabKey(KEY_2, XCB_MOD_MASK_CONTROL));
    grab();
    m_keyboard.tap(KEY_2);
    m_keyboard.chord({KEY_LEFTSHIFT, KEY_2});
    m_keyboard.chord({KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_2});
    m_keyboard.lockModifiers(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);
    m_keyboard.tap(KEY_2);
    m_keyboard.lockModifiers(0);
    EXPECT_EQ(takeEvents(), (Lines{"19", "19 modifiers 131072", "19 modifiers 393216", "19 modifiers 65536"}));
    EXPECT_EQ(desktop.pressed(), std::vector<int>{});
}

TEST_F(OverlayKeysTest, KeysOfHotKeysAreOursInEveryWindowThatGetsTheFocusLater)
{
    OtherClient desktop(m_server.displayName());
    ASSERT_TRUE(desktop.grabKey(KEY_2, XCB_MOD_MASK_CONTROL));
    ASSERT_TRUE(desktop.grabKey(KEY_A, XCB_MOD_MASK_4));
    grab();
    OtherClient second(m_server.displayName());
    second.setFocus(second.mapWindow());
    // The move of the focus is told before any key after it.
    ASSERT_TRUE(TestSupport::loopUntil([&] { return second.isTakenOnFocus(KEY_2); }));
    m_keyboard.tap(KEY_2);
    m_keyboard.chord({KEY_LEFTCTRL, KEY_2});
    EXPECT_EQ(takeEvents(), Lines{"19"});
    EXPECT_EQ(desktop.pressed(), std::vector<int>{KEY_2});
    EXPECT_EQ(second.pressed(), std::vector<int>{KEY_LEFTCTRL});

    m_other.setFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_other.isTaken(KEY_2, XCB_MOD_MASK_1); }));
    m_keyboard.chord({KEY_LEFTALT, KEY_2});
    EXPECT_EQ(takeEvents(), Lines{"19 modifiers 524288"});

    m_other.setFocus(m_window);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_other.isTakenOnFocus(KEY_2); }));
    m_keyboard.tap(KEY_2);
    EXPECT_EQ(takeEvents(), Lines{"19"});
}

TEST_F(OverlayKeysTest, KeysOfHotKeysAreOursWhereThePointerHasTheFocus)
{
    OtherClient desktop(m_server.displayName());
    ASSERT_TRUE(desktop.grabKey(KEY_2, XCB_MOD_MASK_CONTROL));
    m_other.setFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
    grab();
    m_keyboard.tap(KEY_2);
    m_keyboard.chord({KEY_LEFTSHIFT, KEY_2});
    m_keyboard.chord({KEY_LEFTCTRL, KEY_2});
    EXPECT_EQ(takeEvents(), (Lines{"19", "19 modifiers 131072"}));
    EXPECT_EQ(desktop.pressed(), std::vector<int>{KEY_2});
}

TEST_F(OverlayKeysTest, OfManyHotKeysAndNoFocusedWindowItTakesWhatTypes)
{
    OtherClient desktop(m_server.displayName());
    for (int key = KEY_1; key <= KEY_5; ++key)
        ASSERT_TRUE(desktop.grabKey(static_cast<std::uint16_t>(key), XCB_MOD_MASK_4));
    m_other.setFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
    grab();
    m_keyboard.tap(KEY_1);
    m_keyboard.chord({KEY_RIGHTSHIFT, KEY_5});
    m_keyboard.chord({KEY_LEFTMETA, KEY_1});
    m_keyboard.lockModifiers(XCB_MOD_MASK_2);
    m_keyboard.tap(KEY_2);
    EXPECT_EQ(takeEvents(), (Lines{"18", "23 modifiers 131072", "19"}));
    EXPECT_EQ(desktop.pressed(), std::vector<int>{KEY_1});
    EXPECT_FALSE(m_other.isTaken(KEY_1, XCB_MOD_MASK_CONTROL));
}

TEST_F(OverlayKeysTest, AWindowsOwnGrabOfAKeyLeavesUsTheOtherCombinations)
{
    OtherClient desktop(m_server.displayName());
    ASSERT_TRUE(desktop.grabKey(KEY_2, XCB_MOD_MASK_CONTROL));
    ASSERT_TRUE(desktop.grabKey(KEY_2, XCB_MOD_MASK_1, m_window));
    grab();
    m_keyboard.tap(KEY_2);
    m_keyboard.chord({KEY_LEFTALT, KEY_2});
    EXPECT_EQ(takeEvents(), Lines{"19"});
    EXPECT_EQ(desktop.pressed(), std::vector<int>{KEY_2});
}

TEST_F(OverlayKeysTest, FindsTheToplevelOfANestedFocus)
{
    OtherClient desktop(m_server.displayName());
    ASSERT_TRUE(desktop.grabKey(KEY_2, XCB_MOD_MASK_CONTROL));
    m_other.setFocus(m_other.mapWindow(m_window));
    grab();
    m_keyboard.tap(KEY_2);
    EXPECT_EQ(takeEvents(), Lines{"19"});
    m_other.setFocus(m_window);
    m_keyboard.tap(KEY_2);
    EXPECT_EQ(takeEvents(), Lines{"19"});
    m_keys->release();
    EXPECT_FALSE(m_other.isTakenOnFocus(KEY_2));
}

// Its combinations one by one on the root would cost the server a time that grows with
// the square of their number.
TEST_F(OverlayKeysTest, TakesTheKeyOfAHotKeyInTheWindowWithTheFocusOnly)
{
    OtherClient desktop(m_server.displayName());
    ASSERT_TRUE(desktop.grabKey(KEY_2, XCB_MOD_MASK_CONTROL));
    grab();
    EXPECT_TRUE(m_other.isTaken(KEY_2, XCB_MOD_MASK_ANY, m_window));
    EXPECT_FALSE(m_other.isTaken(KEY_2, XCB_MOD_MASK_SHIFT));
    EXPECT_TRUE(m_other.isTaken(KEY_3, XCB_MOD_MASK_SHIFT));
}

TEST_F(OverlayKeysTest, OurOwnHotKeysStillFire)
{
    const auto center = X11::X11HotKeyCenter::open(m_server.displayName(), m_mainLoop, m_mainLoop);
    const auto hotKey = center->registerHotKey(7, 0x900, {});
    const auto handler = center->installHandler([&](const KeyboardEvent& event) {
        m_events.push_back("hot key " + std::to_string(static_cast<int>(event.kind)));
        return noErr;
    });
    center->addEventTypes(KeyboardEventTypes::hotKey);
    grab();
    m_keyboard.lockModifiers(XCB_MOD_MASK_2);
    m_keyboard.chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
    EXPECT_TRUE(TestSupport::loopUntil([&] { return m_events == Lines{"hot key 5", "hot key 6"}; }));
    m_keys->release();
    m_keyboard.chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
    EXPECT_TRUE(TestSupport::loopUntil([&] { return m_events == Lines{"hot key 5", "hot key 6", "hot key 5", "hot key 6"}; }));
}

TEST_F(OverlayKeysTest, EscapeOfAnotherClientsHotKeyIsItsOwn)
{
    OtherClient desktop(m_server.displayName());
    ASSERT_TRUE(desktop.grabKey(KEY_ESC, XCB_MOD_MASK_1));
    grab();
    m_keyboard.chord({KEY_LEFTALT, KEY_ESC});
    EXPECT_EQ(desktop.pressed(), std::vector<int>{KEY_ESC});
    EXPECT_EQ(takeEvents(), Lines{});
    m_keyboard.tap(KEY_ESC);
    EXPECT_EQ(takeEvents(), Lines{"53"});
}

TEST_F(OverlayKeysTest, TellsEscapeOnceWhileAnotherClientHasTheKeyboard)
{
    grab();
    ASSERT_TRUE(m_other.grabKeyboard());
    m_keyboard.tap(KEY_1);
    m_keyboard.tap(KEY_ESC);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty(); }));
    m_other.ungrabKeyboard();
    EXPECT_EQ(takeEvents(), Lines{"53"});
    EXPECT_EQ(m_other.pressed(), (std::vector<int>{KEY_1, KEY_ESC}));
}

TEST_F(OverlayKeysTest, AScreenLockerGetsTheKeyboard)
{
    grab();
    OtherClient locker(m_server.displayName());
    EXPECT_TRUE(locker.grabKeyboard());
    m_keyboard.tap(KEY_P);
    EXPECT_EQ(locker.pressed(), std::vector<int>{KEY_P});
    EXPECT_EQ(m_events, Lines{});
}

TEST_F(OverlayKeysTest, GivesWayToAHotKeyThatComesMeanwhile)
{
    const auto center = X11::X11HotKeyCenter::open(m_server.displayName(), m_mainLoop, m_mainLoop);
    grab();
    EXPECT_EQ(center->registerHotKey(7, 0x900, {}).status, HotKeyStatus::taken);
    center->setYield([this] { return m_keys->suspend(); });
    const auto hotKey = center->registerHotKey(7, 0x900, {});
    EXPECT_EQ(hotKey.status, HotKeyStatus::granted);
    m_keyboard.chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
    m_keyboard.tap(KEY_X);
    EXPECT_EQ(takeEvents(), Lines{"7"});
}

TEST_F(OverlayKeysTest, StaysReleasedWhenASuspensionEndsLater)
{
    grab();
    auto suspension = m_keys->suspend();
    m_keys->release();
    suspension.release();
    tapAfterOverlay(KEY_A);
    EXPECT_EQ(m_other.pressed(), std::vector<int>{KEY_A});
}
