// Canvases in memory that the server shares with us: what is painted need not be read.
// Servers that draw in memory of their own (a graphics card's) offer none.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "Platform/X11/Capture/Canvas.h"
#include "Platform/X11/SharedMemory.h"

namespace Platform::X11 {

class SharedCanvases {
public:
    explicit SharedCanvases(CaptureServer& server) : m_server(server), m_isPossible(server.hasSharedPixmaps()) { }
    ~SharedCanvases();
    SharedCanvases(const SharedCanvases&) = delete;
    SharedCanvases& operator=(const SharedCanvases&) = delete;

    // Those of the calls before are gone. `pixels` is what the next ones have together at
    // most. False where the server has none. No round trip unless it grows.
    bool begin(std::size_t pixels);
    // Exactly that large. Valid until the next call.
    Canvas& add(const DeviceRect& size);
    // The pixels of the canvas that was added last, without padding. They are painted when
    // the server has answered to anything that was asked afterwards.
    std::span<const std::uint32_t> pixels() const { return m_pixels; }

private:
    struct Entry {
        Canvas canvas;
        std::size_t start = 0;  // in the memory, in pixels
        bool isInUse = false;
    };

    void grow(std::size_t pixels);
    bool isAccepted();
    xcb_pixmap_t makePixmap(const DeviceRect& size, std::size_t start);

    CaptureServer& m_server;
    bool m_isPossible;
    std::unique_ptr<SharedMemory> m_shared;
    std::vector<Entry> m_entries;
    std::size_t m_size = 0;
    std::span<const std::uint32_t> m_pixels;
};

}  // namespace Platform::X11
