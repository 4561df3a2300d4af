#include "Platform/X11/Capture/X11ScreenCapture.h"

#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/Capture/CaptureSession.h"

namespace Platform::X11 {

std::unique_ptr<X11ScreenCapture> X11ScreenCapture::open(
    const std::string& displayName, const SharedMonitorLayout& layouts, const OverlayStack& stack, CanvasMemory memory)
{
    auto server = CaptureServer::open(displayName, memory);
    if (!server)
        return nullptr;
    return std::unique_ptr<X11ScreenCapture>(new X11ScreenCapture(std::move(server), layouts, stack));
}

X11ScreenCapture::X11ScreenCapture(std::unique_ptr<CaptureServer> server, const SharedMonitorLayout& layouts, const OverlayStack& stack)
    : m_server(std::move(server)), m_layouts(layouts), m_stack(stack)
{
}

X11ScreenCapture::~X11ScreenCapture() = default;

void X11ScreenCapture::windowsBelow(
    std::uint32_t windowNumber, CaptureResolution resolution, std::span<const Rect> rectangles, std::span<Captured> answers)
{
    const std::lock_guard lock(m_mutex);
    for (auto& answer : answers)
        answer.truth = CaptureTruth::none;
    const bool wasActive = m_session != nullptr;
    activateLocked(WindowContents::kept);
    if (m_session)
        m_session->capture(windowNumber, resolution, rectangles, answers);
    if (!wasActive)
        m_session.reset();
    for (auto& answer : answers) {
        if (answer.truth == CaptureTruth::none) {
            answer.image.resize(0, 0);
            answer.rows.reset();
        }
    }
}

void X11ScreenCapture::activate()
{
    const std::lock_guard lock(m_mutex);
    activateLocked(WindowContents::kept);
}

void X11ScreenCapture::activateBeforeContents()
{
    const std::lock_guard lock(m_mutex);
    activateLocked(WindowContents::keptLater);
}

void X11ScreenCapture::activateLocked(WindowContents contents)
{
    if (!m_session && m_server->canCapture() && !m_server->connection().isBroken())
        m_session = std::make_unique<CaptureSession>(*m_server, m_layouts, m_stack, contents);
}

void X11ScreenCapture::keepContents(std::span<const CoveredPart> covered)
{
    const std::lock_guard lock(m_mutex);
    if (m_session)
        m_session->keepContents(covered);
    for (const auto& part : covered)
        xcb_free_pixmap(m_server->connection(), part.pixmap);
    m_server->connection().flush();
}

void X11ScreenCapture::deactivate()
{
    const std::lock_guard lock(m_mutex);
    m_session.reset();
}

std::uint64_t X11ScreenCapture::roundTrips() const
{
    const std::lock_guard lock(m_mutex);
    return m_server->roundTrips();
}

}  // namespace Platform::X11
