#include "X11/Keys/OverlayKeysFixture.h"

using namespace OverlayKeysTests;

TEST_F(OverlayKeysTest, TakesEveryKeyFromTheWindowWithTheFocus)
{
    grab();
    for (const int key : {KEY_ESC, KEY_1, KEY_2, KEY_COMMA, KEY_DOT, KEY_A, KEY_ENTER, KEY_F1, KEY_KP5, KEY_LEFT, KEY_102ND})
        m_keyboard.tap(static_cast<std::uint16_t>(key));
    EXPECT_EQ(takeEvents(), (Lines{"53", "18", "19", "43", "47", "0", "36", "122", "87", "123", "10"}));
    EXPECT_EQ(m_other.pressed(), std::vector<int>{});
    EXPECT_EQ(m_other.focus(), m_window);
}

TEST_F(OverlayKeysTest, TakesButDoesNotTellKeysWithoutAVirtualKeyCode)
{
    grab();
    m_keyboard.tap(KEY_SCROLLLOCK);
    m_keyboard.tap(KEY_BRIGHTNESSUP);
    EXPECT_EQ(takeEvents(), Lines{});
    EXPECT_EQ(m_other.pressed(), std::vector<int>{});
}

TEST_F(OverlayKeysTest, TellsModifiersAndLeavesTheirKeysToTheOthers)
{
    grab();
    m_keyboard.chord({KEY_LEFTSHIFT, KEY_2});
    m_keyboard.chord({KEY_LEFTCTRL, KEY_2});
    m_keyboard.chord({KEY_LEFTALT, KEY_2});
    m_keyboard.chord({KEY_RIGHTMETA, KEY_2});
    m_keyboard.lockModifiers(XCB_MOD_MASK_LOCK);
    m_keyboard.tap(KEY_2);
    m_keyboard.lockModifiers(0);
    EXPECT_EQ(
        takeEvents(), (Lines{"19 modifiers 131072", "19 modifiers 262144", "19 modifiers 524288", "19 modifiers 1048576", "19 modifiers 65536"}));
    EXPECT_EQ(m_other.pressed(), (std::vector<int>{KEY_LEFTSHIFT, KEY_LEFTCTRL, KEY_LEFTALT, KEY_RIGHTMETA}));
}

TEST_F(OverlayKeysTest, WorksInEveryLayoutGroup)
{
    m_keyboard.setLayout("us,ru");
    m_keyboard.lockGroup(1);
    grab();
    m_keyboard.tap(KEY_ESC);
    m_keyboard.chord({KEY_LEFTSHIFT, KEY_DOT});
    EXPECT_EQ(takeEvents(), (Lines{"53", "47 modifiers 131072"}));
}

TEST_F(OverlayKeysTest, MarksAutoRepeats)
{
    m_keyboard.repeatQuickly();
    grab();
    m_keyboard.press(KEY_2);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 4; }));
    m_keyboard.release(KEY_2);
    EXPECT_EQ(Lines(m_events.begin(), m_events.begin() + 4), (Lines{"19", "19 repeat", "19 repeat", "19 repeat"}));
    takeEvents();
    m_keyboard.tap(KEY_2);
    EXPECT_EQ(takeEvents(), Lines{"19"});
}

TEST_F(OverlayKeysTest, MarksRepeatsOfASecondKeyWhileTheFirstIsHeld)
{
    m_keyboard.repeatQuickly();
    grab();
    m_keyboard.press(KEY_1);
    m_keyboard.press(KEY_2);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty() && m_events.back() == "19 repeat"; }));
    m_keyboard.release(KEY_1);
    m_keyboard.release(KEY_2);
    takeEvents();
    m_keyboard.tap(KEY_2);
    m_keyboard.tap(KEY_1);
    EXPECT_EQ(takeEvents(), (Lines{"19", "18"}));
}

