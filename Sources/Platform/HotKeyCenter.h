// System-wide hot keys and, while a menu of this program is open, raw keys. Main
// thread only; the handler is called on the main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/Token.h"

namespace Platform {

struct HotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t id = 0;

    friend bool operator==(const HotKeyID&, const HotKeyID&) = default;
};

// Numbers as printed in the line about a failed registration; those of the event
// layer that the shortcut model's codes come from, 0 for success.
enum class HotKeyStatus : std::int32_t {
    granted = 0,
    taken = -9878,        // another program holds it
    unsupported = -9879,  // no such key or modifier here
    leftToDesktop = -50,  // the desktop will decide or bind it itself
};

// Destroying it gives the hot key back.
class HotKeyReference {
public:
    virtual ~HotKeyReference() = default;
};

struct HotKeyRegistration {
    HotKeyStatus status = HotKeyStatus::unsupported;
    std::unique_ptr<HotKeyReference> reference;  // present exactly when granted
};

struct KeyboardEvent {
    enum class Kind : std::uint32_t {
        rawKeyDown = 1,
        rawKeyUp = 3,
        hotKeyPressed = 5,
        hotKeyReleased = 6,
    };

    Kind kind = Kind::hotKeyPressed;
    HotKeyID hotKeyID;                  // of hot-key kinds
    std::uint32_t keyCode = 0;          // of raw kinds: virtual key code
    std::uint32_t carbonModifiers = 0;  // of raw kinds: CarbonModifier, without locks
};

inline constexpr std::int32_t noErr = 0;
inline constexpr std::int32_t eventNotHandledErr = -9874;

enum class KeyboardEventTypes { hotKey, rawKey };

class HotKeyCenter {
public:
    virtual ~HotKeyCenter() = default;

    // Hot keys fire whatever CapsLock, NumLock and the layout group are, and without
    // auto-repeat. A hot key that is held when it is given back may send no release.
    virtual HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers, HotKeyID) = 0;

    // At most one handler. It gets no event before a type is added. It returns noErr
    // for an event it consumed, else eventNotHandledErr. X11 cannot take a raw key away
    // from the menu that has the keyboard; there the result of raw kinds has no effect.
    virtual Token installHandler(std::function<std::int32_t(const KeyboardEvent&)>) = 0;

    virtual void addEventTypes(KeyboardEventTypes) = 0;
    virtual void removeEventTypes(KeyboardEventTypes) = 0;
};

}  // namespace Platform
