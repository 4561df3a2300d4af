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

    // Those of the calls before may be used again. `pixels` is what the next ones have
    // together at most. False where the server has none. No round trip unless it grows.
    bool begin(std::size_t pixels);
    // Exactly that large. Valid until the next call.
    Canvas& add(const DeviceRect& size);
    // The pixels of the canvas that was added last, without padding. They are painted when
    // the server has answered to anything that was asked afterwards.
    std::span<const std::uint32_t> pixels() const { return m_pixels; }

    // An error of the connection came in. A server may refuse what it offers: what was to be
    // painted since begin() is not, and from the next one on there are none.
    void failed(const xcb_generic_error_t&);
    bool hasFailed() const { return m_hasFailed; }

private:
    struct Entry {
        Canvas canvas;
        std::size_t start = 0;  // in the memory, in pixels
        std::uint64_t lastUse = 0;
    };

    void releaseUnused();
    void grow(std::size_t pixels);
    xcb_pixmap_t makePixmap(const DeviceRect& size, std::size_t start);

    CaptureServer& m_server;
    bool m_isPossible;
    bool m_hasFailed = false;
    std::unique_ptr<SharedMemory> m_shared;
    std::vector<Entry> m_entries;
    std::uint64_t m_uses = 0;  // calls of begin()
    std::size_t m_size = 0;
    std::span<const std::uint32_t> m_pixels;
};

}  // namespace Platform::X11
