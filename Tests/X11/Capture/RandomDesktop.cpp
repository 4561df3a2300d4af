#include "X11/Capture/RandomDesktop.h"

#include <algorithm>
#include <array>

namespace CaptureTests {
namespace {

constexpr std::size_t mostWindows = 14;
constexpr int squareSide = 41;

}  // namespace

RandomDesktop::RandomDesktop(Desktop& desktop, Platform::X11::OverlayStack& stack, bool hasCompositor, std::uint32_t seed)
    : m_desktop(desktop), m_stack(stack), m_model(desktop.screen()), m_generator(seed)
{
    m_model.blends = hasCompositor;
    setRoot();
    for (int i = 0; i < 8; ++i)
        make();
    const auto screen = m_desktop.screen();
    const std::array<DeviceRect, 3> frames = {{{0, 0, screen.width, 1}, {0, 0, 1, screen.height}, {0, 0, squareSide, squareSide}}};
    for (std::size_t i = 0; i < frames.size(); ++i) {
        ModelWindow overlay;
        overlay.inner = frames[i];
        overlay.tile.pixels()[0] = 0xf01000 + static_cast<std::uint32_t>(i);
        overlay.id = m_desktop.makeMappedWindow({.inner = frames[i], .colour = overlay.tile.pixels()[0]});
        overlay.isMapped = true;
        m_overlays.push_back(overlay.id);
        m_model.windows.push_back(overlay);
    }
    const auto catcher = m_desktop.makeInputOnlyWindow(screen);
    m_stack.set({{crosshair, {{m_overlays[0], frames[0]}, {m_overlays[1], frames[1]}}, catcher}, {square, {{m_overlays[2], frames[2]}}, 0}});
    moveOverlays();
}

void RandomDesktop::change()
{
    m_settled.clear();
    for (const auto& window : m_model.windows) {
        if (window.isMapped)
            m_settled.insert(window.id);
    }
    for (int count = random(1, 4); count > 0; --count)
        changeOnce();
}

void RandomDesktop::changeOnce()
{
    using Change = void (RandomDesktop::*)();
    static constexpr Change changes[] = {&RandomDesktop::make, &RandomDesktop::make, &RandomDesktop::destroy, &RandomDesktop::move,
        &RandomDesktop::move, &RandomDesktop::resize, &RandomDesktop::setBorder, &RandomDesktop::toggleMapped, &RandomDesktop::toggleMapped,
        &RandomDesktop::restack, &RandomDesktop::restack, &RandomDesktop::reshape, &RandomDesktop::reshape, &RandomDesktop::setOpacity,
        &RandomDesktop::repaint, &RandomDesktop::repaint, &RandomDesktop::reparent, &RandomDesktop::raiseOverlays};
    if (random(0, 30) == 0)
        setRoot();
    else
        (this->*changes[random(0, std::size(changes) - 1)])();
}

void RandomDesktop::note(const char* what, xcb_window_t window)
{
    if (m_history.size() > 1500)
        m_history.erase(0, 500);
    m_history += std::string(what) + " " + std::to_string(window & 0xffff) + "; ";
}

// Half of the ARGB colours are half transparent.
std::uint32_t RandomDesktop::randomColour(bool isArgb)
{
    const int alpha = isArgb && random(0, 1) == 0 ? random(0, 255) : 255;
    std::uint32_t colour = isArgb ? static_cast<std::uint32_t>(alpha) << 24 : 0;
    for (const int shift : {16, 8, 0})
        colour |= static_cast<std::uint32_t>(random(0, alpha)) << shift;
    return colour;
}

Image RandomDesktop::randomTile(bool isArgb)
{
    Image tile(random(1, 13), random(1, 13));
    for (auto& pixel : tile.pixels())
        pixel = randomColour(isArgb);
    return tile;
}

DeviceRect RandomDesktop::randomFrame()
{
    const auto screen = m_desktop.screen();
    return {random(-80, screen.width - 10), random(-60, screen.height - 10), random(1, screen.width / 2), random(1, screen.height / 2)};
}

// Compositors do not paint a window of which the border alone reaches the screen from the
// left or from above. True when such a window was put elsewhere.
bool RandomDesktop::keepOutOfDoubt(ModelWindow& window) const
{
    auto& r = window.inner;
    const bool isInDoubt = m_model.blends && window.border > 0 && (r.x + r.width < 1 || r.y + r.height < 1);
    if (isInDoubt) {
        r.x = std::max(r.x, 0);
        r.y = std::max(r.y, 0);
    }
    return isInDoubt;
}

// A foreign one; makes one when there is none.
ModelWindow& RandomDesktop::randomWindow()
{
    if (m_model.windows.size() <= m_overlays.size())
        make();
    while (true) {
        auto& window = m_model.windows[static_cast<std::size_t>(random(0, static_cast<int>(m_model.windows.size()) - 1))];
        if (std::find(m_overlays.begin(), m_overlays.end(), window.id) == m_overlays.end())
            return window;
    }
}

void RandomDesktop::make()
{
    if (m_model.windows.size() >= mostWindows + m_overlays.size())
        return;
    ModelWindow window;
    window.inner = randomFrame();
    window.border = random(0, 2) == 0 ? random(1, 7) : 0;
    keepOutOfDoubt(window);
    window.isArgb = random(0, 2) == 0;
    window.borderColour = randomColour(window.isArgb);
    window.tile = randomTile(window.isArgb);
    window.isMapped = random(0, 4) != 0;
    window.id = m_desktop.makeWindow({window.inner, window.border, window.borderColour, 0, window.isArgb, random(0, 1) == 0});
    m_desktop.setPatternBackground(window.id, window.tile, window.isArgb);
    if (window.isMapped)
        m_desktop.map(window.id);
    note("make", window.id);
    m_model.windows.push_back(std::move(window));
}

void RandomDesktop::destroy()
{
    const auto window = randomWindow().id;
    m_desktop.destroy(window);
    m_model.windows.erase(m_model.windows.begin() + static_cast<std::ptrdiff_t>(m_model.indexOf(window)));
    note("destroy", window);
}

void RandomDesktop::move()
{
    auto& window = randomWindow();
    const auto frame = randomFrame();
    window.inner.x = frame.x;
    window.inner.y = frame.y;
    keepOutOfDoubt(window);
    m_desktop.move(window.id, window.inner.x, window.inner.y);
    note("move", window.id);
}

// The server repaints all of it, so that its contents start at the corner again.
void RandomDesktop::resize()
{
    auto& window = randomWindow();
    const auto frame = randomFrame();
    window.inner.width = frame.width;
    window.inner.height = frame.height;
    if (keepOutOfDoubt(window))
        m_desktop.move(window.id, window.inner.x, window.inner.y);
    m_desktop.resize(window.id, frame.width, frame.height);
    note("resize", window.id);
}

// Compositors go on with the old border.
void RandomDesktop::setBorder()
{
    if (m_model.blends)
        return;
    auto& window = randomWindow();
    window.border = random(0, 9);
    m_desktop.setBorder(window.id, window.border);
    note("border", window.id);
}

void RandomDesktop::toggleMapped()
{
    auto& window = randomWindow();
    window.isMapped = !window.isMapped;
    m_settled.erase(window.id);
    if (window.isMapped)
        m_desktop.map(window.id);
    else
        m_desktop.unmap(window.id);
    note(window.isMapped ? "map" : "unmap", window.id);
}

void RandomDesktop::restack()
{
    const auto window = randomWindow().id;
    const auto sibling = m_model.windows[static_cast<std::size_t>(random(0, static_cast<int>(m_model.windows.size()) - 1))].id;
    const bool isAbove = random(0, 1) == 0;
    note(isAbove ? "above" : "below", window);
    if (sibling != window) {
        m_desktop.restack(window, isAbove ? XCB_STACK_MODE_ABOVE : XCB_STACK_MODE_BELOW, sibling);
        isAbove ? m_model.placeAbove(window, sibling) : m_model.placeBelow(window, sibling);
    } else {
        m_desktop.restack(window, isAbove ? XCB_STACK_MODE_ABOVE : XCB_STACK_MODE_BELOW);
        isAbove ? m_model.raise(window) : m_model.lower(window);
    }
}

// Compositors do not see that an unmapped or just mapped window changes its shape.
void RandomDesktop::reshape()
{
    auto& window = randomWindow();
    if (m_model.blends && m_settled.count(window.id) == 0)
        return;
    note("shape", window.id);
    if (random(0, 2) == 0) {
        window.shape.reset();
        m_desktop.clearShape(window.id);
        return;
    }
    std::vector<DeviceRect> shape;
    for (int count = random(0, 5); count > 0; --count)
        shape.push_back({random(-10, window.inner.width), random(-10, window.inner.height), random(1, 80), random(1, 60)});
    m_desktop.setShape(window.id, shape);
    window.shape = shape;
}

void RandomDesktop::setOpacity()
{
    auto& window = randomWindow();
    window.opacity = random(0, 2) == 0 ? 0xffffffff : static_cast<std::uint32_t>(random(0, 255)) * 0x01010101U;
    m_desktop.setOpacity(window.id, window.opacity);
    note("opacity", window.id);
}

void RandomDesktop::repaint()
{
    auto& window = randomWindow();
    window.tile = randomTile(window.isArgb);
    m_desktop.setPatternBackground(window.id, window.tile, window.isArgb);
    note("repaint", window.id);
}

// To the same parent: it leaves the stack and comes back on top. Compositors are not
// ready for that.
void RandomDesktop::reparent()
{
    if (m_model.blends)
        return;
    const auto window = randomWindow().id;
    const auto frame = randomFrame();
    m_desktop.reparentToRoot(window, frame.x, frame.y);
    m_model.raise(window);
    m_model.find(window).inner.x = frame.x;
    m_model.find(window).inner.y = frame.y;
    note("reparent", window);
}

void RandomDesktop::setRoot()
{
    m_model.rootTile = randomTile(false);
    m_desktop.setRootTile(m_model.rootTile);
    note("root", 0);
}

void RandomDesktop::moveOverlays()
{
    const auto screen = m_desktop.screen();
    m_pointer = {random(0, screen.width - 1), random(0, screen.height - 1)};
    showOverlay(0, {0, m_pointer.y, screen.width, 1});
    showOverlay(1, {m_pointer.x, 0, 1, screen.height});
    showOverlay(2, {m_pointer.x - squareSide / 2, m_pointer.y - squareSide / 2, squareSide, squareSide});
    note("pointer", static_cast<xcb_window_t>(m_pointer.x * 1000 + m_pointer.y));
}

void RandomDesktop::showOverlay(std::size_t index, const DeviceRect& frame)
{
    m_desktop.move(m_overlays[index], frame.x, frame.y);
    m_model.find(m_overlays[index]).inner = frame;
    m_stack.movePicture(m_overlays[index], frame);
}

void RandomDesktop::raiseOverlays()
{
    for (const auto overlay : m_overlays) {
        m_desktop.restack(overlay, XCB_STACK_MODE_ABOVE);
        m_model.raise(overlay);
    }
    note("raise", 0);
}

void RandomDesktop::setOverlaysMapped(bool isMapped)
{
    for (const auto overlay : m_overlays)
        isMapped ? m_desktop.map(overlay) : m_desktop.unmap(overlay);
}

bool RandomDesktop::overlaysAreOnTop() const
{
    const auto& windows = m_model.windows;
    return std::equal(m_overlays.rbegin(), m_overlays.rend(), windows.rbegin(),
        [](xcb_window_t overlay, const ModelWindow& window) { return overlay == window.id; });
}

Image RandomDesktop::expected(std::uint32_t windowNumber, const DeviceRect& area) const
{
    if (windowNumber == square)
        return m_model.picture(area, m_model.indexOf(m_overlays[2]), {m_overlays[2]});
    const auto top = std::min(m_model.indexOf(m_overlays[0]), m_model.indexOf(m_overlays[1]));
    return m_model.picture(area, top, {m_overlays.begin(), m_overlays.end()});
}

}  // namespace CaptureTests
