// Turns shortcuts into system-wide hot keys and brings their presses back. The name stems
// from another platform's event layer; here the hot-key centre of the seam stands behind
// it. While a menu of this program is open the system delivers no hot keys: then all are
// given back and raw keys are watched instead, so that no press can arrive both ways.
// Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "KeyboardShortcuts/Shortcut.h"
#include "Platform/HotKeyCenter.h"
#include "Platform/KeyboardLayout.h"
#include "Platform/Token.h"

namespace KeyboardShortcuts {

class CarbonKeyboardShortcuts {
public:
    using Action = std::function<void(const Shortcut&)>;

    // Read at every updateEventHandler().
    struct Switches {
        bool isEnabled = true;
        bool isMenuOpen = false;
    };

    // "QHKV"
    static constexpr std::uint32_t signature = 0x51484B56;

    // `describe` names a shortcut in the line about a failed registration, which goes to
    // `output`. Identifiers start after `lastHotKeyID`.
    CarbonKeyboardShortcuts(Platform::HotKeyCenter&, const Switches&, std::function<std::string(const Shortcut&)> describe, std::ostream& output,
        std::int64_t lastHotKeyID = 0);

    // A shortcut that cannot be registered is only told about: one line on the output. A
    // code, modifiers or identifier outside 0...4294967295 stop the program.
    void registerShortcut(const Shortcut&, Action onKeyDown, Action onKeyUp);
    // All hot keys of this shortcut.
    void unregisterShortcut(const Shortcut&);
    // To be called when a switch has changed.
    void updateEventHandler();

    // The enabled shortcuts that the desktop keeps for itself, read afresh.
    static std::vector<Shortcut> system(Platform::ReservedShortcuts&);

private:
    struct HotKey {
        Shortcut shortcut;
        std::int64_t carbonHotKeyID = 0;
        std::unique_ptr<Platform::HotKeyReference> carbonHotKey;  // empty while given back for a time
        Action onKeyDown;
        Action onKeyUp;
    };

    std::unique_ptr<Platform::HotKeyReference> requestHotKey(const Shortcut&, std::int64_t hotKeyID);
    void softRegisterAll();
    void softUnregisterAll();
    bool areHotKeysActive() const { return m_switches.isEnabled && !m_switches.isMenuOpen; }
    void installEventHandlerIfNeeded();
    std::int32_t handleEvent(const Platform::KeyboardEvent&);
    std::int32_t handleHotKeyEvent(const Platform::KeyboardEvent&);
    std::int32_t handleRawKeyEvent(const Platform::KeyboardEvent&);
    static void call(const HotKey&, Platform::KeyboardEvent::Kind);

    Platform::HotKeyCenter& m_center;
    const Switches& m_switches;
    std::function<std::string(const Shortcut&)> m_describe;
    std::ostream& m_output;
    std::map<std::int64_t, HotKey> m_hotKeys;  // by identifier
    std::int64_t m_hotKeyID;                   // the last one given; none is given twice
    Platform::Token m_eventHandler;
};

}  // namespace KeyboardShortcuts
