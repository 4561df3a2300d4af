// What the capture knows of the screen's windows: the children of the root from the
// lowest to the highest, kept up to date by events. Asks no server itself.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "Platform/X11/MonitorLayout.h"

namespace Platform::X11 {

inline constexpr std::uint32_t fullOpacity = 0xffffffff;

struct ToplevelWindow {
    xcb_window_t id = XCB_WINDOW_NONE;
    DeviceRect frame;  // with its border
    int border = 0;
    bool isMapped = false;

    // Names one backing pixmap of the window: the server makes a new one when the window
    // is mapped and when its size or border changes, not when it moves or is restacked.
    std::uint64_t contents = 0;

    // What events do not tell; the reader of the stack asks for it.
    bool isInputOnly = false;
    std::uint8_t depth = 0;
    xcb_visualid_t visual = 0;
    bool isShaped = false;
    std::vector<DeviceRect> shape;  // relative to the corner inside the border
    std::uint32_t opacity = fullOpacity;
    xcb_window_t client = XCB_WINDOW_NONE;  // the window in this frame whose opacity is told of too

    bool needsAttributes = true;
    bool needsShape = true;
    bool needsOpacity = true;
    bool isWatched = false;  // its property and shape events are selected

    bool needsLearning() const { return isMapped && (needsAttributes || (!isInputOnly && (needsShape || needsOpacity))); }
    bool hasPixels() const { return isMapped && !needsAttributes && !isInputOnly; }
};

class StackModel {
public:
    // What is ours alone is no part of the model: identifiers of this client, and those
    // of the server itself (a compositor's overlay window, the screen saver's window).
    struct Identifiers {
        xcb_window_t root = XCB_WINDOW_NONE;
        std::uint32_t ownBase = 0;
        std::uint32_t mask = 0;  // the bits that a client chooses
        std::uint8_t shapeNotify = 0;
        xcb_atom_t opacity = XCB_ATOM_NONE;
        std::vector<xcb_atom_t> wallpapers;  // root properties that tell of a new root background
    };

    explicit StackModel(Identifiers identifiers) : m_identifiers(std::move(identifiers)) { }

    // True when the event changed what the model says.
    bool handle(const xcb_generic_event_t&);

    // Forgets the windows; no backing pixmap is named twice nevertheless.
    void clear();

    // Places a window on top, as new windows are. Nothing for identifiers that are no
    // part of the model.
    ToplevelWindow* add(xcb_window_t);
    void setGeometry(ToplevelWindow&, const DeviceRect& inner, int border);
    void setMapped(ToplevelWindow&, bool isMapped);
    void setRootSize(int width, int height);
    void countRootBackground() { ++m_rootBackground; }

    // From the lowest to the highest.
    std::span<const ToplevelWindow> windows() const { return m_windows; }
    std::span<ToplevelWindow> windows() { return m_windows; }
    ToplevelWindow* find(xcb_window_t);
    const ToplevelWindow* find(xcb_window_t id) const { return const_cast<StackModel*>(this)->find(id); }
    // The opacity of all windows is to be learnt again.
    void doubtOpacity();

    DeviceRect root() const { return m_root; }
    // Counts what may have changed the root background.
    std::uint64_t rootBackground() const { return m_rootBackground; }
    // Counts all changes.
    std::uint64_t generation() const { return m_generation; }
    // An event named a window that the model does not know: it must be made anew.
    bool isBroken() const { return m_isBroken; }

private:
    bool isForeign(xcb_window_t) const;
    bool remove(xcb_window_t);
    bool placeAbove(xcb_window_t, xcb_window_t sibling);
    bool configured(const xcb_configure_notify_event_t&);
    bool reparented(const xcb_reparent_notify_event_t&);
    bool created(const xcb_create_notify_event_t&);
    bool mapped(xcb_window_t, bool isMapped);
    bool moved(const xcb_gravity_notify_event_t&);
    bool circulated(const xcb_circulate_notify_event_t&);
    bool propertyChanged(const xcb_property_notify_event_t&);
    bool reshaped(const xcb_generic_event_t&);
    bool dispatch(const xcb_generic_event_t&);
    std::size_t indexOf(xcb_window_t) const;
    ToplevelWindow* findByClient(xcb_window_t);

    Identifiers m_identifiers;
    std::vector<ToplevelWindow> m_windows;
    DeviceRect m_root;
    std::uint64_t m_rootBackground = 0;
    std::uint64_t m_generation = 0;
    std::uint64_t m_lastContents = 0;
    bool m_isBroken = false;
};

}  // namespace Platform::X11
