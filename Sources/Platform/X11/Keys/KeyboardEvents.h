// What every connection that deals with keys has in common.
#pragma once

#include <cstdint>
#include <optional>

#include "Platform/X11/Connection.h"

namespace Platform::X11 {

// From now on the connection gets the events of isKeyboardMapChange(), and an
// auto-repeating key sends presses without releases between them. The state in key
// events then holds real modifiers only: for a client that never spoke of XKB, the server
// mixes the layout group into them. False when the server has no XKB.
bool startKeyboardEvents(Connection&);

// The keyboard, its map or the meaning of its modifiers changed.
bool isKeyboardMapChange(const Connection&, const xcb_generic_event_t&);

// X keycodes are evdev codes plus 8. Nothing for a code outside 8 to 255.
std::optional<xcb_keycode_t> keycodeOfVirtualKey(std::int64_t virtualKeyCode);
std::optional<std::uint16_t> virtualKeyOfKeycode(xcb_keycode_t);

}  // namespace Platform::X11
