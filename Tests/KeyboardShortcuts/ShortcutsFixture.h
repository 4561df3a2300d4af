// One object of the class under test on a fake system, and what it told and posted.
#pragma once

#include <gtest/gtest.h>

#include <any>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "KeyboardShortcuts/KeyboardShortcuts.h"
#include "Support/CallLog.h"
#include "Support/FakeHotKeyCenter.h"
#include "Support/FakeKeyboardLayout.h"
#include "Support/FakeUserDefaults.h"

namespace KeyboardShortcuts {

class ShortcutsFixture : public testing::Test {
protected:
    using Registered = std::vector<TestSupport::FakeHotKeyCenter::Combination>;
    using Lines = std::vector<std::string>;

    static inline const Shortcut optionCommandX = Shortcut::fromCarbon(7, 0x900);
    static inline const Shortcut optionCommandL = Shortcut::fromCarbon(37, 0x900);
    static inline const Shortcut commandP = Shortcut::fromCarbon(35, 0x100);
    static inline const Name crosshair{"toggleCrosshair", optionCommandX};
    static inline const Name plain{"plain"};
    static inline const std::string crosshairKey = "KeyboardShortcuts_toggleCrosshair";
    static inline const std::string plainKey = "KeyboardShortcuts_plain";
    static inline const std::string jsonX = R"({"carbonKeyCode":7,"carbonModifiers":2304})";
    static inline const std::string jsonP = R"({"carbonKeyCode":35,"carbonModifiers":256})";

    ShortcutsFixture()
    {
        m_observer = m_notifications.addObserver("KeyboardShortcuts_shortcutByNameDidChange",
            [this](const Platform::Notification& notification) { m_log.add("changed " + std::any_cast<Name>(notification.userInfo).rawValue); });
    }

    // What happened since the last call, without the reads of the store.
    Lines takeLines() { return m_log.takeLinesOf({"hotKeys.", "userDefaults.setObject", "userDefaults.removeObject", "changed"}); }
    Lines takeChanges() { return m_log.takeLinesOf({"userDefaults.setObject", "userDefaults.removeObject", "changed"}); }

    Registered registered() const
    {
        Registered result;
        for (const auto& [id, combination] : m_hotKeys.registered())
            result.push_back(combination);
        return result;
    }

    KeyboardShortcuts::Action call(const std::string& name)
    {
        return [this, name] { m_calls += name + " "; };
    }

    std::string takeCalls() { return std::exchange(m_calls, ""); }

    // As a new start of the program finds it.
    std::map<std::string, Platform::DefaultsValue>& stored() { return m_userDefaults.values(); }

    TestSupport::CallLog m_log;
    TestSupport::FakeUserDefaults m_userDefaults{m_log};
    Platform::NotificationCenter m_notifications;
    TestSupport::FakeHotKeyCenter m_hotKeys{m_log};
    TestSupport::FakeKeyboardLayout m_layout{m_log};
    TestSupport::FakeReservedShortcuts m_reserved{m_log};
    Texts m_texts;
    std::ostringstream m_output;
    std::string m_calls;
    Platform::Token m_observer;
    KeyboardShortcuts m_shortcuts{m_userDefaults, m_notifications, m_hotKeys, m_layout, m_reserved, m_texts, m_output};
};

}  // namespace KeyboardShortcuts
