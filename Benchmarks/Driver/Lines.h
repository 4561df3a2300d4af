// Looks at the screen where the two lines of a crosshair must be: a piece of each, away
// from where they cross. Device pixels of the X screen.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"
#include "Support/Desktop/FrameBuffer.h"

namespace Benchmarks {

// A piece of the row, then of the column, as 0x00RRGGBB.
using LinePieces = std::array<std::vector<std::uint32_t>, 2>;

// What the monitor shows there, at once.
LinePieces readMonitor(const TestSupport::FrameBuffer&, Platform::X11::DevicePoint crossing, int screenWidth, int screenHeight);

class LineReader {
public:
    explicit LineReader(const std::string& displayName);

    // The screen's row and column of that pixel. One round trip. Throws when the server
    // is gone.
    LinePieces read(Platform::X11::DevicePoint crossing) const;

    Platform::X11::DevicePoint pointer() const;
    int screenWidth() const { return m_connection->screen().width_in_pixels; }
    int screenHeight() const { return m_connection->screen().height_in_pixels; }

private:
    std::unique_ptr<Platform::X11::Connection> m_connection;
};

// True when every pixel of the one has the opposite colour in the other.
bool areInverse(const std::vector<std::uint32_t>&, const std::vector<std::uint32_t>&);
bool areInverse(const LinePieces&, const LinePieces&);

}  // namespace Benchmarks
