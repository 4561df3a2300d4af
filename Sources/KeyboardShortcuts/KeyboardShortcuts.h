// The shortcuts that the user assigns to names: their storage, their hot keys, and the
// actions that their presses call. One object serves the program. Main thread only.
//
// A shortcut is stored under "KeyboardShortcuts_" and the name's raw value: as JSON text
// (Shortcut.h), or as false where the user cleared a name that has a default, so that the
// default does not come back. Nothing is cached: every question reads the store. Values
// written into the store past this class while the program runs are not noticed.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "KeyboardShortcuts/CarbonKeyboardShortcuts.h"
#include "KeyboardShortcuts/HandlerTable.h"
#include "KeyboardShortcuts/Name.h"
#include "KeyboardShortcuts/Shortcut.h"
#include "KeyboardShortcuts/Texts.h"
#include "Platform/NotificationCenter.h"
#include "Platform/UserDefaults.h"

namespace KeyboardShortcuts {

// Posted after the stored shortcut of a name has changed; the Name is the user info.
inline constexpr std::string_view shortcutByNameDidChange = "KeyboardShortcuts_shortcutByNameDidChange";
// Posted by a recorder that begins or ends capturing keys; a bool is the user info.
inline constexpr std::string_view recorderActiveStatusDidChange = "KeyboardShortcuts_recorderActiveStatusDidChange";
// Whoever opens and closes menus of this program posts these, without user info.
inline constexpr std::string_view menuDidBeginTracking = "NSMenuDidBeginTrackingNotification";
inline constexpr std::string_view menuDidEndTracking = "NSMenuDidEndTrackingNotification";

enum class EventType { keyDown, keyUp };

class KeyboardShortcuts {
public:
    using Action = HandlerTable::Action;

    // Failed registrations are told on standard output, or on `output`.
    KeyboardShortcuts(Platform::UserDefaults&, Platform::NotificationCenter&, Platform::HotKeyCenter&, Platform::KeyboardLayout&,
        Platform::ReservedShortcuts&, const Texts&);
    KeyboardShortcuts(Platform::UserDefaults&, Platform::NotificationCenter&, Platform::HotKeyCenter&, Platform::KeyboardLayout&,
        Platform::ReservedShortcuts&, const Texts&, std::ostream& output);
    KeyboardShortcuts(const KeyboardShortcuts&) = delete;
    KeyboardShortcuts& operator=(const KeyboardShortcuts&) = delete;

    // A name of the program. Its default is stored, and its hot key registered, when the
    // store holds nothing for the name.
    Name declareName(std::string rawValue, std::optional<Shortcut> defaultShortcut = std::nullopt);

    std::optional<Shortcut> getShortcut(const Name&) const;
    // Nothing clears. Storing registers the hot key, whether or not an action is attached.
    void setShortcut(const std::optional<Shortcut>&, const Name&);
    // Back to the default; a name without one is cleared.
    void reset(std::span<const Name>);
    void reset(const Name& name) { reset({&name, 1}); }
    void resetAll();
    bool userDefaultsContains(const Name&) const;
    // Found in the store, thus without defaults.
    std::unordered_set<Name> allNames() const;

    // Actions add up and are called in this order. They may change shortcuts and actions.
    void onKeyDown(const Name&, Action);
    void onKeyUp(const Name&, Action);
    void removeHandler(const Name&);
    void removeAllHandlers();
    // As actions, but removeHandler() and removeAllHandlers() leave them and the hot keys
    // that they need; they end with their token.
    Platform::Token events(EventType, const Name&, Action);
    Platform::Token events(const Name&, const std::function<void(EventType)>&);

    // The switch of all hot keys.
    bool isEnabled() const { return m_switches.isEnabled; }
    void setEnabled(bool isEnabled);
    // Whether pressing the name's shortcut can call an action.
    bool isEnabled(const Name&) const;
    void enable(std::span<const Name>);
    void disable(std::span<const Name>);

    // Paused, hot keys stay registered but call no action: a recorder is capturing.
    bool isPaused() const { return m_isPaused; }
    void setPaused(bool isPaused) { m_isPaused = isPaused; }

    // Begins to follow the program's menus; the first declared name does it.
    void initialize();

    bool isTakenBySystem(const Shortcut&) const;
    std::string presentableDescription(const Shortcut&) const;

private:
    void store(const Shortcut&, const Name&);
    void postChange(const Name&);
    void registerIfNeeded(const Shortcut&);
    void registerStoredShortcutIfNeeded(const Name&);
    void unregister(const Shortcut&);
    std::unordered_set<Shortcut> shortcutsOf(const HandlerTable&, const HandlerTable&) const;
    void handle(const Shortcut&, const HandlerTable& legacyHandlers, const HandlerTable& streamHandlers) const;
    void setMenuOpen(bool isOpen);

    Platform::UserDefaults& m_userDefaults;
    Platform::NotificationCenter& m_notifications;
    Platform::KeyboardLayout& m_keyboardLayout;
    Platform::ReservedShortcuts& m_reservedShortcuts;
    const Texts& m_texts;
    CarbonKeyboardShortcuts::Switches m_switches;
    bool m_isPaused = false;
    bool m_isInitialized = false;
    HandlerTable m_legacyKeyDownHandlers;
    HandlerTable m_legacyKeyUpHandlers;
    HandlerTable m_streamKeyDownHandlers;
    HandlerTable m_streamKeyUpHandlers;
    std::unordered_set<Shortcut> m_registeredShortcuts;  // also those whose registration failed
    CarbonKeyboardShortcuts m_carbon;
    Platform::Token m_openMenuObserver;
    Platform::Token m_closeMenuObserver;
};

}  // namespace KeyboardShortcuts
