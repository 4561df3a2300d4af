#include "Platform/X11/Capture/CaptureSession.h"

#include <algorithm>
#include <utility>

#include "Platform/X11/Capture/StraightReading.h"

namespace Platform::X11 {
namespace {

// A screen that changes while it is captured is captured again so often; this bounds
// the time that another client's storm of windows can take from a capture.
constexpr int mostAttempts = 3;
constexpr int mostLearningRounds = 2;
constexpr int mostEventsAtOnce = 50000;

bool mayBeStill(std::span<const Captured> answers)
{
    return std::all_of(answers.begin(), answers.end(), [](const Captured& answer) { return answer.mayBeStill; });
}

}  // namespace

CaptureSession::CaptureSession(CaptureServer& server, const SharedMonitorLayout& layouts, const OverlayStack& stack, WindowContents contents)
    : m_server(server), m_layouts(layouts), m_stack(stack),
      m_redirection(contents == WindowContents::kept ? std::optional<Redirection>(std::in_place, server) : std::optional<Redirection>()),
      m_reader(server), m_changes(server), m_stillScenes(server), m_painter(server), m_images(server)
{
}

void CaptureSession::capture(std::uint32_t windowNumber, CaptureResolution resolution, std::span<const Rect> rectangles, std::span<Captured> answers)
{
    m_layout = m_layouts.get();
    bool isCaptured = false;
    for (int attempt = 0; attempt < mostAttempts && !isCaptured; ++attempt) {
        catchUp();
        m_stack.copyTo(m_entries);
        lookAround();
        layTargets(resolution, rectangles);
        if (attempt == 0 && isStill(windowNumber, resolution, rectangles) && mayBeStill(answers)) {
            answerStill(answers);
            return;
        }
        m_isLastAttempt = attempt + 1 == mostAttempts;
        isCaptured = captureOnce(windowNumber);
        if (isCaptured && !m_isLastAttempt)
            isCaptured = isStillValid(windowNumber);
    }
    m_stillScenes.captured(windowNumber, isCaptured && !m_isLastAttempt && areAllUsable(), std::chrono::steady_clock::now());
    if (!isCaptured)
        return;
    learnUpcoming();
    answer(windowNumber, answers);
}

// What was noted of drawing elsewhere goes to the server, so that it tells the next.
void CaptureSession::answerStill(std::span<Captured> answers)
{
    m_server.connection().flush();
    if (m_server.connection().isBroken())
        return;
    for (auto& answer : answers)
        answer.truth = CaptureTruth::still;
}

void CaptureSession::lookAround()
{
    const auto now = std::chrono::steady_clock::now();
    m_truth.update(m_entries, m_reader.compositorChanges(), now);
    if (readsScreen())
        m_truth.followStack(std::as_const(m_reader).model(), m_entries, now);
    if (std::none_of(m_entries.begin(), m_entries.end(), [](const OverlayEntry& entry) { return entry.isOutlined; }))
        m_changes.stop();
}

void CaptureSession::keepContents(std::span<const CoveredPart> covered)
{
    if (m_redirection)
        return;
    const auto known = std::as_const(m_reader).model().windows();
    const std::vector<ToplevelWindow> before(known.begin(), known.end());
    catchUp();
    auto& connection = m_server.connection();
    xcb_grab_server(connection);
    connection.waitForServer();
    m_server.countRoundTrip();
    takeQueuedEvents();
    m_redirection.emplace(m_server);
    // Windows of which a compositor keeps the contents had them before.
    if (!m_reader.hasCompositor())
        m_redirection->putBack(covered, m_reader.model(), before);
    xcb_ungrab_server(connection);
    connection.flush();
}

bool CaptureSession::isStill(std::uint32_t windowNumber, CaptureResolution resolution, std::span<const Rect> rectangles)
{
    m_scene.windowNumber = windowNumber;
    m_scene.resolution = resolution;
    m_scene.rectangles.assign(rectangles.begin(), rectangles.end());
    m_scene.overlays = m_entries;
    m_scene.layout = m_layout;
    m_scene.compositorChanges = m_reader.compositorChanges();
    m_sceneAreas.clear();
    for (const auto& target : targets())
        m_sceneAreas.push_back(target.piece.area);
    const auto& model = std::as_const(m_reader).model();
    lookBelow(windowNumber, m_entries, model, m_below);
    const bool isSame = m_stillScenes.isStill(m_scene, model, m_below, m_sceneAreas, std::chrono::steady_clock::now());
    return isSame && std::all_of(m_sceneAreas.begin(), m_sceneAreas.end(), [this](const DeviceRect& area) { return isCoveredWhole(area); });
}

// What is read from the screen may change without any window: a compositor paints late, and
// more than windows.
bool CaptureSession::isCoveredWhole(const DeviceRect& area)
{
    if (!readsScreen() || area.isEmpty())
        return true;
    m_sceneCovered.clear();
    m_truth.findCovered(area, m_reader.model(), m_below, m_sceneCovered);
    return m_sceneCovered.encloses(area);
}

bool CaptureSession::areAllUsable()
{
    const auto now = targets();
    return std::all_of(now.begin(), now.end(), [](const Target& target) { return target.isUsable; });
}

void CaptureSession::layTargets(CaptureResolution resolution, std::span<const Rect> rectangles)
{
    m_targetCount = rectangles.size();
    if (m_targets.size() < m_targetCount)
        m_targets.resize(m_targetCount);
    for (std::size_t i = 0; i < m_targetCount; ++i) {
        auto& target = m_targets[i];
        target.isUsable = target.grid.lay(*m_layout, m_reader.model().root(), rectangles[i], resolution);
        target.piece.area = target.isUsable ? target.grid.area() : DeviceRect{};
    }
}

void CaptureSession::takeEvent(const xcb_generic_event_t& event)
{
    if (event.response_type == 0) {
        m_painter.failed(reinterpret_cast<const xcb_generic_error_t&>(event));
        m_images.failed(reinterpret_cast<const xcb_generic_error_t&>(event));
        return;
    }
    // Each drawing is told to both.
    const bool isOfStillScenes = m_stillScenes.handle(event);
    if (!m_changes.handle(event) && !isOfStillScenes)
        m_hasNews = m_reader.handle(event) || m_hasNews;
}

void CaptureSession::takeQueuedEvents()
{
    while (const auto event = Event(xcb_poll_for_queued_event(m_server.connection())))
        takeEvent(*event);
}

// Brings the model up to what the server has told so far.
void CaptureSession::catchUp()
{
    constexpr int fewEvents = 64;  // so few were all that had come
    for (int taken = 0, now = fewEvents; now >= fewEvents && taken < mostEventsAtOnce; taken += now)
        now = takeArrivedEvents(m_server.connection(), [this](const Event& event) { takeEvent(*event); });
    if (m_reader.model().isBroken())
        m_reader.prime();
    for (int round = 0; round < mostLearningRounds && m_reader.needsLearning(); ++round) {
        m_reader.learn();
        takeQueuedEvents();
    }
    if (m_knownGeneration != m_reader.model().generation()) {
        m_knownGeneration = m_reader.model().generation();
        m_painter.releaseStale(m_reader.model());
    }
    m_hasNews = false;
}

void CaptureSession::plan(std::uint32_t windowNumber)
{
    lookBelow(windowNumber, m_entries, m_reader.model(), m_below);
    for (auto& target : targets())
        plan(target.piece);
    m_upcomingCount = 0;
    if (!readsScreen())
        return;
    const auto hasNumber = [&](const OverlayEntry& entry) { return entry.windowNumber == windowNumber; };
    const auto overlay = std::find_if(m_entries.begin(), m_entries.end(), hasNumber);
    if (overlay == m_entries.end() || !overlay->isOutlined)
        return;
    planUpcoming(*overlay);
    findKnown();
}

void CaptureSession::planUpcoming(const OverlayEntry& overlay)
{
    m_truth.findUpcoming(overlay, m_reader.model().root(), m_reader.model(), m_below, m_upcomingAreas);
    m_upcomingCount = m_upcomingAreas.size();
    if (m_upcoming.size() < m_upcomingCount)
        m_upcoming.resize(m_upcomingCount);
    for (std::size_t i = 0; i < m_upcomingCount; ++i) {
        m_upcoming[i].area = m_upcomingAreas[i];
        plan(m_upcoming[i]);
    }
}

void CaptureSession::plan(Piece& piece)
{
    piece.steps.clear();
    piece.covered.clear();
    piece.isKnown = false;
    if (piece.area.isEmpty())
        return;
    m_planner.plan(m_reader.model(), m_below, m_reader.hasCompositor(), piece.area, piece.steps);
    if (readsScreen())
        m_truth.findCovered(piece.area, m_reader.model(), m_below, piece.covered);
}

// An overlay that covers what is captured for it sees the same again and again: of that
// only what is new to it is read, as long as nothing beneath it changes.
void CaptureSession::findKnown()
{
    if (!m_changes.isPossible())
        return;
    m_changes.follow(m_reader.model(), m_below);
    m_truth.forgetAnswersFor(m_changes);
    m_changes.clear();
    for (auto& target : targets())
        target.piece.isKnown = !m_isLastAttempt && !target.piece.area.isEmpty() && m_truth.isKnown(target.piece.area, target.piece.covered);
}

bool CaptureSession::hasKnownChanged()
{
    const auto now = targets();
    return std::any_of(now.begin(), now.end(), [this](const Target& target) { return target.piece.isKnown && m_changes.touches(target.piece.area); });
}

bool CaptureSession::paintAndRead()
{
    m_images.begin(pixelsToRead());
    for (auto& target : targets())
        paint(target.piece);
    for (auto& piece : upcoming())
        paint(piece);
    return m_images.read();
}

std::size_t CaptureSession::pixelsToRead()
{
    std::size_t pixels = 0;
    const auto add = [&](const Piece& piece) {
        if (mustBeRead(piece))
            pixels += (readsScreen() ? 2 : 1) * static_cast<std::size_t>(piece.area.width) * static_cast<std::size_t>(piece.area.height);
    };
    for (const auto& target : targets())
        add(target.piece);
    for (const auto& piece : upcoming())
        add(piece);
    return pixels;
}

void CaptureSession::paint(Piece& piece)
{
    piece.screen.reset();
    if (!mustBeRead(piece))
        return;
    if (readsScreen() && !piece.covered.encloses(piece.area))
        piece.screen = m_images.add(m_server.connection().root(), piece.area);
    if (!m_images.sharesCanvases()) {
        if (const auto straight = addStraight(m_server, m_painter, m_images, piece.steps, piece.area)) {
            piece.composed = *straight;
            return;
        }
    }
    auto& canvas = m_images.addCanvas(piece.area, piece.composed);
    m_painter.paint(piece.steps, piece.area, m_reader.root(), canvas);
}

template <typename Predicate> bool CaptureSession::isTrueOfAPiece(Predicate&& isTrue)
{
    const auto targetsNow = targets();
    const auto upcomingNow = upcoming();
    return std::any_of(targetsNow.begin(), targetsNow.end(), [&](const Target& target) { return isTrue(target.piece); }) ||
        std::any_of(upcomingNow.begin(), upcomingNow.end(), isTrue);
}

bool CaptureSession::hasFailed()
{
    return m_images.hasFailed() || isTrueOfAPiece([this](const Piece& piece) { return m_painter.hasFailed(piece.steps); });
}

// Errors about windows that went meanwhile are everyday; one counts only where a pixmap
// was needed for the picture.
bool CaptureSession::captureOnce(std::uint32_t windowNumber)
{
    plan(windowNumber);
    const bool isRead = paintAndRead();
    takeQueuedEvents();
    return isRead && !hasFailed() && !hasKnownChanged() && !m_server.connection().isBroken();
}

// Whatever happened before the server answered has been told by now: the picture is of
// one moment when the plan would be the same again.
bool CaptureSession::isStillValid(std::uint32_t windowNumber)
{
    if (!m_hasNews)
        return true;
    const auto& model = m_reader.model();
    if (model.isBroken() || m_reader.needsLearning())
        return false;
    lookBelow(windowNumber, m_entries, model, m_below);
    return !isTrueOfAPiece([this](const Piece& piece) { return !isStillValid(piece); });
}

bool CaptureSession::isStillValid(const Piece& piece)
{
    m_stepsNow.clear();
    if (!piece.area.isEmpty())
        m_planner.plan(m_reader.model(), m_below, m_reader.hasCompositor(), piece.area, m_stepsNow);
    return m_stepsNow == piece.steps;
}

// Before the answers, which are recovered from it.
void CaptureSession::learnUpcoming()
{
    for (const auto& piece : upcoming()) {
        if (piece.screen)
            m_truth.learn(piece.area, m_images.pixels(piece.composed), m_images.pixels(*piece.screen));
    }
}

void CaptureSession::answer(std::uint32_t windowNumber, std::span<Captured> answers)
{
    for (std::size_t i = 0; i < m_targetCount; ++i) {
        const auto& target = m_targets[i];
        if (!target.isUsable)
            continue;
        answers[i].rows.reset();
        answers[i].truth = target.piece.covered.isEmpty() ? CaptureTruth::exact : CaptureTruth::recovered;
        if (target.piece.area.isEmpty())
            target.grid.fill(*m_layout, {}, answers[i].image);
        else if (target.piece.isKnown)
            recall(target, answers[i]);
        else if (readsScreen())
            answerFromScreen(windowNumber, target, answers[i]);
        else
            target.grid.fill(*m_layout, m_images.pixels(target.piece.composed), answers[i].image);
    }
}

// Mostly the picture is what is remembered, without a step in between.
void CaptureSession::recall(const Target& target, Captured& answer)
{
    const auto& area = target.piece.area;
    if (target.grid.isWholeArea(*m_layout)) {
        if (answer.mayBeRows) {
            answer.image.resize(0, 0);
            answer.rows = m_truth.recalled(area);
            return;
        }
        answer.image.resize(area.width, area.height);
        m_truth.recall(area, answer.image.pixels());
        return;
    }
    m_recalled.resize(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height));
    m_truth.recall(area, m_recalled);
    target.grid.fill(*m_layout, m_recalled, answer.image);
}

void CaptureSession::answerFromScreen(std::uint32_t windowNumber, const Target& target, Captured& answer)
{
    const auto& piece = target.piece;
    const auto screen = piece.screen ? m_images.pixels(*piece.screen) : std::span<const std::uint32_t>();
    const auto picture = m_truth.merge(windowNumber, piece.area, piece.covered, m_images.pixels(piece.composed), screen);
    target.grid.fill(*m_layout, picture, answer.image);
    m_truth.keep(windowNumber, piece.area);
}

}  // namespace Platform::X11
