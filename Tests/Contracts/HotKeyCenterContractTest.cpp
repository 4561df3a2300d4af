// What every hot-key centre promises, asked of the fake and of a real server's.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <array>
#include <string>
#include <vector>

#include "Contracts/RealLoop.h"
#include "Platform/KeyCodes.h"
#include "Platform/X11/Keys/X11HotKeyCenter.h"
#include "Support/FakeHotKeyCenter.h"
#include "Support/PrivateServer.h"
#include "Support/XTestKeyboard.h"

namespace Contracts {
namespace {

using Platform::HotKeyStatus;
using Platform::KeyboardEvent;
using Platform::KeyboardEventTypes;
using Combination = TestSupport::FakeHotKeyCenter::Combination;

constexpr Combination commandOptionX = {7, 0x900};
constexpr Combination commandOptionL = {37, 0x900};
constexpr Combination controlShiftX = {7, 0x1200};
constexpr Combination bareX = {7, 0};

class FakeKeys {
public:
    Platform::HotKeyCenter& center() { return *m_center; }
    void closeCenter() { m_center.reset(); }
    void type(const Combination& combination)
    {
        m_center->press(combination);
        m_center->release(combination);
    }
    void takeByAnotherProgram(const Combination& combination) { m_center->refuse(combination); }
    void giveBackByAnotherProgram(const Combination& combination) { m_center->allow(combination); }
    template <typename Condition> bool waitUntil(Condition&& condition) { return condition(); }
    void settle() { }

private:
    TestSupport::CallLog m_log;
    std::unique_ptr<TestSupport::FakeHotKeyCenter> m_center = std::make_unique<TestSupport::FakeHotKeyCenter>(m_log);
};

class RealKeys {
public:
    Platform::HotKeyCenter& center() { return *m_center; }
    void closeCenter() { m_center.reset(); }
    void type(const Combination& combination)
    {
        const auto modifiers = keysOf(combination.carbonModifiers);
        for (const auto modifier : modifiers)
            m_keyboard.press(modifier);
        m_keyboard.tap(*Platform::evdevCode(combination.keyCode));
        for (const auto modifier : modifiers)
            m_keyboard.release(modifier);
    }
    void takeByAnotherProgram(const Combination& combination)
    {
        m_rival = Platform::X11::X11HotKeyCenter::open(m_server.displayName(), m_loop.loop(), m_loop.loop());
        m_rivals = m_rival->registerHotKey(combination.keyCode, combination.carbonModifiers, {});
        ASSERT_EQ(m_rivals.status, HotKeyStatus::granted);
    }
    void giveBackByAnotherProgram(const Combination&)
    {
        m_rivals.reference.reset();
        // A round trip of that program, after which the server has done it.
        m_rival->registerHotKey(111, 0, {});
        m_rival.reset();
    }
    template <typename Condition> bool waitUntil(Condition&& condition) { return TestSupport::loopUntil(condition); }
    // The server has sent its events by the time that a key is typed; they wait for the loop.
    void settle()
    {
        int turns = 0;
        TestSupport::loopUntil([&] { return ++turns > 20; });
    }

private:
    static std::vector<std::uint16_t> keysOf(std::uint32_t carbonModifiers)
    {
        namespace Modifier = Platform::CarbonModifier;
        std::vector<std::uint16_t> keys;
        for (const auto& [modifier, key] : {std::pair(Modifier::command, KEY_LEFTMETA), {Modifier::option, KEY_LEFTALT},
                 {Modifier::control, KEY_LEFTCTRL}, {Modifier::shift, KEY_LEFTSHIFT}}) {
            if ((carbonModifiers & modifier) != 0)
                keys.push_back(static_cast<std::uint16_t>(key));
        }
        return keys;
    }