TEST_F(OverlayKeysTest, MarksTheRepeatsOfAKeyThatWasHeldBefore)
{
    m_keyboard.repeatQuickly();
    m_keyboard.press(KEY_2);
    grab();
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 2; }));
    m_keyboard.release(KEY_2);
    EXPECT_EQ(Lines(m_events.begin(), m_events.begin() + 2), (Lines{"19 repeat", "19 repeat"}));
    takeEvents();
    m_keyboard.tap(KEY_2);
    EXPECT_EQ(takeEvents(), Lines{"19"});
}

TEST_F(OverlayKeysTest, AKeyHeldBeforeAndPressedAgainIsNoRepeat)
{
    m_keyboard.press(KEY_2);
    grab();
    m_keyboard.release(KEY_2);
    m_keyboard.tap(KEY_2);
    EXPECT_EQ(takeEvents(), Lines{"19"});
}

TEST_F(OverlayKeysTest, GivesTheKeysBack)
{
    grab();
    m_keys->release();
    m_keyboard.tap(KEY_ESC);
    tapAfterOverlay(KEY_A);
    EXPECT_EQ(m_other.pressed(), (std::vector<int>{KEY_ESC, KEY_A}));
    EXPECT_EQ(m_events, Lines{});
}

TEST_F(OverlayKeysTest, GivesTheKeysBackAtItsEnd)
{
    grab();
    m_keys.reset();
    tapAfterOverlay(KEY_A);
    EXPECT_EQ(m_other.pressed(), std::vector<int>{KEY_A});
}

TEST_F(OverlayKeysTest, MayBeGrabbedAgainAndAgain)
{
    for (int i = 0; i < 3; ++i) {
        grab();
        grab();
        m_keyboard.tap(KEY_1);
        EXPECT_EQ(takeEvents(), Lines{"18"});
        m_keys->release();
        m_keys->release();
    }
    tapAfterOverlay(KEY_A);
    EXPECT_EQ(m_other.pressed(), std::vector<int>{KEY_A});
}

TEST_F(OverlayKeysTest, AKeyHeldAtTheEndStaysWithUsUntilItsRelease)
{
    m_keyboard.repeatQuickly();
    grab();
    m_keyboard.press(KEY_ESC);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty(); }));
    m_keys->release();
    const auto told = m_events.size();
    const auto repeats = m_keyboard.repeats();
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_keyboard.repeats() >= repeats + 5; }));
    m_keyboard.release(KEY_ESC);
    tapAfterOverlay(KEY_A);
    EXPECT_EQ(m_other.pressed(), std::vector<int>{KEY_A});
    EXPECT_EQ(m_events.size(), told);
}

TEST_F(OverlayKeysTest, AHandlerMayReleaseThem)
{
    m_keys->grab(
        [this](const KeyEvent& event) {
            m_events.push_back(textOf(event));
            m_keys->release();
        },
        XCB_WINDOW_NONE);
    m_keyboard.tap(KEY_ESC);
    m_keyboard.tap(KEY_1);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty(); }));
    tapAfterOverlay(KEY_A);
    EXPECT_EQ(m_events, Lines{"53"});
}

TEST_F(OverlayKeysTest, IsIdleAfterRelease)
{
    grab();
    m_keyboard.tap(KEY_1);
    takeEvents();
    m_keys->release();
    // What the server sent before it saw the release may still come.
    tapAfterOverlay(KEY_B);
    m_watcher.count = 0;
    m_keyboard.chord({KEY_LEFTSHIFT, KEY_ESC});
    m_keyboard.lockModifiers(XCB_MOD_MASK_LOCK);
    m_other.setFocus(XCB_WINDOW_NONE);
    m_other.setFocus(m_window);
    tapAfterOverlay(KEY_A);
    EXPECT_EQ(m_watcher.count, 0);
}

// The keyboard map.

