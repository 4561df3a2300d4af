#include "Support/Process.h"
#include "X11/Keys/X11HotKeyCenterFixture.h"

using namespace Platform;

namespace {

class X11HotKeyCenterTest : public X11HotKeyCenterFixture { };

}  // namespace

TEST_F(X11HotKeyCenterTest, TellsEachPressAndReleaseOnce)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    EXPECT_EQ(hotKey.status, HotKeyStatus::granted);
    EXPECT_NE(hotKey.reference, nullptr);
    pressShortcut(KEY_X);
    pressShortcut(KEY_X);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1", "pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterTest, TellsHotKeysApart)
{
    const auto first = registerKey(keyX, commandOption, 1);
    const auto second = registerKey(keyL, commandOption, 2);
    const auto third = registerKey(keyX, 0x1200, 3);
    m_keyboard.chord({KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_X});
    pressShortcut(KEY_L);
    pressShortcut(KEY_X);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 3", "released 3", "pressed 2", "released 2", "pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterTest, FiresWhateverLocksAreOn)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    for (const auto locks : std::initializer_list<std::uint8_t>{XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2}) {
        m_keyboard.lockModifiers(locks);
        pressShortcut(KEY_X);
        EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"})) << "locks " << int{locks};
    }
}

TEST_F(X11HotKeyCenterTest, FiresInEveryLayoutGroup)
{
    m_keyboard.setLayout("us,ru,de,fr");
    const auto hotKey = registerKey(keyX, commandOption, 1);
    for (const auto group : std::initializer_list<std::uint8_t>{1, 2, 3}) {
        m_keyboard.lockGroup(group);
        pressShortcut(KEY_X);
        EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"})) << "group " << int{group};
    }
}

TEST_F(X11HotKeyCenterTest, DoesNotFireWithFurtherOrFewerModifiers)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    m_keyboard.chord({KEY_LEFTSHIFT, KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
    m_keyboard.chord({KEY_LEFTMETA, KEY_X});
    m_keyboard.tap(KEY_X);
    EXPECT_EQ(takeEvents(), Lines{});
}

TEST_F(X11HotKeyCenterTest, DoesNotRepeatWhileHeld)
{
    m_keyboard.repeatQuickly();
    const auto hotKey = registerKey(keyX, commandOption, 1);
    m_keyboard.press(KEY_LEFTMETA);
    m_keyboard.press(KEY_LEFTALT);
    m_keyboard.press(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_keyboard.repeats() >= 5; }));
    EXPECT_EQ(m_events, Lines{"pressed 1"});
    m_keyboard.release(KEY_X);
    m_keyboard.release(KEY_LEFTALT);
    m_keyboard.release(KEY_LEFTMETA);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterTest, IsReleasedOnceWhenTheModifiersGoFirst)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    m_keyboard.press(KEY_LEFTMETA);
    m_keyboard.press(KEY_LEFTALT);
    m_keyboard.press(KEY_X);
    m_keyboard.release(KEY_LEFTMETA);
    m_keyboard.release(KEY_LEFTALT);
    m_keyboard.release(KEY_X);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterTest, GivesTheHotKeyBackWithItsReference)
{
    auto hotKey = registerKey(keyX, commandOption, 1);
    EXPECT_FALSE(m_other.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1));
    hotKey.reference.reset();
    pressShortcut(KEY_X);
    EXPECT_EQ(takeEvents(), Lines{});
    EXPECT_TRUE(m_other.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1));
    EXPECT_TRUE(m_other.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK));
    EXPECT_TRUE(m_other.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1 | XCB_MOD_MASK_2));
    EXPECT_TRUE(m_other.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2));
}

TEST_F(X11HotKeyCenterTest, IsTakenAsAWholeWhenAnotherClientHoldsOneLockVariant)
{
    ASSERT_TRUE(m_other.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2));
    const auto hotKey = registerKey(keyX, commandOption, 1);
    EXPECT_EQ(static_cast<int>(hotKey.status), -9878);
    EXPECT_EQ(hotKey.reference, nullptr);
    OtherClient third(m_server.displayName());
    EXPECT_TRUE(third.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1));
    EXPECT_TRUE(third.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK));
    EXPECT_TRUE(third.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1 | XCB_MOD_MASK_2));
}

TEST_F(X11HotKeyCenterTest, ARefusedCombinationDoesNotHurtTheKeysOtherHotKeys)
{
    const auto control = registerKey(keyX, 0x1000, 1);
    ASSERT_TRUE(m_other.grabKey(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1));
    EXPECT_EQ(registerKey(keyX, commandOption, 2).status, HotKeyStatus::taken);
    m_keyboard.chord({KEY_LEFTCTRL, KEY_X});
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterTest, HoldsEachCombinationOnce)
{
    auto hotKey = registerKey(keyX, commandOption, 1);
    EXPECT_EQ(registerKey(keyX, commandOption, 2).status, HotKeyStatus::taken);
    pressShortcut(KEY_X);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
    hotKey.reference.reset();
    EXPECT_EQ(registerKey(keyX, commandOption, 2).status, HotKeyStatus::granted);
}

TEST_F(X11HotKeyCenterTest, SupportsNeitherTheFunctionModifierNorKeysThatLinuxLacks)
{
    EXPECT_EQ(static_cast<int>(registerKey(keyX, 0x20900, 1).status), -9879);
    EXPECT_EQ(static_cast<int>(registerKey(63, commandOption, 1).status), -9879);
    EXPECT_EQ(static_cast<int>(registerKey(4294967295U, commandOption, 1).status), -9879);
}

