// A pointer that a test moves and whose buttons it presses: real events of the X server
// (XTEST). Positions are device pixels of the X screen. Each operation returns when the
// server has done it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"

namespace TestSupport {

class XTestPointer {
public:
    // Throws when no server answers under that name.
    explicit XTestPointer(const std::string& displayName);

    void moveTo(int x, int y);
    void press(std::uint8_t button);
    void release(std::uint8_t button);
    void click(std::uint8_t button);

    Platform::X11::DevicePoint position() const;

private:
    void fake(std::uint8_t type, std::uint8_t detail, int x, int y);

    std::unique_ptr<Platform::X11::Connection> m_connection;
};

}  // namespace TestSupport
