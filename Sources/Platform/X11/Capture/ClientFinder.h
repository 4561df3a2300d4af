// Finds the windows of programs in the frames that a window manager put them into.
#pragma once

#include <span>
#include <vector>

#include "Platform/X11/Capture/CaptureServer.h"

namespace Platform::X11 {

class ClientFinder {
public:
    explicit ClientFinder(CaptureServer& server) : m_server(server), m_stateAtom(server.connection().atom("WM_STATE")) { }

    struct Client {
        xcb_window_t frame = XCB_WINDOW_NONE;
        xcb_window_t window = XCB_WINDOW_NONE;
    };

    // The clients of those frames that have one, at most two levels down. Two round trips,
    // and two more where one is not found at once, for all of them together.
    std::span<const Client> find(std::span<const xcb_window_t> frames);

private:
    void lookInto(std::vector<Client>& parents);
    bool isFound(xcb_window_t frame) const;

    CaptureServer& m_server;
    xcb_atom_t m_stateAtom;
    std::vector<Client> m_found;
};

}  // namespace Platform::X11
