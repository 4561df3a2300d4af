// Windows that keep their contents only once overlays cover them, on desktops whose
// programs paint their windows once and never again.
#include <xcb/shape.h>

#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform::X11;

class KeptContents : public CaptureSetting {
protected:
    // The server paints no background into it either.
    xcb_window_t makeWindowPaintedOnce(const Desktop::Style& style)
    {
        const auto window = m_desktop.makeMappedWindow(style);
        const std::uint32_t none = XCB_BACK_PIXMAP_NONE;
        xcb_change_window_attributes(m_desktop.connection(), window, XCB_CW_BACK_PIXMAP, &none);
        for (int i = 0; i < style.inner.height; i += 3)
            m_desktop.fill(window, {i, i, 50, 2}, 0x203040 + 0x010203U * static_cast<unsigned>(i));
        return window;
    }

    CoveredPart coveredBy(xcb_window_t window, const DeviceRect& place)
    {
        auto& c = m_desktop.connection();
        const CoveredPart part{window, place, c.newId()};
        xcb_create_pixmap(
            c, c.screen().root_depth, part.pixmap, c.root(), static_cast<std::uint16_t>(place.width), static_cast<std::uint16_t>(place.height));
        xcb_copy_area(c, c.root(), part.pixmap, c.newScreenGraphics(), static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y), 0, 0,
            static_cast<std::uint16_t>(place.width), static_cast<std::uint16_t>(place.height));
        return part;
    }

    // An overlay of a row and a column of the screen.
    void showCross()
    {
        const auto row = m_desktop.makeWindow({.inner = m_row, .colour = overlayColour});
        const auto column = m_desktop.makeWindow({.inner = m_column, .colour = overlayColour});
        m_covered = {coveredBy(row, m_row), coveredBy(column, m_column)};
        m_desktop.map(row);
        m_desktop.map(column);
        m_desktop.sync();
        m_stack.set({{1, {{row, m_row}, {column, m_column}}, XCB_WINDOW_NONE}});
    }

    // With what is on the screen by now.
    void activateBeforeContents()
    {
        m_desktop.sync();
        m_capture->activateBeforeContents();
    }

    void takeCrossAway()
    {
        capture({0, 0, 1, 1});  // the server has done all that came before
        for (const auto& part : m_covered)
            m_desktop.unmap(part.window);
        m_desktop.sync();
    }

    const DeviceRect m_row{0, 60, 320, 1};
    const DeviceRect m_column{70, 0, 1, 200};
    std::vector<CoveredPart> m_covered;
};

TEST_F(KeptContents, AreCapturedFromTheScreenUntilSomethingIsCovered)
{
    makeWindowPaintedOnce({.inner = {40, 40, 200, 100}, .colour = 0x00ff00});
    const auto before = m_desktop.screenPicture({30, 60, 90, 30});
    activateBeforeContents();
    const auto captured = capture({30, 60, 90, 30});
    EXPECT_EQ(captured.truth, Platform::CaptureTruth::exact);
    EXPECT_EQ(captured.image, before);
}

TEST_F(KeptContents, ArePutBackWhereOverlaysCoveredThem)
{
    makeWindowPaintedOnce({.inner = {0, 20, 120, 120}, .colour = 0x0000ff});
    makeWindowPaintedOnce({.inner = {40, 40, 200, 100}, .border = 5, .borderColour = 0xff0000, .colour = 0x00ff00});
    makeWindowPaintedOnce({.inner = {60, 50, 30, 130}, .colour = 0x80808080, .isArgb = true});
    const auto before = m_desktop.screenPicture();
    const auto row = m_desktop.screenPicture(m_row);
    const auto column = m_desktop.screenPicture(m_column);
    activateBeforeContents();
    showCross();
    m_capture->keepContents(m_covered);
    EXPECT_EQ(capture({0, 60, 320, 1}).image, row);
    EXPECT_EQ(coloursOf(m_desktop.screenPicture(m_row)), (Colours{0xff000000 | overlayColour}));
    EXPECT_EQ(capture({70, 0, 1, 200}).image, column);
    takeCrossAway();
    EXPECT_EQ(m_desktop.screenPicture(), before);
}

// Below the window that showed there.
TEST_F(KeptContents, OfHiddenWindowsAreTheirOwn)
{
    const DeviceRect lower{0, 20, 120, 120};
    m_desktop.makeMappedWindow({.inner = lower, .colour = 0x0000ff});
    const auto upper = makeWindowPaintedOnce({.inner = {40, 40, 200, 100}, .colour = 0x00ff00});
    activateBeforeContents();
    showCross();
    m_capture->keepContents(m_covered);
    takeCrossAway();
    m_desktop.unmap(upper);
    m_desktop.sync();
    EXPECT_EQ(coloursOf(m_desktop.screenPicture(lower)), (Colours{0xff0000ff}));
}

