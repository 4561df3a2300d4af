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

    void begin();
    // A picture of `area`, which lies in the drawable, in its coordinates. Returns its
    // number.
    std::size_t add(xcb_drawable_t, const DeviceRect& area);
    // A picture that is to be put together from parts.
    std::size_t addPicture(const DeviceRect& size);
    // The part's pixels follow each other in the picture that was added last, from `offset`
    // on. Of parts that overlap the last one counts.
    void addPart(xcb_drawable_t, const DeviceRect& area, std::size_t offset);
    // False when the server refused one.
    bool read();

    // 0xXXRRGGBB, rows without padding; valid until the next begin().
    std::span<const std::uint32_t> pixels(std::size_t number) const;

private:
    struct Picture {
        std::size_t offset;  // in pixels
        std::size_t size;
    };
    struct Request {
        xcb_drawable_t drawable;
        DeviceRect area;
        std::size_t offset;
        unsigned sequence;
    };

    void reserve(std::size_t pixels);
    bool readShared();
    bool readCopied();

    CaptureServer& m_server;
    bool m_usesSharedMemory;
    std::unique_ptr<SharedMemory> m_shared;
    std::vector<std::uint32_t> m_copied;
    std::vector<Picture> m_pictures;
    std::vector<Request> m_requests;
    std::size_t m_size = 0;
};

}  // namespace Platform::X11
