#include "KeyboardShortcuts/CarbonKeyboardShortcuts.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <utility>

#include "Support/CallLog.h"
#include "Support/FakeHotKeyCenter.h"
#include "Support/FakeKeyboardLayout.h"

namespace KeyboardShortcuts {
namespace {

using Platform::HotKeyStatus;
using Platform::KeyboardEvent;
using Platform::KeyboardEventTypes;
using Registered = std::map<std::uint32_t, TestSupport::FakeHotKeyCenter::Combination>;

const Shortcut optionCommandX = Shortcut::fromCarbon(7, 0x900);
const Shortcut optionCommandL = Shortcut::fromCarbon(37, 0x900);

class CarbonKeyboardShortcutsTest : public testing::Test {
protected:
    void registerShortcut(const Shortcut& shortcut, const std::string& name)
    {
        m_carbon.registerShortcut(
            shortcut, [this, name](const Shortcut&) { m_calls += name + "+ "; }, [this, name](const Shortcut&) { m_calls += name + "- "; });
    }

    void setMenuOpen(bool isOpen)
    {
        m_switches.isMenuOpen = isOpen;
        m_carbon.updateEventHandler();
    }

    void setEnabled(bool isEnabled)
    {
        m_switches.isEnabled = isEnabled;
        m_carbon.updateEventHandler();
    }

    std::string takeCalls() { return std::exchange(m_calls, ""); }

    static std::string describe(const Shortcut& shortcut) { return "key " + std::to_string(shortcut.carbonKeyCode()); }