TEST_F(X11HotKeyCenterTest, TellsNoHotKeyWhileTheirTypesAreRemoved)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    m_center->removeEventTypes(KeyboardEventTypes::hotKey);
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    pressShortcut(KEY_X);
    m_keyboard.tap(KEY_A);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty() && m_events.back() == "up 0 0"; }));
    EXPECT_EQ(m_events, (Lines{"down 7 2304", "up 7 2304", "down 0 0", "up 0 0"}));
}

TEST_F(X11HotKeyCenterTest, TellsTheLastHandlerOnly)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    const auto second = m_center->installHandler([this](const KeyboardEvent& event) {
        m_events.push_back("second " + std::to_string(event.hotKeyID.id));
        return noErr;
    });
    m_handler.release();
    pressShortcut(KEY_X);
    EXPECT_TRUE(TestSupport::loopUntil([&] { return m_events == Lines{"second 1", "second 1"}; }));
}

TEST_F(X11HotKeyCenterTest, TellsARemovedHandlerNothing)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    const auto other = X11::X11HotKeyCenter::open(m_server.displayName(), m_mainLoop, m_mainLoop);
    bool hasOtherFired = false;
    const auto otherHandler = other->installHandler([&](const KeyboardEvent&) {
        hasOtherFired = true;
        return noErr;
    });
    other->addEventTypes(KeyboardEventTypes::hotKey);
    const auto otherHotKey = other->registerHotKey(keyL, commandOption, {});
    m_handler.release();
    pressShortcut(KEY_X);
    pressShortcut(KEY_L);
    EXPECT_TRUE(TestSupport::loopUntil([&] { return hasOtherFired; }));
    EXPECT_EQ(m_events, Lines{});
}

TEST_F(X11HotKeyCenterTest, ReferencesAndTokensMayOutliveIt)
{
    auto hotKey = registerKey(keyX, commandOption, 1);
    m_center.reset();
    hotKey.reference.reset();
    m_handler.release();
    EXPECT_TRUE(TestSupport::loopUntil([&] { return !m_other.isTaken(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1); }));
}

TEST_F(X11HotKeyCenterTest, AHandlerMayGiveTheHotKeyBackAndEndTheCenter)
{
    auto hotKey = registerKey(keyX, commandOption, 1);
    m_handler = m_center->installHandler([&](const KeyboardEvent&) {
        hotKey.reference.reset();
        m_center.reset();
        return noErr;
    });
    pressShortcut(KEY_X);
    EXPECT_TRUE(TestSupport::loopUntil([&] { return m_center == nullptr; }));
}

TEST_F(X11HotKeyCenterTest, OpensNothingWithoutAServer) { EXPECT_EQ(X11::X11HotKeyCenter::open(":9999", m_mainLoop, m_mainLoop), nullptr); }

TEST_F(X11HotKeyCenterTest, FindsNumLockWhereverItsModifierIs)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    ASSERT_EQ(m_server.start({"xmodmap", "-e", "remove mod2 = Num_Lock", "-e", "add mod3 = Num_Lock"}).waitForExit(std::chrono::seconds(10)), 0);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_other.isTaken(KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1 | XCB_MOD_MASK_3); }));
    m_keyboard.lockModifiers(XCB_MOD_MASK_3);
    pressShortcut(KEY_X);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}

TEST_F(X11HotKeyCenterTest, GrabsAgainWhenSuperAndAltChangePlaces)
{
    const auto hotKey = registerKey(keyX, 0x100, 1);
    const std::vector<std::string> swap = {"xmodmap", "-e", "clear mod1", "-e", "clear mod4", "-e", "add mod4 = Alt_L", "-e", "add mod1 = Super_L"};
    ASSERT_EQ(m_server.start(swap).waitForExit(std::chrono::seconds(10)), 0);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return !m_other.isTaken(KEY_X, XCB_MOD_MASK_4); }));
    m_keyboard.chord({KEY_LEFTMETA, KEY_X});
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
    m_keyboard.chord({KEY_LEFTALT, KEY_X});
    EXPECT_EQ(takeEvents(), Lines{});
}

TEST_F(X11HotKeyCenterTest, WaitsForAModifierThatTheKeyboardLacks)
{
    const auto hotKey = registerKey(keyX, commandOption, 1);
    const auto other = registerKey(keyL, 0x800, 2);
    const std::vector<std::string> take = {"xmodmap", "-e", "clear mod4", "-e", "remove mod2 = Num_Lock", "-e", "add mod3 = Num_Lock"};
    ASSERT_EQ(m_server.start(take).waitForExit(std::chrono::seconds(10)), 0);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_other.isTaken(KEY_L, XCB_MOD_MASK_1 | XCB_MOD_MASK_3); }));
    EXPECT_FALSE(m_other.isTaken(KEY_X, 0));
    m_keyboard.tap(KEY_X);
    ASSERT_EQ(m_server.start({"xmodmap", "-e", "add mod4 = Super_L"}).waitForExit(std::chrono::seconds(10)), 0);
    pressShortcut(KEY_X);
    EXPECT_EQ(takeEvents(), (Lines{"pressed 1", "released 1"}));
}
