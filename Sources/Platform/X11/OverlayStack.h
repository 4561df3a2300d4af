// Which X windows our overlays are made of, and in which order they lie: what the
// overlays tell the capture. Thread-safe.
#pragma once

#include <xcb/xproto.h>

#include <cstdint>
#include <mutex>
#include <vector>

#include "Platform/X11/MonitorLayout.h"

namespace Platform::X11 {

struct OverlayPicture {
    xcb_window_t window = XCB_WINDOW_NONE;
    DeviceRect frame;  // where the window shows pixels; empty while it is not mapped

    friend bool operator==(const OverlayPicture&, const OverlayPicture&) = default;
};

struct OverlayEntry {
    std::uint32_t windowNumber = 0;
    std::vector<OverlayPicture> pictures;    // windows with pixels, from the lowest up
    xcb_window_t catcher = XCB_WINDOW_NONE;  // the InputOnly window, if any

    // The overlay is one thing that covers more than is captured for it, and that may have
    // a compositor's shadow; then `upcoming` is where it lies or, between being placed and
    // being painted, will lie.
    bool isOutlined = false;
    DeviceRect upcoming;

    friend bool operator==(const OverlayEntry&, const OverlayEntry&) = default;
};

class OverlayStack {
public:
    // Entries from the lowest overlay up. Overlays that are not shown have entries too,
    // with empty frames: their windows exist and must never be captured for themselves.
    void set(std::vector<OverlayEntry> entries)
    {
        const std::lock_guard lock(m_mutex);
        m_entries = std::move(entries);
        ++m_generation;
    }

    // Moves one picture without an allocation. Unknown windows are ignored.
    void movePicture(xcb_window_t window, const DeviceRect& frame)
    {
        const std::lock_guard lock(m_mutex);
        for (auto& entry : m_entries) {
            for (auto& picture : entry.pictures) {
                if (picture.window == window)
                    picture.frame = frame;
            }
        }
        ++m_generation;
    }

    // Tells where an outlined overlay will lie, without an allocation.
    void place(std::uint32_t windowNumber, const DeviceRect& upcoming)
    {
        const std::lock_guard lock(m_mutex);
        for (auto& entry : m_entries) {
            if (entry.windowNumber == windowNumber)
                entry.upcoming = upcoming;
        }
        ++m_generation;
    }

    // Copies the entries into `entries`, which keeps its memory.
    void copyTo(std::vector<OverlayEntry>& entries) const
    {
        const std::lock_guard lock(m_mutex);
        entries = m_entries;
    }

    std::uint64_t generation() const
    {
        const std::lock_guard lock(m_mutex);
        return m_generation;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<OverlayEntry> m_entries;
    std::uint64_t m_generation = 0;
};

}  // namespace Platform::X11