    TestSupport::CallLog m_log;
    TestSupport::FakeHotKeyCenter m_center{m_log};
    CarbonKeyboardShortcuts::Switches m_switches;
    std::ostringstream m_output;
    std::string m_calls;
    CarbonKeyboardShortcuts m_carbon{m_center, m_switches, describe, m_output};
};

TEST_F(CarbonKeyboardShortcutsTest, AsksNothingOfTheSystemAtFirst)
{
    m_carbon.updateEventHandler();
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(CarbonKeyboardShortcutsTest, InstallsTheHandlerAndAddsHotKeyEventsAtTheFirstRegistration)
{
    registerShortcut(optionCommandX, "x");
    const std::vector<std::string> expected = {"hotKeys.register id=1 keyCode=7 modifiers=0x900", "hotKeys.installHandler",
        "hotKeys.removeEventTypes rawKey", "hotKeys.addEventTypes hotKey"};
    EXPECT_EQ(m_log.lines(), expected);
    EXPECT_EQ(m_center.lastSignature(), 0x51484B56U);
}

TEST_F(CarbonKeyboardShortcutsTest, InstallsTheHandlerOnce)
{
    registerShortcut(optionCommandX, "x");
    registerShortcut(optionCommandL, "l");
    EXPECT_EQ(m_log.count("hotKeys.installHandler"), 1);
    EXPECT_EQ(m_log.lines().back(), "hotKeys.register id=2 keyCode=37 modifiers=0x900");
}

TEST_F(CarbonKeyboardShortcutsTest, CallsTheActionsOfTheHotKeyThatFired)
{
    registerShortcut(optionCommandX, "x");
    registerShortcut(optionCommandL, "l");
    EXPECT_EQ(m_center.press({37, 0x900}), Platform::noErr);
    EXPECT_EQ(m_center.release({37, 0x900}), Platform::noErr);
    EXPECT_EQ(m_center.press({7, 0x900}), Platform::noErr);
    EXPECT_EQ(m_calls, "l+ l- x+ ");
}

TEST_F(CarbonKeyboardShortcutsTest, PassesTheShortcutToItsActions)
{
    std::vector<Shortcut> passed;
    const auto keep = [&](const Shortcut& shortcut) { passed.push_back(shortcut); };
    m_carbon.registerShortcut(optionCommandX, keep, keep);
    m_center.press({7, 0x900});
    m_center.release({7, 0x900});
    EXPECT_EQ(passed, (std::vector<Shortcut>{optionCommandX, optionCommandX}));
}

TEST_F(CarbonKeyboardShortcutsTest, RefusesEventsOfOthers)
{
    registerShortcut(optionCommandX, "x");
    EXPECT_EQ(m_center.send({KeyboardEvent::Kind::hotKeyPressed, {0x51484B57, 1}, 0, 0}), -9874);
    EXPECT_EQ(m_center.send({KeyboardEvent::Kind::hotKeyPressed, {0x51484B56, 2}, 0, 0}), -9874);
    EXPECT_EQ(m_center.send({static_cast<KeyboardEvent::Kind>(2), {0x51484B56, 1}, 7, 0x900}), -9874);
    EXPECT_EQ(m_calls, "");
    EXPECT_EQ(m_center.send({KeyboardEvent::Kind::hotKeyPressed, {0x51484B56, 1}, 0, 0}), 0);
    EXPECT_EQ(m_calls, "x+ ");
}

TEST_F(CarbonKeyboardShortcutsTest, UnregistersAllHotKeysOfAShortcut)
{
    registerShortcut(optionCommandX, "first");
    registerShortcut(optionCommandL, "l");
    registerShortcut(optionCommandX, "second");
    m_carbon.unregisterShortcut(optionCommandX);
    EXPECT_EQ(m_center.registered(), (Registered{{2, {37, 0x900}}}));
    EXPECT_EQ(m_center.send({KeyboardEvent::Kind::hotKeyPressed, {0x51484B56, 1}, 0, 0}), -9874);
    EXPECT_EQ(m_center.send({KeyboardEvent::Kind::hotKeyPressed, {0x51484B56, 3}, 0, 0}), -9874);
}

TEST_F(CarbonKeyboardShortcutsTest, NeverGivesAnIdentifierTwice)
{
    registerShortcut(optionCommandX, "x");
    m_carbon.unregisterShortcut(optionCommandX);
    registerShortcut(optionCommandX, "x");
    EXPECT_EQ(m_center.registered(), (Registered{{2, {7, 0x900}}}));
}

TEST_F(CarbonKeyboardShortcutsTest, TellsOfARefusedRegistrationInOneLine)
{
    m_center.refuse({7, 0x900}, HotKeyStatus::taken);
    registerShortcut(optionCommandX, "x");
    EXPECT_EQ(m_output.str(), "Error registering hotkey key 7: -9878\n");
    EXPECT_FALSE(m_center.hasHandler());
    registerShortcut(optionCommandL, "l");
    EXPECT_EQ(m_center.registered(), (Registered{{2, {37, 0x900}}}));  // 1 is spent
    EXPECT_EQ(m_center.send({KeyboardEvent::Kind::hotKeyPressed, {0x51484B56, 1}, 0, 0}), -9874);
}

TEST_F(CarbonKeyboardShortcutsTest, TellsTheStatusThatTheSystemGave)
{
    m_center.refuse({7, 0x900}, HotKeyStatus::unsupported);
    m_center.refuse({37, 0x900}, HotKeyStatus::leftToDesktop);
    registerShortcut(optionCommandX, "x");
    registerShortcut(optionCommandL, "l");
    EXPECT_EQ(m_output.str(), "Error registering hotkey key 7: -9879\nError registering hotkey key 37: -50\n");
}

TEST_F(CarbonKeyboardShortcutsTest, TakesSuccessWithoutAReferenceAsFailure)
{
    m_center.withholdReferences(true);
    registerShortcut(optionCommandX, "x");
    EXPECT_EQ(m_output.str(), "Error registering hotkey key 7: 0\n");
    EXPECT_FALSE(m_center.hasHandler());
}

TEST_F(CarbonKeyboardShortcutsTest, WatchesRawKeysInsteadWhileAMenuIsOpen)
{
    registerShortcut(optionCommandX, "x");
    registerShortcut(optionCommandL, "l");
    m_log.clear();
    setMenuOpen(true);
    const std::vector<std::string> expected = {
        "hotKeys.unregister id=1", "hotKeys.unregister id=2", "hotKeys.removeEventTypes hotKey", "hotKeys.addEventTypes rawKey"};
    EXPECT_EQ(m_log.lines(), expected);
    EXPECT_EQ(m_center.press({7, 0x900}), Platform::noErr);  // consumed: it does not reach the menu
    EXPECT_EQ(m_center.release({7, 0x900}), Platform::noErr);
    EXPECT_EQ(m_calls, "x+ x- ");
}

TEST_F(CarbonKeyboardShortcutsTest, LeavesOtherRawKeysToTheMenu)
{
    registerShortcut(optionCommandX, "x");
    setMenuOpen(true);
    EXPECT_EQ(m_center.press({7, 0x100}), -9874);
    EXPECT_EQ(m_center.press({8, 0x900}), -9874);
    EXPECT_EQ(m_center.press({125, 0}), -9874);
    EXPECT_EQ(m_calls, "");
}

TEST_F(CarbonKeyboardShortcutsTest, NormalisesTheModifiersOfRawKeys)
{
    registerShortcut(optionCommandX, "x");
    setMenuOpen(true);
    EXPECT_EQ(m_center.press({7, 0xD00}), Platform::noErr);  // with caps lock
    EXPECT_EQ(m_calls, "x+ ");
}

TEST_F(CarbonKeyboardShortcutsTest, TakesTheFirstHotKeyForARawKey)
{
    registerShortcut(optionCommandX, "first");
    registerShortcut(optionCommandX, "second");
    setMenuOpen(true);
    m_center.press({7, 0x900});
    EXPECT_EQ(m_calls, "first+ ");
}

TEST_F(CarbonKeyboardShortcutsTest, RegistersAgainUnderTheSameIdentifiersWhenTheMenuCloses)
{
    registerShortcut(optionCommandX, "x");
    registerShortcut(optionCommandL, "l");
    setMenuOpen(true);
    m_log.clear();
    setMenuOpen(false);
    const std::vector<std::string> expected = {"hotKeys.register id=1 keyCode=7 modifiers=0x900", "hotKeys.register id=2 keyCode=37 modifiers=0x900",
        "hotKeys.removeEventTypes rawKey", "hotKeys.addEventTypes hotKey"};
    EXPECT_EQ(m_log.lines(), expected);
    m_center.press({7, 0x900});
    EXPECT_EQ(m_calls, "x+ ");
    registerShortcut(Shortcut::fromCarbon(8, 0x900), "c");
    EXPECT_TRUE(m_center.registered().contains(3));
}

TEST_F(CarbonKeyboardShortcutsTest, LosesAHotKeyThatCannotBeRegisteredAgain)
{
    registerShortcut(optionCommandX, "x");
    registerShortcut(optionCommandL, "l");
    setMenuOpen(true);
    m_center.refuse({7, 0x900});
    setMenuOpen(false);
    EXPECT_EQ(m_output.str(), "Error registering hotkey key 7: -9878\n");
    m_center.allow({7, 0x900});
    setMenuOpen(true);
    setMenuOpen(false);
    EXPECT_EQ(m_center.registered(), (Registered{{2, {37, 0x900}}}));
}

TEST_F(CarbonKeyboardShortcutsTest, GivesAllHotKeysBackWhileDisabled)
{
    registerShortcut(optionCommandX, "x");
    m_log.clear();
    setEnabled(false);
    const std::vector<std::string> expected = {"hotKeys.unregister id=1", "hotKeys.removeEventTypes hotKey", "hotKeys.removeEventTypes rawKey"};
    EXPECT_EQ(m_log.lines(), expected);
    EXPECT_EQ(m_center.press({7, 0x900}), std::nullopt);
    setEnabled(true);
    EXPECT_EQ(m_center.registered(), (Registered{{1, {7, 0x900}}}));
    EXPECT_EQ(m_center.press({7, 0x900}), Platform::noErr);
    EXPECT_EQ(m_calls, "x+ ");
}

TEST_F(CarbonKeyboardShortcutsTest, WatchesNoRawKeysWhileDisabledWithAMenuOpen)
{
    registerShortcut(optionCommandX, "x");
    setMenuOpen(true);
    setEnabled(false);
    EXPECT_FALSE(m_center.listensFor(KeyboardEventTypes::rawKey));
    setEnabled(true);
    EXPECT_TRUE(m_center.listensFor(KeyboardEventTypes::rawKey));
    EXPECT_TRUE(m_center.registered().empty());
}

TEST_F(CarbonKeyboardShortcutsTest, HoldsNoKeyThatIsRegisteredWhileDisabled)
{
    m_switches.isEnabled = false;
    registerShortcut(optionCommandX, "x");
    registerShortcut(optionCommandL, "l");
    EXPECT_TRUE(m_center.registered().empty());
    setEnabled(true);
    EXPECT_EQ(m_center.registered(), (Registered{{1, {7, 0x900}}, {2, {37, 0x900}}}));
}

TEST_F(CarbonKeyboardShortcutsTest, CallsOnceForAHotKeyRegisteredWhileAMenuIsOpen)
{
    registerShortcut(optionCommandX, "x");
    setMenuOpen(true);
    registerShortcut(optionCommandL, "l");
    EXPECT_TRUE(m_center.registered().empty());
    m_center.press({37, 0x900});
    EXPECT_EQ(takeCalls(), "l+ ");
    setMenuOpen(false);
    m_center.press({37, 0x900});
    EXPECT_EQ(takeCalls(), "l+ ");
}

TEST_F(CarbonKeyboardShortcutsTest, LetsAnActionTakeItsOwnHotKeyAway)
{
    const auto end = [this](const Shortcut& shortcut) {
        m_carbon.unregisterShortcut(shortcut);
        m_calls += std::to_string(shortcut.carbonKeyCode());
    };
    m_carbon.registerShortcut(optionCommandX, end, end);
    EXPECT_EQ(m_center.press({7, 0x900}), Platform::noErr);
    m_carbon.registerShortcut(optionCommandL, end, end);
    setMenuOpen(true);
    EXPECT_EQ(m_center.press({37, 0x900}), Platform::noErr);
    EXPECT_EQ(m_calls, "737");
}

TEST_F(CarbonKeyboardShortcutsTest, KeepsAnActionAliveWhileItRuns)
{
    auto owned = std::make_shared<int>(0);
    const std::weak_ptr<int> observed = owned;
    bool wasAlive = false;
    auto end = [this, &observed, &wasAlive, owned = std::move(owned)](const Shortcut& shortcut) {
        m_carbon.unregisterShortcut(shortcut);
        wasAlive = !observed.expired();
    };
    m_carbon.registerShortcut(optionCommandX, std::move(end), nullptr);
    m_center.press({7, 0x900});
    EXPECT_TRUE(wasAlive);
    EXPECT_TRUE(observed.expired());
}

TEST_F(CarbonKeyboardShortcutsTest, GivesEverythingBackAtItsEnd)
{
    {
        CarbonKeyboardShortcuts carbon(m_center, m_switches, describe, m_output);
        carbon.registerShortcut(
            optionCommandX, [](const Shortcut&) {}, [](const Shortcut&) {});
        m_log.clear();
    }
    EXPECT_EQ(m_log.lines(), (std::vector<std::string>{"hotKeys.removeHandler", "hotKeys.unregister id=1"}));
}

TEST_F(CarbonKeyboardShortcutsTest, ReadsTheEnabledSystemShortcutsAfresh)
{
    TestSupport::FakeReservedShortcuts reserved(m_log);
    EXPECT_TRUE(CarbonKeyboardShortcuts::system(reserved).empty());
    reserved.set({{true, 53, 0x4800}, {false, 7, 0x900}, {true, 49, 0x100}});
    EXPECT_EQ(CarbonKeyboardShortcuts::system(reserved), (std::vector<Shortcut>{Shortcut::fromCarbon(53, 0x800), Shortcut::fromCarbon(49, 0x100)}));
    EXPECT_EQ(m_log.count("reservedShortcuts.copySymbolicHotKeys"), 2);
}

class CarbonKeyboardShortcutsDeathTest : public CarbonKeyboardShortcutsTest {
protected:
    void registerAfter(std::int64_t lastHotKeyID, std::int64_t keyCode)
    {
        CarbonKeyboardShortcuts carbon(m_center, m_switches, describe, m_output, lastHotKeyID);
        carbon.registerShortcut(Shortcut::fromCarbon(keyCode, 0x900), nullptr, nullptr);
    }
};

TEST_F(CarbonKeyboardShortcutsDeathTest, StopsTheProgramForAKeyCodeThatIsNoUnsigned32BitNumber)
{
    EXPECT_DEATH(registerAfter(0, -1), "CarbonKeyboardShortcuts.register: key code.*-1");
    EXPECT_DEATH(registerAfter(0, 4294967296), "CarbonKeyboardShortcuts.register: key code.*4294967296");
    registerAfter(0, 4294967295);
    EXPECT_EQ(m_log.count("hotKeys.register id=1 keyCode=4294967295 modifiers=0x900"), 1);
}

TEST_F(CarbonKeyboardShortcutsDeathTest, StopsTheProgramWhenIdentifiersRunOut)
{
    registerAfter(4294967294, 7);
    EXPECT_EQ(m_log.count("hotKeys.register id=4294967295 keyCode=7 modifiers=0x900"), 1);
    EXPECT_DEATH(registerAfter(4294967295, 7), "CarbonKeyboardShortcuts.register: identifier.*4294967296");
    EXPECT_DEATH(registerAfter(std::numeric_limits<std::int64_t>::max(), 7), "no identifier left after.*9223372036854775807");
}

}  // namespace
}  // namespace KeyboardShortcuts