TEST_F(KeptContents, OfWindowsAboveAreTheirOwn)
{
    const DeviceRect frame{0, 20, 120, 120};
    const auto window = m_desktop.makeMappedWindow({.inner = frame, .colour = 0x0000ff});
    makeWindowPaintedOnce({.inner = {40, 40, 200, 100}, .colour = 0x00ff00});
    activateBeforeContents();
    showCross();
    m_desktop.restack(window, XCB_STACK_MODE_ABOVE);
    m_desktop.sync();
    m_capture->keepContents(m_covered);
    capture({0, 0, 1, 1});
    EXPECT_EQ(coloursOf(m_desktop.screenPicture(frame)), (Colours{0xff0000ff}));
}

// What lies beneath our windows then is not what was seen there before.
TEST_F(KeptContents, AreNotPutBackIntoAWindowThatHasMoved)
{
    const auto window = m_desktop.makeMappedWindow({.inner = {40, 40, 100, 100}, .colour = 0x00ff00});
    activateBeforeContents();
    showCross();
    m_desktop.move(window, 140, 40);
    m_desktop.sync();
    m_capture->keepContents(m_covered);
    takeCrossAway();
    EXPECT_EQ(coloursOf(m_desktop.screenPicture({140, 40, 100, 100})), (Colours{0xff00ff00}));
}

TEST_F(KeptContents, OffTheScreenAreTheWindowsOwn)
{
    const auto window = m_desktop.makeMappedWindow({.inner = {-60, 40, 100, 100}, .colour = 0x00ff00});
    activateBeforeContents();
    const DeviceRect place{-50, 50, 60, 60};
    const auto overlay = m_desktop.makeWindow({.inner = place, .colour = overlayColour});
    const auto covered = coveredBy(overlay, place);
    m_desktop.map(overlay);
    m_desktop.sync();
    m_capture->keepContents({&covered, 1});
    capture({0, 0, 1, 1});
    m_desktop.unmap(overlay);
    m_desktop.move(window, 40, 40);
    m_desktop.sync();
    EXPECT_EQ(coloursOf(m_desktop.screenPicture({40, 40, 100, 100})), (Colours{0xff00ff00}));
}

// They have contents of their own then, which the screen may show blended.
TEST_F(KeptContents, AreNotPutBackWhereACompositorKeepsThem)
{
    const DeviceRect frame{0, 0, 320, 200};
    const auto window = m_desktop.makeMappedWindow({.inner = frame, .colour = 0x0000ff});
    m_desktop.fill(window, frame, 0xffffff);
    activateBeforeContents();
    showCross();
    auto& c = m_desktop.connection();
    xcb_set_selection_owner(c, window, c.compositorSelection(), XCB_CURRENT_TIME);
    m_desktop.sync();
    m_capture->keepContents(m_covered);
    takeCrossAway();
    EXPECT_EQ(coloursOf(m_desktop.screenPicture(m_row)), (Colours{0xff0000ff}));
}

// Beside the pixels of an overlay with an outline other programs go on painting.
TEST_F(KeptContents, ArePutBackNowhereElse)
{
    const auto window = makeWindowPaintedOnce({.inner = {0, 0, 320, 200}, .colour = 0x0000ff});
    activateBeforeContents();
    const DeviceRect place{20, 20, 100, 100};
    const auto overlay = m_desktop.makeWindow({.inner = place, .colour = overlayColour});
    const DeviceRect middle{30, 30, 40, 40};
    m_desktop.setShape(overlay, {&middle, 1});
    const auto covered = coveredBy(overlay, place);
    m_desktop.map(overlay);
    m_desktop.fill(window, {20, 20, 10, 10}, 0xffffff);
    m_desktop.sync();
    m_capture->keepContents({&covered, 1});
    capture({0, 0, 1, 1});  // the server has done all of it then
    EXPECT_EQ(m_desktop.screenPicture({20, 20, 1, 1}).pixel(0, 0), 0xffffffffU);
    m_desktop.move(overlay, 200, 90);
    m_desktop.sync();
    EXPECT_EQ(m_desktop.screenPicture({20, 20, 1, 1}).pixel(0, 0), 0xffffffffU);
    EXPECT_EQ(m_desktop.screenPicture({115, 80, 1, 1}).pixel(0, 0), 0xff0000ffU);
}

TEST_F(KeptContents, LeaveNothingInTheServerOfWhatWasCovered)
{
    activateBeforeContents();
    showCross();
    m_capture->keepContents(m_covered);
    capture({0, 0, 1, 1});
    auto& c = m_desktop.connection();
    for (const auto& part : m_covered)
        EXPECT_EQ(adopt(xcb_get_geometry_reply(c, xcb_get_geometry(c, part.pixmap), nullptr)), nullptr);
}

TEST_F(KeptContents, OfBeforeAreLeftAsTheyAre)
{
    const auto window = makeWindowPaintedOnce({.inner = {0, 0, 320, 200}, .colour = 0x0000ff});
    m_capture->activate();
    showCross();
    m_desktop.fill(window, {0, 0, 320, 200}, 0xffffff);
    m_desktop.sync();
    m_capture->keepContents(m_covered);
    EXPECT_EQ(coloursOf(capture({0, 0, 320, 200})), (Colours{0xffffffff}));
    m_capture->deactivate();
    m_capture->keepContents({});
    EXPECT_EQ(capture({0, 0, 1, 1}).truth, Platform::CaptureTruth::exact);
}

}  // namespace
}  // namespace CaptureTests
