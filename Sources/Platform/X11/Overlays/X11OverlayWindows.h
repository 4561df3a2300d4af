// Overlays on X11. Each is a few override-redirect windows, one for each picture: moving
// and painting two thin windows costs little at any screen size and needs no compositor.
// An overlay without a shadow is flat: one InputOnly window of its frame's size takes all
// clicks there. One with a shadow is a thing with the outline of its picture: clicks inside
// it are taken, those on transparent corners go to what lies beneath. The keyboard comes by
// passive grabs; the focus stays. It comes once the first picture is shown and the windows
// beneath keep their contents, or else a tick after the first overlay: a compositor has most
// of that tick to do before the picture is on the screen.
#pragma once

#include <memory>
#include <vector>

#include "Platform/OverlayWindow.h"
#include "Platform/X11/CaptureActivation.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/Keys/OverlayKeys.h"
#include "Platform/X11/OverlayStack.h"
#include "Platform/X11/Overlays/ContentsKeeper.h"
#include "Platform/X11/Overlays/FocusKeeper.h"
#include "Platform/X11/Overlays/StackGuard.h"
#include "Platform/X11/SharedMonitorLayout.h"

namespace Platform::X11 {

class X11OverlayWindow;

class X11OverlayWindows final : public OverlayWindows {
public:
    struct Parts {
        Connection& requests;     // also the pointer's: one answer there says that earlier puts are done
        Connection& stackEvents;  // nothing else uses it
        Connection& focusEvents;  // nothing else uses it
        FileDescriptorWatcher& watcher;
        MainLoop& mainLoop;
        const SharedMonitorLayout& layout;
        OverlayStack& stack;
        CaptureActivation& capture;
        OverlayKeys& keys;
    };

    explicit X11OverlayWindows(const Parts&);
    ~X11OverlayWindows() override;

    // Windows must not outlive this.
    std::unique_ptr<OverlayWindow> makeOverlayWindow(const OverlayStyle&, OverlayWindowDelegate&) override;

private:
    friend class X11OverlayWindow;

    void add(X11OverlayWindow&);
    void remove(X11OverlayWindow&);
    void orderFront(X11OverlayWindow&);
    void orderOut(X11OverlayWindow&);
    void takeKeysSoon();
    void takeKeys();
    void grabKeys();
    void raiseAll();
    void dismissAll();
    void renewFormats();
    bool isOurs(xcb_window_t) const;
    void keyDown(const KeyEvent&);
    void publishStack();

    Parts m_parts;
    std::vector<X11OverlayWindow*> m_windows;  // all there are
    std::vector<X11OverlayWindow*> m_shown;    // from the lowest up; the last is the key one
    std::int64_t m_lastWindowNumber = 0;
    ContentsKeeper m_contentsKeeper;
    StackGuard m_stackGuard;
    FocusKeeper m_focusKeeper;
    std::unique_ptr<Timer> m_keysTimer;  // until the keys are taken
};

}  // namespace Platform::X11