TEST_F(OverlayKeysTest, TakesAKeyThatIsNoModifierAnyMore)
{
    grab();
    ASSERT_EQ(m_server.start({"xmodmap", "-e", "clear lock"}).waitForExit(std::chrono::seconds(10)), 0);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_other.isTaken(KEY_CAPSLOCK, 0); }));
    m_keyboard.tap(KEY_CAPSLOCK);
    EXPECT_TRUE(TestSupport::loopUntil([&] { return m_events == Lines{"57"}; }));
}

TEST_F(OverlayKeysTest, KeepsAllKeysWhenTheLayoutChanges)
{
    grab();
    m_keyboard.setLayout("fr");
    m_keyboard.tap(KEY_Q);
    m_keyboard.setLayout("us", "dvorak");
    m_keyboard.tap(KEY_DOT);
    EXPECT_EQ(takeEvents(), (Lines{"12", "47"}));
    EXPECT_EQ(m_other.pressed(), std::vector<int>{});
}

// The focus.

TEST_F(OverlayKeysTest, TakesTheFocusOnlyWhereNoWindowHasIt)
{
    OtherClient overlay(m_server.displayName());
    const auto overlayWindow = overlay.mapWindow();
    grab(overlayWindow);
    EXPECT_EQ(m_other.focus(), m_window);
    m_keys->release();

    m_other.setFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
    grab(overlayWindow);
    EXPECT_EQ(m_other.focus(), XCB_INPUT_FOCUS_POINTER_ROOT);
    m_keyboard.tap(KEY_1);
    EXPECT_EQ(takeEvents(), Lines{"18"});
    m_keys->release();

    m_other.setFocus(XCB_INPUT_FOCUS_NONE);
    grab(overlayWindow);
    EXPECT_EQ(m_other.focus(), overlayWindow);
    m_keyboard.tap(KEY_1);
    EXPECT_EQ(takeEvents(), Lines{"18"});
    m_keys->release();
    EXPECT_EQ(m_other.focus(), XCB_INPUT_FOCUS_NONE);
}

TEST_F(OverlayKeysTest, LeavesTheFocusToWhoeverTookItMeanwhile)
{
    OtherClient overlay(m_server.displayName());
    m_other.setFocus(XCB_INPUT_FOCUS_NONE);
    grab(overlay.mapWindow());
    m_other.setFocus(m_window);
    m_keys->release();
    EXPECT_EQ(m_other.focus(), m_window);
}

TEST_F(OverlayKeysTest, TakesTheFocusWhenItIsLostLater)
{
    OtherClient overlay(m_server.displayName());
    const auto overlayWindow = overlay.mapWindow();
    grab(overlayWindow);
    m_other.setFocus(XCB_INPUT_FOCUS_NONE);
    EXPECT_TRUE(TestSupport::loopUntil([&] { return m_other.focus() == overlayWindow; }));
    m_keyboard.tap(KEY_1);
    EXPECT_EQ(takeEvents(), Lines{"18"});
    m_keys->release();
    EXPECT_EQ(m_other.focus(), XCB_INPUT_FOCUS_NONE);
}

TEST_F(OverlayKeysTest, HandsTheBorrowedFocusToTheNextOverlay)
{
    OtherClient overlay(m_server.displayName());
    const auto first = overlay.mapWindow();
    const auto second = overlay.mapWindow();
    m_other.setFocus(XCB_INPUT_FOCUS_NONE);
    grab(first);
    grab(second);
    EXPECT_EQ(m_other.focus(), second);
    m_keys->release();
    EXPECT_EQ(m_other.focus(), XCB_INPUT_FOCUS_NONE);
}

TEST_F(OverlayKeysTest, EscapeWorksWithoutAnyFocus)
{
    m_other.setFocus(XCB_INPUT_FOCUS_NONE);
    grab();
    m_keyboard.tap(KEY_ESC);
    EXPECT_TRUE(TestSupport::loopUntil([&] { return m_events == Lines{"53"}; }));
}

TEST_F(OverlayKeysTest, OpensNothingWithoutAServer) { EXPECT_EQ(X11::OverlayKeys::open(":9999", m_mainLoop, m_mainLoop), nullptr); }
