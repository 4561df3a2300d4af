// Tells whether what lies below an overlay is still what it was, so that nobody has to
// read it again: by the windows' places and looks, and by what the server tells of
// drawing in them (DAMAGE).
#pragma once

#include <xcb/damage.h>

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/Capture/PaintPlan.h"
#include "Platform/X11/Capture/StackModel.h"

namespace Platform::X11 {

class ChangeWatch {
public:
    explicit ChangeWatch(CaptureServer& server) : m_server(server) { }
    ~ChangeWatch();
    ChangeWatch(const ChangeWatch&) = delete;
    ChangeWatch& operator=(const ChangeWatch&) = delete;

    // Without DAMAGE nobody tells, and everything may always have changed.
    bool isPossible() const { return m_server.hasDamage(); }

    // From now on for the windows below the overlay. What is read by requests that follow
    // this call is newer than all changes before it. While nobody calls it, a window that
    // is drawn in tells so once.
    void follow(const StackModel&, const BelowOverlay&);
    // No window is watched any more; everything may have changed when one is again.
    void stop();
    // True when the event was one of those it asked for.
    bool handle(const xcb_generic_event_t&);

    // Since the last clear(): everything, or these parts of the screen.
    bool hasAllChanged() const { return m_hasAllChanged; }
    std::span<const DeviceRect> changed() const { return m_changed; }
    bool touches(const DeviceRect&) const;
    void clear();

private:
    struct Watched {
        xcb_damage_damage_t damage = XCB_NONE;
        std::uint64_t contents = 0;
        bool isWanted = false;
        bool hasTold = false;  // and tells no more within the same place until it is answered
    };

    void change(const DeviceRect&);
    void watch(const ToplevelWindow&);
    void unwatchOthers();

    CaptureServer& m_server;
    std::unordered_map<xcb_window_t, Watched> m_watched;
    std::uint64_t m_look = 0;  // of the windows' places and looks
    bool m_hasAllChanged = true;
    std::vector<DeviceRect> m_changed;
};

}  // namespace Platform::X11
