// Reads rectangles of drawables into memory, any number of them in one round trip:
// through shared memory, or by GetImage where the server refuses that.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/SharedMemory.h"

namespace Platform::X11 {

class ImageReader {
public:
    explicit ImageReader(CaptureServer& server) : m_server(server), m_usesSharedMemory(server.hasSharedMemory()) { }

    void begin() { m_requests.clear(); }
    // `area` lies in the drawable, in its coordinates. Returns the number of the picture.
    std::size_t add(xcb_drawable_t, const DeviceRect& area);
    // False when the server refused one.
    bool read();

    // 0xXXRRGGBB, rows without padding; valid until the next read().
    std::span<const std::uint32_t> pixels(std::size_t number) const;

private:
    struct Request {
        xcb_drawable_t drawable;
        DeviceRect area;
        std::size_t offset;  // in pixels
        unsigned sequence;
        std::size_t size() const { return static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height); }
    };

    void reserve(std::size_t pixels);
    bool readShared();
    bool readCopied();

    CaptureServer& m_server;
    bool m_usesSharedMemory;
    std::unique_ptr<SharedMemory> m_shared;
    std::vector<std::uint32_t> m_copied;
    std::vector<Request> m_requests;
    std::size_t m_size = 0;
};

}  // namespace Platform::X11
