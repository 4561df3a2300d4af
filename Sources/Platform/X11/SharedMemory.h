// Pixel memory that this process and the X server both see (MIT-SHM).
#pragma once

#include <xcb/shm.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "Platform/X11/Connection.h"

namespace Platform::X11 {

class SharedMemory {
public:
    // Nothing when the server cannot see our memory (another machine, another container).
    // One round trip; two on a connection that was not yet asked for the extension.
    static std::unique_ptr<SharedMemory> make(Connection&, std::size_t pixels);
    ~SharedMemory();
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    xcb_shm_seg_t segment() const { return m_segment; }
    // At least as many as asked for.
    std::span<std::uint32_t> pixels() const { return m_pixels; }

private:
    SharedMemory(Connection&, xcb_shm_seg_t, std::span<std::uint32_t>);

    Connection& m_connection;
    const xcb_shm_seg_t m_segment;
    const std::span<std::uint32_t> m_pixels;
};

}  // namespace Platform::X11
