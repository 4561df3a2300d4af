// One connection to the X server. A connection that dies makes every request a
// no-op; isBroken() tells.
#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Platform::X11 {

// Replies and events of xcb are freed with free().
struct FreeDeleter {
    void operator()(void* pointer) const { std::free(pointer); }
};
template <typename T> using Reply = std::unique_ptr<T, FreeDeleter>;
using Event = Reply<xcb_generic_event_t>;

template <typename T> Reply<T> adopt(T* reply) { return Reply<T>(reply); }

// The response type of an event without the bit that marks sent events.
inline std::uint8_t eventType(const xcb_generic_event_t& event) { return event.response_type & 0x7f; }

// Hands the events to `take` that have been read already and those that one look at the
// socket brings (about a hundred), and returns how many they were. What comes later makes
// the socket readable again.
template <typename Take> int takeArrivedEvents(xcb_connection_t* connection, Take&& take)
{
    int count = 0;
    const auto takeOne = [&](Event event) {
        if (!event)
            return false;
        take(std::move(event));
        ++count;
        return true;
    };
    // xcb looks at the socket only when its own queue is empty.
    while (takeOne(Event(xcb_poll_for_queued_event(connection)))) { }
    if (takeOne(Event(xcb_poll_for_event(connection)))) {
        while (takeOne(Event(xcb_poll_for_queued_event(connection)))) { }
    }
    return count;
}

class Connection {
public:
    // Nothing when no server answers under that name (the environment's DISPLAY when empty).
    static std::unique_ptr<Connection> open(const std::string& displayName = {});
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    operator xcb_connection_t*() const { return m_connection; }  // NOLINT(google-explicit-constructor)
    xcb_connection_t* get() const { return m_connection; }
    int fileDescriptor() const { return xcb_get_file_descriptor(m_connection); }
    bool isBroken() const { return xcb_connection_has_error(m_connection) != 0; }

    const xcb_screen_t& screen() const { return *m_screen; }
    xcb_window_t root() const { return m_screen->root; }
    xcb_window_t newId() const { return xcb_generate_id(m_connection); }

    // True when the server has the extension.
    bool has(xcb_extension_t& extension) const;
    std::uint8_t firstEvent(xcb_extension_t& extension) const;
    std::uint8_t majorOpcode(xcb_extension_t& extension) const;

    // Interned once, then remembered.
    xcb_atom_t atom(std::string_view name);

    // The root's visual has 24 or 32 bits a pixel word in the layout 0xRRGGBB.
    bool hasUsualPixels() const;
    // The visual with 8 bits of alpha, 0 when there is none.
    xcb_visualid_t argbVisual() const;

    // _NET_WM_CM_Sn of this screen: the selection that a compositing manager owns.
    xcb_atom_t compositorSelection();
    // True while one does (one round trip).
    bool hasCompositor();

    // Takes and paints the screen and windows of its depth with all that lies on them. The
    // server tells nothing about what it cannot copy.
    xcb_gcontext_t newScreenGraphics() const;

    void flush() const { xcb_flush(m_connection); }
    // Returns when the server has done all that was asked of it so far: one round trip.
    void waitForServer() const { adopt(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)); }

private:
    Connection(xcb_connection_t*, int screenNumber);

    xcb_connection_t* m_connection;
    int m_screenNumber;
    xcb_screen_t* m_screen;
    std::unordered_map<std::string, xcb_atom_t> m_atoms;
};

}  // namespace Platform::X11
