// Canvases in the server's memory, used again and again.
#pragma once

#include <cstdint>
#include <vector>

#include "Platform/X11/Capture/Canvas.h"

namespace Platform::X11 {

class ServerCanvases {
public:
    explicit ServerCanvases(CaptureServer& server) : m_server(server) { }
    ~ServerCanvases();
    ServerCanvases(const ServerCanvases&) = delete;
    ServerCanvases& operator=(const ServerCanvases&) = delete;

    // Those of the calls before may be used again.
    void begin();
    // Valid until the next call.
    Canvas& add(const DeviceRect& size);

private:
    struct Entry {
        Canvas canvas;
        bool isInUse = false;
        std::uint64_t lastUse = 0;
    };

    CaptureServer& m_server;
    std::vector<Entry> m_entries;
    std::uint64_t m_uses = 0;
};

}  // namespace Platform::X11
