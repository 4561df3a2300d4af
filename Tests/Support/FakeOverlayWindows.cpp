#include "Support/FakeOverlayWindows.h"

#include <string>

#include "Support/DrawnImage.h"

namespace TestSupport {

FakeOverlayWindow::FakeOverlayWindow(
    FakeOverlayWindows& windows, std::int64_t windowNumber, const Platform::OverlayStyle& style, Platform::OverlayWindowDelegate& delegate)
    : m_windows(windows), m_windowNumber(windowNumber), m_style(style), m_delegate(delegate), m_frame(style.frame)
{
    m_windows.m_windows.push_back(this);
}

FakeOverlayWindow::~FakeOverlayWindow()
{
    log("close");
    std::erase(m_windows.m_shown, this);
    std::erase(m_windows.m_windows, this);
}

void FakeOverlayWindow::setFrame(const Platform::Rect& frame)
{
    log("setFrame");
    m_frame = frame;
}

void FakeOverlayWindow::present(std::span<const Platform::Picture> pictures)
{
    log("present");
    ++m_presentCount;
    m_pictures.resize(pictures.size());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const auto& picture = pictures[i];
        auto& shown = m_pictures[i];
        shown.rectangle = picture.rectangle;
        shown.colour = picture.colour;
        shown.hasImage = picture.image != nullptr || picture.source != nullptr;
        if (picture.image != nullptr)
            shown.image = *picture.image;
        if (picture.source != nullptr)
            draw(*picture.source, shown.image);
    }
}

void FakeOverlayWindow::makeKeyAndOrderFront()
{
    log("makeKeyAndOrderFront");
    std::erase(m_windows.m_shown, this);
    m_windows.m_shown.push_back(this);
    m_isShown = true;
}

void FakeOverlayWindow::orderOut()
{
    log("orderOut");
    std::erase(m_windows.m_shown, this);
    m_isShown = false;
}

void FakeOverlayWindow::log(std::string_view what)
{
    if (m_windows.m_log.isRecording())
        m_windows.m_log.add("overlay " + std::to_string(m_windowNumber) + " " + std::string(what));
}

bool FakeOverlayWindows::pressKey(const Platform::KeyEvent& event)
{
    if (m_shown.empty())
        return false;
    m_shown.back()->deliverKeyDown(event);
    return true;
}

std::unique_ptr<Platform::OverlayWindow> FakeOverlayWindows::makeOverlayWindow(
    const Platform::OverlayStyle& style, Platform::OverlayWindowDelegate& delegate)
{
    const auto number = m_nextWindowNumber++;
    m_log.add("overlayWindows.make " + std::to_string(number));
    return std::make_unique<FakeOverlayWindow>(*this, number, style, delegate);
}

}  // namespace TestSupport
