// Another program with a system-wide hot key.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/X11/Connection.h"

namespace TestSupport {

class ForeignHotKey {
public:
    // The key by its evdev code, modifiers as XCB_MOD_MASK_... bits; grabbed whatever
    // CapsLock and NumLock are. Throws when another program holds it.
    ForeignHotKey(const std::string& displayName, std::uint16_t evdevCode, std::uint16_t modifiers);

    // How often it was pressed since the last call.
    int takePresses();

private:
    std::unique_ptr<Platform::X11::Connection> m_connection;
};

// True when some program holds the hot key now, under every state of the locks. Asks in
// such a way that no program can be refused the key meanwhile.
bool isHotKeyTaken(const std::string& displayName, std::uint16_t evdevCode, std::uint16_t modifiers);

}  // namespace TestSupport
