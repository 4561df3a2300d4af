// Keeps a stack model true to the server: selects the events, asks once for what
// events do not tell. Everything is undone when it goes.
#pragma once

#include <xcb/shape.h>

#include <array>
#include <vector>

#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/Capture/ClientFinder.h"
#include "Platform/X11/Capture/RootBackground.h"
#include "Platform/X11/Capture/StackModel.h"

namespace Platform::X11 {

class StackReader {
public:
    // Reads the stack, under a grab of the server of two round trips.
    explicit StackReader(CaptureServer&);
    ~StackReader();
    StackReader(const StackReader&) = delete;
    StackReader& operator=(const StackReader&) = delete;

    const StackModel& model() const { return m_model; }
    bool hasCompositor() const { return m_compositor != XCB_WINDOW_NONE; }
    RootLook root() const { return {m_model.root(), m_model.rootBackground(), hasCompositor(), m_wallpaper}; }
    // Counts the times that a compositor came or went.
    std::uint64_t compositorChanges() const { return m_compositorChanges; }

    // True when the event changed what is known.
    bool handle(const xcb_generic_event_t&);

    // True when mapped windows or the wallpaper wait for learn().
    bool needsLearning() const;
    // Asks for what is missing, of all windows in one round trip; some more where the
    // opacity of clients in frames counts.
    void learn();
    // Reads the stack anew.
    void prime();

private:
    struct Question {
        xcb_window_t window;
        bool asksAttributes;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
        xcb_shape_query_extents_cookie_t extents;
        xcb_shape_get_rectangles_cookie_t shape;
        xcb_get_property_cookie_t opacity;
        xcb_window_t client;
        xcb_get_property_cookie_t clientOpacity;  // where there is a client
    };

    StackModel::Identifiers identifiers();
    void select(std::uint32_t rootEvents);
    void watch(ToplevelWindow&);
    void ask(ToplevelWindow&);
    void collectAnswers(bool isPriming);
    void takeAttributes(const Question&, bool isPriming);
    void takeDetails(const Question&);
    void takeShape(const Question&, ToplevelWindow*) const;
    void takeOpacity(const Question&, ToplevelWindow*);
    void learnClients();
    xcb_get_property_cookie_t askOpacity(xcb_window_t) const;
    bool knowsWallpaper() const { return m_wallpaperGeneration == m_model.rootBackground(); }
    void askWallpaper();
    void takeWallpaper();
    void takeManager();
    void dropEvents();

    CaptureServer& m_server;
    xcb_connection_t* m_c;
    xcb_atom_t m_opacityAtom;
    xcb_atom_t m_compositorSelection;
    xcb_window_t m_compositor = XCB_WINDOW_NONE;
    std::uint64_t m_compositorChanges = 0;
    StackModel m_model;
    std::vector<Question> m_questions;
    std::array<xcb_get_property_cookie_t, 2> m_wallpaperQuestions{};
    xcb_get_property_cookie_t m_managerQuestion{};
    bool m_asksWallpaper = false;
    xcb_pixmap_t m_wallpaper = XCB_NONE;
    bool m_compositorManages = false;  // the window manager is the compositor
    ClientFinder m_clientFinder;
    std::vector<xcb_window_t> m_frames;       // whose clients are to be found
    std::uint64_t m_wallpaperGeneration = 0;  // of the root background that m_wallpaper belongs to
};

}  // namespace Platform::X11
