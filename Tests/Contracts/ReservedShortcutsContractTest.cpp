// What a desktop's reserved shortcuts promise, asked of the fake and of Xfce's, which come
// from its real settings service.
#include <glob.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>

#include "Freedesktop/PrivateBus.h"
#include "Platform/Freedesktop/Shortcuts/DesktopReservedShortcuts.h"
#include "Support/FakeKeyboardLayout.h"
#include "Support/TemporaryFolder.h"

namespace Contracts {
namespace {

using Platform::SymbolicHotKey;
using HotKeys = std::vector<SymbolicHotKey>;
using namespace std::chrono_literals;

constexpr SymbolicHotKey superE{true, 14, 0x100};
constexpr SymbolicHotKey controlShiftF7{true, 98, 0x1200};

class FakeDesktop {
public:
    Platform::ReservedShortcuts& shortcuts() { return m_shortcuts; }
    void keepNone() { m_shortcuts.set({}); }
    void keepSuperE() { m_shortcuts.set({superE}); }
    void keepSuperEAndControlShiftF7() { m_shortcuts.set({superE, controlShiftF7}); }
    void loseTheSource() { keepNone(); }

private:
    TestSupport::CallLog m_log;
    TestSupport::FakeReservedShortcuts m_shortcuts{m_log};
};

class XfceDesktop {
public:
    XfceDesktop()
    {
        setenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().c_str(), 1);
        for (const auto* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            m_options.environment.emplace_back(name, m_home.path());
        startService();
        // The machine's own shortcuts do not count beside a user's.
        for (const auto* provider : {"commands", "xfwm4"})
            run({"-p", std::string("/") + provider + "/custom/override", "-n", "-t", "bool", "-s", "true"});
    }
    ~XfceDesktop() { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }
    XfceDesktop(const XfceDesktop&) = delete;
    XfceDesktop& operator=(const XfceDesktop&) = delete;

    Platform::ReservedShortcuts& shortcuts() { return m_shortcuts; }
    void keepNone() { run({"-p", "/commands/custom/<Super>e", "-r"}); }
    void keepSuperE() { run({"-p", "/commands/custom/<Super>e", "-n", "-t", "string", "-s", "thunar"}); }
    void keepSuperEAndControlShiftF7()
    {
        keepSuperE();
        run({"-p", "/xfwm4/custom/<Primary><Shift>F7", "-n", "-t", "string", "-s", "close_window_key"});
    }
    void loseTheSource() { m_service.kill(); }

private:
    void startService()
    {
        glob_t found = {};
        const bool isThere = glob("/usr/lib/*/xfce4/xfconf/xfconfd", 0, nullptr, &found) == 0;
        if (isThere)
            m_service = m_bus.start({found.gl_pathv[0]}, m_options);
        globfree(&found);
        if (!isThere || !m_bus.waitForService("org.xfce.Xfconf"))
            throw std::runtime_error("xfconfd does not come up");
    }

    void run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"xfconf-query", "-c", "xfce4-keyboard-shortcuts"});
        if (!m_bus.runs(arguments, m_options))
            throw std::runtime_error("xfconf-query fails");
    }

    const Freedesktop::PrivateBus m_bus;
    const TestSupport::TemporaryFolder m_home;
    TestSupport::Process::Options m_options;
    TestSupport::Process m_service;
    // With all the time that a busy machine may take.
    Platform::Freedesktop::DesktopReservedShortcuts m_shortcuts{{.currentDesktop = "XFCE", .patience = 20s}};
};

template <typename Desktop> class ReservedShortcutsContract : public testing::Test {
protected:
    // In no order.
    bool are(const HotKeys& expected)
    {
        const auto shortcuts = desktop.shortcuts().copySymbolicHotKeys();
        return std::is_permutation(shortcuts.begin(), shortcuts.end(), expected.begin(), expected.end());
    }

    Desktop desktop;
};

using Desktops = testing::Types<FakeDesktop, XfceDesktop>;
TYPED_TEST_SUITE(ReservedShortcutsContract, Desktops);

TYPED_TEST(ReservedShortcutsContract, AreNoneWhereTheDesktopKeepsNone) { EXPECT_TRUE(this->are({})); }

TYPED_TEST(ReservedShortcutsContract, AreThoseThatTheDesktopKeeps)
{
    this->desktop.keepSuperEAndControlShiftF7();
    EXPECT_TRUE(this->are({superE, controlShiftF7}));
}

TYPED_TEST(ReservedShortcutsContract, AreReadAfreshAtEveryCall)
{
    this->desktop.keepSuperE();
    EXPECT_TRUE(this->are({superE}));
    EXPECT_TRUE(this->are({superE}));
    this->desktop.keepSuperEAndControlShiftF7();
    EXPECT_TRUE(this->are({superE, controlShiftF7}));
}

TYPED_TEST(ReservedShortcutsContract, AreNoneAgainOnceTheDesktopKeepsThemNoMore)
{
    this->desktop.keepSuperE();
    ASSERT_TRUE(this->are({superE}));
    this->desktop.keepNone();
    EXPECT_TRUE(this->are({}));
}

TYPED_TEST(ReservedShortcutsContract, AreNoneAndDoNotWaitWhereNoSourceCanBeAsked)
{
    this->desktop.keepSuperE();
    ASSERT_TRUE(this->are({superE}));
    this->desktop.loseTheSource();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(this->are({}));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

}  // namespace
}  // namespace Contracts
