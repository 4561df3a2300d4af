// Hot keys by passive grabs of keys on the root window. Main thread only.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/HotKeyCenter.h"
#include "Platform/MainLoop.h"
#include "Platform/Posix/FileDescriptorWatcher.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/EventPump.h"
#include "Platform/X11/Keys/KeyGrabs.h"
#include "Platform/X11/Keys/ModifierMap.h"
#include "Platform/X11/Keys/RawKeys.h"

namespace Platform::X11 {

class X11HotKeyCenter final : public HotKeyCenter {
public:
    // On a connection of its own. Nothing when there is no such server or it has no XKB.
    static std::unique_ptr<X11HotKeyCenter> open(const std::string& displayName, FileDescriptorWatcher&, MainLoop&);
    ~X11HotKeyCenter() override;
    X11HotKeyCenter(const X11HotKeyCenter&) = delete;
    X11HotKeyCenter& operator=(const X11HotKeyCenter&) = delete;

    // One round trip. A combination that this centre holds already is taken.
    HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers, HotKeyID) override;
    Token installHandler(std::function<std::int32_t(const KeyboardEvent&)>) override;
    void addEventTypes(KeyboardEventTypes) override;
    void removeEventTypes(KeyboardEventTypes) override;

    // What else of this program may hold keys (OverlayKeys::suspend). Where a hot key is
    // refused, it is asked to yield, and the hot key is tried again until the token ends.
    void setYield(std::function<Token()> yield) { m_yield = std::move(yield); }

private:
    class Reference;

    struct HotKey {
        HotKeyID hotKeyID;
        std::uint32_t carbonModifiers = 0;
        KeyCombination combination;
        bool isGrabbed = true;  // false: refused when the meaning of modifiers changed
    };

    struct Press {
        std::optional<std::uint64_t> hotKey;  // the one it triggered
        bool isOlder = false;                 // it was down when a hot key of that key came
    };

    X11HotKeyCenter(std::unique_ptr<Connection>, FileDescriptorWatcher&, MainLoop&);

    void handle(const xcb_generic_event_t&);
    void keyPressed(const KeyCombination&, bool isRaw);
    void keyReleased(const KeyCombination&);
    void deliver(const KeyboardEvent&);
    void deliverHotKey(KeyboardEvent::Kind, const HotKey&);
    void deliverRawKey(KeyboardEvent::Kind, const KeyCombination&);
    std::optional<std::uint64_t> hotKeyOf(const KeyCombination&) const;

    bool grab(const KeyCombination&);
    bool grabOrGiveBack(const std::vector<KeyCombination>& variants);
    void ungrab(const HotKey&);
    void unregister(std::uint64_t serial);
    void noteIfDown(xcb_keycode_t);
    void listenToRawKeys();

    void keyboardMapChanged();
    void readKeyboardMap();
    void grabAgain(const ModifierMap&);

    std::unique_ptr<Connection> m_connection;
    MainLoop& m_mainLoop;
    RawKeys m_rawKeys;
    ModifierMap m_modifierMap;
    EventPump m_pump;

    std::uint64_t m_lastSerial = 0;
    std::map<std::uint64_t, HotKey> m_hotKeys;  // by serial number
    std::map<xcb_keycode_t, Press> m_held;      // the keys that we know to be down
    bool m_wantsHotKeys = false;
    bool m_wantsRawKeys = false;
    bool m_isMapChangePending = false;
    std::function<Token()> m_yield;
    std::shared_ptr<std::function<std::int32_t(const KeyboardEvent&)>> m_handler;

    std::shared_ptr<X11HotKeyCenter*> m_self;  // empties when this goes
};

}  // namespace Platform::X11
