// The time in which the capture is active: what it knows of the screen and holds in
// the server. All of it ends with the object.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Platform/ScreenCapture.h"
#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/Capture/ChangeWatch.h"
#include "Platform/X11/Capture/ImageReader.h"
#include "Platform/X11/Capture/PaintPlan.h"
#include "Platform/X11/Capture/Painter.h"
#include "Platform/X11/Capture/Redirection.h"
#include "Platform/X11/Capture/SampleGrid.h"
#include "Platform/X11/Capture/ScreenTruth.h"
#include "Platform/X11/Capture/StackReader.h"
#include "Platform/X11/Capture/StillScenes.h"
#include "Platform/X11/CaptureActivation.h"
#include "Platform/X11/OverlayStack.h"
#include "Platform/X11/SharedMonitorLayout.h"

namespace Platform::X11 {

// Whether windows keep their whole contents from the start on.
enum class WindowContents { kept, keptLater };

class CaptureSession {
public:
    CaptureSession(CaptureServer&, const SharedMonitorLayout&, const OverlayStack&, WindowContents);

    // As ScreenCapture::windowsBelow.
    void capture(std::uint32_t windowNumber, CaptureResolution, std::span<const Rect> rectangles, std::span<Captured> answers);

    // As CaptureActivation::keepContents.
    void keepContents(std::span<const CoveredPart>);

private:
    // A part of the screen to be painted and read.
    struct Piece {
        DeviceRect area;  // empty: nothing of it lies on the screen
        std::vector<PaintStep> steps;
        Region covered;            // where the screen does not show what is wanted
        bool isKnown = false;      // nothing of it is to be read
        std::size_t composed = 0;  // number of the picture
        std::optional<std::size_t> screen;
    };
    struct Target {
        SampleGrid grid;
        bool isUsable = false;
        Piece piece;
    };

    bool isStill(std::uint32_t windowNumber, CaptureResolution, std::span<const Rect> rectangles);
    bool isCoveredWhole(const DeviceRect&);
    bool areAllUsable();
    void layTargets(CaptureResolution, std::span<const Rect> rectangles);
    void catchUp();
    void lookAround();
    void takeEvent(const xcb_generic_event_t&);
    void takeQueuedEvents();
    void plan(std::uint32_t windowNumber);
    void planUpcoming(const OverlayEntry&);
    void plan(Piece&);
    void findKnown();
    bool hasKnownChanged();
    bool paintAndRead();
    static bool mustBeRead(const Piece& piece) { return !piece.area.isEmpty() && !piece.isKnown; }
    std::size_t pixelsToRead();
    void paint(Piece&);
    bool hasFailed();
    bool isStillValid(std::uint32_t windowNumber);
    bool isStillValid(const Piece&);
    bool captureOnce(std::uint32_t windowNumber);
    bool readsScreen() const { return m_reader.hasCompositor(); }
    std::span<Target> targets() { return std::span(m_targets).first(m_targetCount); }
    std::span<Piece> upcoming() { return std::span(m_upcoming).first(m_upcomingCount); }
    template <typename Predicate> bool isTrueOfAPiece(Predicate&& isTrue);
    void learnUpcoming();
    void answerStill(std::span<Captured> answers);
    void answer(std::uint32_t windowNumber, std::span<Captured> answers);
    void recall(const Target&, Captured&);
    void answerFromScreen(std::uint32_t windowNumber, const Target&, Captured&);

    CaptureServer& m_server;
    const SharedMonitorLayout& m_layouts;
    const OverlayStack& m_stack;
    std::optional<Redirection> m_redirection;  // the server has begun with it once the reader has read
    StackReader m_reader;
    ChangeWatch m_changes;
    StillScenes m_stillScenes;
    Painter m_painter;
    ImageReader m_images;
    PaintPlanner m_planner;
    ScreenTruth m_truth;
    std::shared_ptr<const MonitorLayout> m_layout;
    std::vector<OverlayEntry> m_entries;
    BelowOverlay m_below;
    Scene m_scene;
    std::vector<DeviceRect> m_sceneAreas;
    Region m_sceneCovered;
    std::vector<Target> m_targets;
    std::size_t m_targetCount = 0;
    std::vector<Piece> m_upcoming;  // what the overlay is about to cover
    std::size_t m_upcomingCount = 0;
    std::vector<DeviceRect> m_upcomingAreas;
    std::vector<PaintStep> m_stepsNow;
    std::vector<std::uint32_t> m_recalled;
    std::uint64_t m_knownGeneration = 0;
    bool m_isLastAttempt = false;  // which takes what it can get: what a window that shrank meanwhile leaves is as it was painted before
    bool m_hasNews = false;        // events changed what is known
};

}  // namespace Platform::X11
