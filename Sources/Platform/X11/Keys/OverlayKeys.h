// The keyboard of the overlays while one is shown: every key that is no modifier comes to
// us and to nobody else, but the focus stays where it is and other clients' hot keys (and
// our own) still work, as do screen lockers. Main thread only.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Platform/KeyCodes.h"
#include "Platform/MainLoop.h"
#include "Platform/Posix/FileDescriptorWatcher.h"
#include "Platform/Token.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/EventPump.h"
#include "Platform/X11/Keys/KeyGrabs.h"
#include "Platform/X11/Keys/KeyboardFocus.h"
#include "Platform/X11/Keys/ModifierMap.h"
#include "Platform/X11/Keys/RawKeys.h"

namespace Platform::X11 {

class OverlayKeys {
public:
    // On a connection of its own. Nothing when there is no such server or it has no XKB.
    static std::unique_ptr<OverlayKeys> open(const std::string& displayName, FileDescriptorWatcher&, MainLoop&);
    ~OverlayKeys();
    OverlayKeys(const OverlayKeys&) = delete;
    OverlayKeys& operator=(const OverlayKeys&) = delete;

    // From now on each press that is no other client's hot key is told, auto-repeats too;
    // Escape is told even while another client has the keyboard (an open menu). Keys
    // without a virtual key code are taken but not told. Where no window has the focus,
    // which would leave us without keys, `focusWindow` gets it; it must be viewable then,
    // or XCB_WINDOW_NONE. A second call only replaces both arguments.
    void grab(std::function<void(const KeyEvent&)> keyDown, xcb_window_t focusWindow);

    // Idle afterwards. A key still held then keeps its repeats and its release from
    // everyone else.
    void release();

    // The keys go back to the others until the token ends, for one of our own hot keys to
    // be registered in between.
    Token suspend();

private:
    OverlayKeys(std::unique_ptr<Connection>, FileDescriptorWatcher&, MainLoop&);

    void handle(const xcb_generic_event_t&);
    void keyPressed(const KeyCombination&, xcb_timestamp_t);
    void rawKeyPressed(const RawKey&);
    void tell(const KeyCombination&, bool isRepeat);

    void grabKeyboard();
    void grabHotKeysKeys();
    void ungrabKeyboard();
    void focusMoved();
    void noteHeldKeys();
    std::vector<KeyCombination> allKeys() const;
    std::vector<KeyCombination> combinationsOf(std::span<const KeyCombination> keys) const;
    bool isForeign(const KeyCombination&) const;

    void keyboardMapChanged();
    void readKeyboardMap();

    std::unique_ptr<Connection> m_connection;
    MainLoop& m_mainLoop;
    RawKeys m_rawKeys;
    KeyboardFocus m_focus;
    ModifierMap m_modifierMap;
    EventPump m_pump;

    std::shared_ptr<std::function<void(const KeyEvent&)>> m_keyDown;  // present while the keys are ours
    int m_suspensions = 0;
    bool m_isMapChangePending = false;
    std::vector<KeyCombination> m_hotKeysKeys;  // with some modifiers they are hot keys of somebody
    std::vector<KeyCombination> m_foreign;      // hot keys: of Escape always, of others where we know
    xcb_window_t m_toplevel = XCB_WINDOW_NONE;  // where the hot keys' keys are grabbed

    struct Press {
        xcb_timestamp_t time = 0;
        bool isTold = false;
    };
    std::map<xcb_keycode_t, Press> m_held;  // the keys that are down, whoever got their press

    std::shared_ptr<OverlayKeys*> m_self;  // empties when this goes
};

}  // namespace Platform::X11