    RealLoop m_loop;
    TestSupport::PrivateServer m_server;
    TestSupport::XTestKeyboard m_keyboard{m_server.displayName()};
    std::unique_ptr<Platform::X11::X11HotKeyCenter> m_center =
        Platform::X11::X11HotKeyCenter::open(m_server.displayName(), m_loop.loop(), m_loop.loop());
    std::unique_ptr<Platform::X11::X11HotKeyCenter> m_rival;
    Platform::HotKeyRegistration m_rivals;
};

template <typename Keys> class HotKeyCenterContract : public testing::Test {
protected:
    Platform::HotKeyCenter& center() { return keys.center(); }

    void listen(KeyboardEventTypes types) { center().addEventTypes(types); }

    Platform::Token installHandler()
    {
        return center().installHandler([this](const KeyboardEvent& event) {
            events.push_back(textOf(event));
            return Platform::noErr;
        });
    }

    Platform::HotKeyRegistration registerKey(const Combination& combination, std::uint32_t id)
    {
        return center().registerHotKey(combination.keyCode, combination.carbonModifiers, {.signature = 0x54455354, .id = id});
    }

    static std::string textOf(const KeyboardEvent& event)
    {
        const auto id = std::to_string(event.hotKeyID.id) + (event.hotKeyID.signature == 0x54455354 ? "" : " of another");
        const auto key = std::to_string(event.keyCode) + "+" + std::to_string(event.carbonModifiers);
        switch (event.kind) {
        case KeyboardEvent::Kind::hotKeyPressed:
            return "pressed " + id;
        case KeyboardEvent::Kind::hotKeyReleased:
            return "released " + id;
        case KeyboardEvent::Kind::rawKeyDown:
            return "down " + key;
        case KeyboardEvent::Kind::rawKeyUp:
            return "up " + key;
        }
        return "unknown";
    }

    using Lines = std::vector<std::string>;
    // Keys arrive in order: what comes of these last ones comes after all the rest.
    void expectInTheEnd(const Lines& expected)
    {
        EXPECT_TRUE(keys.waitUntil([&] { return events.size() >= expected.size(); }));
        EXPECT_EQ(events, expected);
    }

    Keys keys;
    std::vector<std::string> events;
};

using Keyboards = testing::Types<FakeKeys, RealKeys>;
TYPED_TEST_SUITE(HotKeyCenterContract, Keyboards);

TYPED_TEST(HotKeyCenterContract, TellsTheHandlerOfPressAndReleaseByIdentifier)
{
    const auto handler = this->installHandler();
    this->listen(KeyboardEventTypes::hotKey);
    const auto first = this->registerKey(commandOptionX, 1);
    const auto second = this->registerKey(controlShiftX, 2);
    EXPECT_EQ(first.status, HotKeyStatus::granted);
    EXPECT_NE(first.reference, nullptr);
    this->keys.type(controlShiftX);
    this->keys.type(bareX);
    this->keys.type(commandOptionL);
    this->keys.type(commandOptionX);
    this->expectInTheEnd({"pressed 2", "released 2", "pressed 1", "released 1"});
}

TYPED_TEST(HotKeyCenterContract, TellsNothingBeforeATypeIsAddedOrAfterItIsRemoved)
{
    const auto handler = this->installHandler();
    const auto hotKey = this->registerKey(commandOptionX, 1);
    const auto last = this->registerKey(commandOptionL, 2);
    this->keys.type(commandOptionX);
    this->keys.settle();
    this->listen(KeyboardEventTypes::hotKey);
    this->keys.type(commandOptionL);
    this->expectInTheEnd({"pressed 2", "released 2"});
    this->center().removeEventTypes(KeyboardEventTypes::hotKey);
    this->keys.type(commandOptionX);
    this->keys.settle();
    this->listen(KeyboardEventTypes::hotKey);
    this->keys.type(commandOptionL);
    this->expectInTheEnd({"pressed 2", "released 2", "pressed 2", "released 2"});
}

TYPED_TEST(HotKeyCenterContract, TellsAHandlerNothingOnceItsTokenEnds)
{
    this->listen(KeyboardEventTypes::hotKey);
    const auto hotKey = this->registerKey(commandOptionX, 1);
    auto former = this->center().installHandler([](const KeyboardEvent&) -> std::int32_t {
        ADD_FAILURE();
        return Platform::noErr;
    });
    former.release();
    const auto handler = this->installHandler();
    this->keys.type(commandOptionX);
    this->expectInTheEnd({"pressed 1", "released 1"});
}

TYPED_TEST(HotKeyCenterContract, LetsAHandlerEndItself)
{
    this->listen(KeyboardEventTypes::hotKey);
    const auto hotKey = this->registerKey(commandOptionX, 1);
    int calls = 0;
    Platform::Token handler;
    handler = this->center().installHandler([&](const KeyboardEvent&) {
        ++calls;
        handler.release();
        return Platform::noErr;
    });
    this->keys.type(commandOptionX);
    ASSERT_TRUE(this->keys.waitUntil([&] { return calls > 0; }));
    const auto next = this->installHandler();
    const auto last = this->registerKey(commandOptionL, 2);
    this->keys.type(commandOptionL);
    ASSERT_TRUE(this->keys.waitUntil([&] { return !this->events.empty() && this->events.back() == "released 2"; }));
    EXPECT_EQ(calls, 1);
}

TYPED_TEST(HotKeyCenterContract, GivesAHotKeyBackWithItsReference)
{
    const auto handler = this->installHandler();
    this->listen(KeyboardEventTypes::hotKey);
    auto hotKey = this->registerKey(commandOptionX, 1);
    const auto last = this->registerKey(commandOptionL, 2);
    hotKey.reference.reset();
    this->keys.type(commandOptionX);
    this->keys.type(commandOptionL);
    this->expectInTheEnd({"pressed 2", "released 2"});
    const auto again = this->registerKey(commandOptionX, 3);
    EXPECT_EQ(again.status, HotKeyStatus::granted);
    this->keys.type(commandOptionX);
    this->expectInTheEnd({"pressed 2", "released 2", "pressed 3", "released 3"});
}

TYPED_TEST(HotKeyCenterContract, SaysWhenAnotherProgramHoldsAHotKey)
{
    this->keys.takeByAnotherProgram(commandOptionX);
    const auto refused = this->registerKey(commandOptionX, 1);
    EXPECT_EQ(refused.status, HotKeyStatus::taken);
    EXPECT_EQ(refused.reference, nullptr);
    const auto other = this->registerKey(commandOptionL, 2);
    EXPECT_EQ(other.status, HotKeyStatus::granted);
    this->keys.giveBackByAnotherProgram(commandOptionX);
    const auto granted = this->registerKey(commandOptionX, 1);
    EXPECT_EQ(granted.status, HotKeyStatus::granted);
    EXPECT_NE(granted.reference, nullptr);
}

TYPED_TEST(HotKeyCenterContract, GrantsNoCombinationTwice)
{
    const auto handler = this->installHandler();
    this->listen(KeyboardEventTypes::hotKey);
    const auto first = this->registerKey(commandOptionX, 1);
    {
        const auto second = this->registerKey(commandOptionX, 2);
        EXPECT_EQ(second.status, HotKeyStatus::taken);
        EXPECT_EQ(second.reference, nullptr);
    }
    this->keys.type(commandOptionX);
    this->expectInTheEnd({"pressed 1", "released 1"});
}

TYPED_TEST(HotKeyCenterContract, DoesNotSupportKeysAndModifiersThatDoNotExist)
{
    constexpr std::uint32_t functionModifier = 0x20000;
    for (const auto& combination : {Combination{63, 0x900}, Combination{127, 0x900}, Combination{70000, 0}, Combination{7, functionModifier}}) {
        const auto registration = this->registerKey(combination, 1);
        EXPECT_EQ(registration.status, HotKeyStatus::unsupported) << combination.keyCode;
        EXPECT_EQ(registration.reference, nullptr);
    }
}

TYPED_TEST(HotKeyCenterContract, TellsOfRawKeysWhileTheyAreWanted)
{
    const auto handler = this->installHandler();
    this->listen(KeyboardEventTypes::rawKey);
    this->keys.type(bareX);
    this->keys.type(controlShiftX);
    this->expectInTheEnd({"down 7+0", "up 7+0", "down 7+4608", "up 7+4608"});
    this->center().removeEventTypes(KeyboardEventTypes::rawKey);
    this->keys.type(bareX);
    this->keys.settle();
    this->listen(KeyboardEventTypes::rawKey);
    this->keys.type(commandOptionL);
    this->expectInTheEnd({"down 7+0", "up 7+0", "down 7+4608", "up 7+4608", "down 37+2304", "up 37+2304"});
}

TYPED_TEST(HotKeyCenterContract, TellsOfAHotKeyOnceThoughRawKeysAreWantedToo)
{
    const auto handler = this->installHandler();
    this->listen(KeyboardEventTypes::hotKey);
    this->listen(KeyboardEventTypes::rawKey);
    const auto hotKey = this->registerKey(commandOptionX, 1);
    this->keys.type(commandOptionX);
    this->keys.type(bareX);
    this->expectInTheEnd({"pressed 1", "released 1", "down 7+0", "up 7+0"});
}

TYPED_TEST(HotKeyCenterContract, TellsOfAHotKeyAsARawKeyWhileOnlyTheseAreWanted)
{
    const auto handler = this->installHandler();
    const auto hotKey = this->registerKey(commandOptionX, 1);
    this->listen(KeyboardEventTypes::rawKey);
    this->keys.type(commandOptionX);
    this->expectInTheEnd({"down 7+2304", "up 7+2304"});
}

TYPED_TEST(HotKeyCenterContract, LetsReferencesAndTokensOutliveIt)
{
    auto handler = this->installHandler();
    auto hotKey = this->registerKey(commandOptionX, 1);
    this->keys.closeCenter();
    hotKey.reference.reset();
    handler.release();
    EXPECT_FALSE(handler);
}

}  // namespace
}  // namespace Contracts
