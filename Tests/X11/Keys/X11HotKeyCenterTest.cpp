#include "Platform/X11/Keys/X11HotKeyCenter.h"

#include "Support/Process.h"
#include "X11/Keys/KeysFixture.h"

using namespace Platform;

namespace {

constexpr std::uint32_t commandOption = 0x900;
constexpr std::uint32_t keyX = 7;
constexpr std::uint32_t keyL = 37;

class X11HotKeyCenterTest : public KeysFixture {
protected:
    X11HotKeyCenterTest()
    {
        m_handler = m_center->installHandler([this](const KeyboardEvent& event) {
            m_events.push_back(textOf(event));
            return noErr;
        });
        m_center->addEventTypes(KeyboardEventTypes::hotKey);
    }

    static std::string textOf(const KeyboardEvent& event)
    {
        switch (event.kind) {
        case KeyboardEvent::Kind::hotKeyPressed:
            return "pressed " + std::to_string(event.hotKeyID.id);
        case KeyboardEvent::Kind::hotKeyReleased:
            return "released " + std::to_string(event.hotKeyID.id);
        case KeyboardEvent::Kind::rawKeyDown:
            return "down " + std::to_string(event.keyCode) + " " + std::to_string(event.carbonModifiers);
        case KeyboardEvent::Kind::rawKeyUp:
            return "up " + std::to_string(event.keyCode) + " " + std::to_string(event.carbonModifiers);
        }
        return "unknown";
    }

    HotKeyRegistration registerKey(std::uint32_t keyCode, std::uint32_t modifiers, std::uint32_t id)
    {
        return m_center->registerHotKey(keyCode, modifiers, {.signature = 0x51484b56, .id = id});
    }

    void pressShortcut(std::uint16_t key) { m_keyboard.chord({KEY_LEFTMETA, KEY_LEFTALT, key}); }

    // All that came until a hot key that works came through: F12, registered here.
    std::vector<std::string> takeEvents()
    {
        const auto sentinel = registerKey(111, 0, 999);
        EXPECT_EQ(sentinel.status, HotKeyStatus::granted);
        m_keyboard.tap(KEY_F12);
        EXPECT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty() && m_events.back() == "released 999"; }));
        auto events = std::move(m_events);
        m_events.clear();
        std::erase(events, "pressed 999");
        std::erase(events, "released 999");
        return events;
    }

    std::unique_ptr<X11::X11HotKeyCenter> m_center = X11::X11HotKeyCenter::open(m_server.displayName(), m_mainLoop, m_mainLoop);
    std::vector<std::string> m_events;
    Token m_handler;
};

using Lines = std::vector<std::string>;

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

// Raw keys: what counts while a menu of this program has the keyboard.

TEST_F(X11HotKeyCenterTest, TellsRawKeysWhileAnotherClientHasTheKeyboard)
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

TEST_F(X11HotKeyCenterTest, TellsRawKeysWithoutLocks)
{
    m_keyboard.lockModifiers(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    m_keyboard.tap(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 2; }));
    EXPECT_EQ(m_events, (Lines{"down 7 0", "up 7 0"}));
}

TEST_F(X11HotKeyCenterTest, KnowsTheModifiersThatWereDownBeforeRawKeysWereWanted)
{
    m_keyboard.press(KEY_LEFTMETA);
    m_keyboard.press(KEY_RIGHTALT);
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    m_keyboard.tap(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 2; }));
    EXPECT_EQ(m_events, (Lines{"down 7 2304", "up 7 2304"}));
}

TEST_F(X11HotKeyCenterTest, DoesNotRepeatRawKeys)
{
    m_keyboard.repeatQuickly();
    m_center->addEventTypes(KeyboardEventTypes::rawKey);
    m_keyboard.press(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_keyboard.repeats() >= 5; }));
    m_keyboard.release(KEY_X);
    ASSERT_TRUE(TestSupport::loopUntil([&] { return m_events.size() >= 2; }));
    EXPECT_EQ(m_events, (Lines{"down 7 0", "up 7 0"}));
}

TEST_F(X11HotKeyCenterTest, TellsNoRawKeyAfterTheirTypesAreRemoved)
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

TEST_F(X11HotKeyCenterTest, AHotKeyThatIsHeldWhenItComesDoesNotFireByItsRepeat)
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

TEST_F(X11HotKeyCenterTest, AHotKeyThatIsHeldWhenTheFirstTypesComeDoesNotFireByItsRepeat)
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

TEST_F(X11HotKeyCenterTest, APressOnItsWayWhenTheMenuClosesStillFires)
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

TEST_F(X11HotKeyCenterTest, AHotKeyGivenBackAndRegisteredWhileHeldDoesNotFireAgain)
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

TEST_F(X11HotKeyCenterTest, AKeyThatOutlastsTheHotKeyItWentDownUnderIsNotTakenForHeldLater)
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
