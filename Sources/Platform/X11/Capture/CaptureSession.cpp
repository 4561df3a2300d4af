#include "Platform/X11/Capture/CaptureSession.h"

#include <algorithm>

namespace Platform::X11 {
namespace {

// A screen that changes while it is captured is captured again so often; this bounds
// the time that another client's storm of windows can take from a capture.
constexpr int mostAttempts = 3;
constexpr int mostLearningRounds = 2;
constexpr int mostEventsAtOnce = 50000;

}  // namespace

CaptureSession::CaptureSession(CaptureServer& server, const SharedMonitorLayout& layouts, const OverlayStack& stack)
    : m_server(server), m_layouts(layouts), m_stack(stack), m_reader(server), m_painter(server), m_images(server)
{
}

void CaptureSession::capture(std::uint32_t windowNumber, CaptureResolution resolution, std::span<const Rect> rectangles, std::span<Captured> answers)
{
    m_layout = m_layouts.get();
    bool isCaptured = false;
    for (int attempt = 0; attempt < mostAttempts && !isCaptured; ++attempt) {
        catchUp();
        m_stack.copyTo(m_entries);
        m_truth.update(m_entries, m_reader.compositorChanges(), std::chrono::steady_clock::now());
        layTargets(resolution, rectangles);
        isCaptured = captureOnce(windowNumber);
        if (isCaptured && attempt + 1 < mostAttempts)
            isCaptured = isStillValid(windowNumber);
    }
    if (isCaptured)
        answer(windowNumber, answers);
}

void CaptureSession::layTargets(CaptureResolution resolution, std::span<const Rect> rectangles)
{
    m_targetCount = rectangles.size();
    if (m_targets.size() < m_targetCount)
        m_targets.resize(m_targetCount);
    for (std::size_t i = 0; i < m_targetCount; ++i) {
        auto& target = m_targets[i];
        target.isUsable = target.grid.lay(*m_layout, m_reader.model().root(), rectangles[i], resolution);
        target.isPainted = target.isUsable && !target.grid.area().isEmpty();
    }
}

void CaptureSession::takeEvent(const xcb_generic_event_t& event)
{
    if (event.response_type == 0)
        m_painter.failed(reinterpret_cast<const xcb_generic_error_t&>(event));
    else
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
    for (int i = 0; i < mostEventsAtOnce; ++i) {
        const auto event = Event(xcb_poll_for_event(m_server.connection()));
        if (!event)
            break;
        takeEvent(*event);
    }
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
    for (auto& target : std::span(m_targets).first(m_targetCount)) {
        target.steps.clear();
        target.covered.clear();
        if (!target.isPainted)
            continue;
        m_planner.plan(m_reader.model(), m_below, m_reader.hasCompositor(), target.grid.area(), target.steps);
        if (readsScreen())
            m_truth.findCovered(target.grid.area(), m_reader.model(), m_below, target.covered);
    }
}

bool CaptureSession::paintAndRead()
{
    m_painter.begin();
    m_images.begin();
    for (auto& target : std::span(m_targets).first(m_targetCount)) {
        target.screen.reset();
        if (!target.isPainted)
            continue;
        const auto& area = target.grid.area();
        if (readsScreen() && !target.covered.encloses(area))
            target.screen = m_images.add(m_server.connection().root(), area);
        const auto canvas = m_painter.paint(target.steps, area, m_reader.root());
        target.composed = m_images.add(canvas, {0, 0, area.width, area.height});
    }
    return m_images.read();
}

bool CaptureSession::hasFailed() const
{
    const auto targets = std::span(m_targets).first(m_targetCount);
    return std::any_of(targets.begin(), targets.end(), [this](const Target& target) { return m_painter.hasFailed(target.steps); });
}

// Errors about windows that went meanwhile are everyday; one counts only where a pixmap
// was needed for the picture.
bool CaptureSession::captureOnce(std::uint32_t windowNumber)
{
    plan(windowNumber);
    const bool isRead = paintAndRead();
    takeQueuedEvents();
    return isRead && !hasFailed() && !m_server.connection().isBroken();
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
    for (const auto& target : std::span(m_targets).first(m_targetCount)) {
        m_stepsNow.clear();
        if (target.isPainted)
            m_planner.plan(model, m_below, m_reader.hasCompositor(), target.grid.area(), m_stepsNow);
        if (m_stepsNow != target.steps)
            return false;
    }
    return true;
}

void CaptureSession::answer(std::uint32_t windowNumber, std::span<Captured> answers)
{
    for (std::size_t i = 0; i < m_targetCount; ++i) {
        const auto& target = m_targets[i];
        if (!target.isUsable)
            continue;
        answers[i].truth = target.covered.isEmpty() ? CaptureTruth::exact : CaptureTruth::recovered;
        if (!target.isPainted)
            target.grid.fill(*m_layout, {}, answers[i].image);
        else if (readsScreen())
            answerFromScreen(windowNumber, target, answers[i]);
        else
            target.grid.fill(*m_layout, m_images.pixels(target.composed), answers[i].image);
    }
}

void CaptureSession::answerFromScreen(std::uint32_t windowNumber, const Target& target, Captured& answer)
{
    const auto screen = target.screen ? m_images.pixels(*target.screen) : std::span<const std::uint32_t>();
    const auto picture = m_truth.merge(windowNumber, target.grid.area(), target.covered, m_images.pixels(target.composed), screen);
    target.grid.fill(*m_layout, picture, answer.image);
}

}  // namespace Platform::X11
