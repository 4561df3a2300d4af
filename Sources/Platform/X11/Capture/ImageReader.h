// Reads rectangles of drawables into memory, any number of them in one round trip:
// through shared memory, or by GetImage where the server refuses that.
#pragma once

#include <xcb/shm.h>

#include <cstdint>
#include <span>
#include <vector>

#include "Platform/X11/Capture/CaptureServer.h"

namespace Platform::X11 {

class ImageReader {
public:
    explicit ImageReader(CaptureServer& server) : m_server(server), m_usesSharedMemory(server.hasSharedMemory()) { }
    ~ImageReader() { release(); }
    ImageReader(const ImageReader&) = delete;
    ImageReader& operator=(const ImageReader&) = delete;

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
    void attach(std::size_t bytes);
    void release();
    bool readShared();
    bool readCopied();

    CaptureServer& m_server;
    bool m_usesSharedMemory;
    xcb_shm_seg_t m_segment = XCB_NONE;
    std::uint32_t* m_shared = nullptr;
    std::size_t m_capacity = 0;  // of the segment, in pixels
    std::vector<std::uint32_t> m_copied;
    std::vector<Request> m_requests;
    std::size_t m_size = 0;
};

}  // namespace Platform::X11
