// An outlined overlay covers what is captured for it, and more than that.
#include <sstream>

#include "Support/ImageOfRows.h"
#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;

constexpr int side = 60;
constexpr int sampleSide = 10;
constexpr int toMiddle = sampleSide / 2;

// With the answer as an image, or as rows where that is possible.
class OutlinedOverlayCapture : public CaptureSetting, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override
    {
        CaptureSetting::SetUp();
        m_compositor = m_server.start({"picom", "--backend", "xrender", "--config", "/dev/null", "--shadow"});
        ASSERT_TRUE(TestSupport::waitUntil([this] { return m_desktop.connection().hasCompositor(); }));
        m_desktop.setRootTile(tileOf(0xffffff));
        m_foreign = m_desktop.makeMappedWindow({.inner = {60, 20, 100, 80}, .colour = 0x00ff00, .isOverrideRedirect = false});
        ASSERT_TRUE(TestSupport::waitUntil([this] { return coloursOf(m_desktop.screenPicture({0, 105, 320, 1})).size() > 5; }));
        m_before = m_desktop.screenPicture();
        m_capture->activate();
    }

    Image answerAt(int x, int y)
    {
        m_desktop.sync();
        m_answer.mayBeRows = GetParam();
        const Rect rect{double(x - toMiddle), double(y - toMiddle), sampleSide, sampleSide};
        m_capture->windowsBelow(1, CaptureResolution::best, {&rect, 1}, {&m_answer, 1});
        if (m_answer.rows == nullptr)
            return m_answer.image;
        EXPECT_TRUE(GetParam());
        EXPECT_TRUE(m_answer.image.isEmpty());
        ++m_answersInRows;
        return TestSupport::imageOf(*m_answer.rows);
    }

    // As an overlay window is placed, captured for and moved, in this order.
    Image captureAt(int x, int y)
    {
        const DeviceRect frame = {x - side / 2, y - side / 2, side, side};
        const bool isNew = m_entries.empty();
        if (isNew)
            m_entries.push_back({.windowNumber = 1, .isOutlined = true});
        auto& entry = m_entries.back();
        entry.upcoming = frame;
        m_stack.set(m_entries);
        auto answer = answerAt(x, y);
        if (isNew) {
            m_window = m_desktop.makeMappedWindow({.inner = frame, .colour = overlayColour});
            entry.pictures = {{m_window, frame}};
        }
        m_desktop.move(m_window, frame.x, frame.y);
        entry.pictures[0].frame = frame;
        m_stack.set(m_entries);
        m_desktop.sync();
        EXPECT_TRUE(TestSupport::waitUntil([&] { return m_desktop.screenPicture({x, y, 1, 1}).pixel(0, 0) == (0xff000000 | overlayColour); }));
        return answer;
    }

    // How many pixels of an answer are not as the screen was before, and the first of them.
    std::string wrongAt(int x, int y)
    {
        const auto image = captureAt(x, y);
        const auto expected = beforeAt(x, y);
        int count = 0;
        std::ostringstream first;
        for (int row = 0; row < sampleSide; ++row) {
            for (int column = 0; column < sampleSide; ++column) {
                const auto is = image.pixel(column, row);
                const auto mustBe = expected.pixel(column, row);
                if (is != mustBe && count++ == 0)
                    first << " (" << column << ", " << row << ") is " << std::hex << is << ", not " << mustBe;
            }
        }
        return count == 0 ? "" : std::to_string(count) + first.str();
    }

    Image beforeAt(int x, int y) const
    {
        Image part(sampleSide, sampleSide);
        auto pixel = part.pixels().begin();
        for (int row = 0; row < sampleSide; ++row) {
            for (int column = 0; column < sampleSide; ++column)
                *pixel++ = m_before.pixel(x - toMiddle + column, y - toMiddle + row);
        }
        return part;
    }

    // Until it asks for nothing any more.
    void settleAt(int x, int y)
    {
        EXPECT_TRUE(TestSupport::waitUntil([&] {
            const auto before = m_capture->roundTrips();
            captureAt(x, y);
            return m_capture->roundTrips() == before;
        }));
    }

    // At once: the next capture shows that part of the screen in one colour.
    bool shows(int x, int y, const DeviceRect& part, std::uint32_t colour)
    {
        const auto image = captureAt(x, y);
        for (int row = part.y; row < part.bottom(); ++row) {
            for (int column = part.x; column < part.right(); ++column) {
                if (image.pixel(column - (x - toMiddle), row - (y - toMiddle)) != (0xff000000 | colour))
                    return false;
            }
        }
        return true;
    }

    TestSupport::Process m_compositor;
    xcb_window_t m_foreign = XCB_WINDOW_NONE;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    Image m_before;
    Captured m_answer;
    int m_answersInRows = 0;
};

INSTANTIATE_TEST_SUITE_P(
    Answers, OutlinedOverlayCapture, testing::Bool(), [](const auto& setting) { return std::string(setting.param ? "InRows" : "InAnImage"); });

TEST_P(OutlinedOverlayCapture, KnowsTheShadowsThatItCoveredBeforeTheyCameIntoTheMiddle)
{
    for (int step = 0; step < 12; ++step)
        EXPECT_EQ(wrongAt(110, 60 + step * 5), "") << step;
    for (int step = 0; step < 30; ++step)
        EXPECT_EQ(wrongAt(110 - step * 3, 105), "") << step;
}

TEST_P(OutlinedOverlayCapture, KnowsThemWhenItGoesToAndFro)
{
    for (int step = 0; step < 12; ++step) {
        const int y = step % 2 == 0 ? 70 : 104;
        EXPECT_EQ(wrongAt(110, y), "") << step;
    }
}

TEST_P(OutlinedOverlayCapture, SeesWhatChangesBeneathIt)
{
    captureAt(110, 98);
    const std::uint32_t blue = 0x0000ff;
    xcb_change_window_attributes(m_desktop.connection(), m_foreign, XCB_CW_BACK_PIXEL, &blue);
    xcb_clear_area(m_desktop.connection(), 0, m_foreign, 0, 0, 0, 0);
    m_desktop.sync();
    const auto image = captureAt(110, 98);
    EXPECT_EQ(image.pixel(0, 0), 0xff0000ff);
    EXPECT_EQ(image.pixel(9, 6), 0xff0000ff);
    // Below the window's edge its shadow has stayed.
    EXPECT_EQ(image.pixel(5, 8), m_before.pixel(110, 101));
    EXPECT_NE(image.pixel(5, 8), 0xffffffff);
}

TEST_P(OutlinedOverlayCapture, MakesOneRoundTripWhereThereIsSomethingNew)
{
    settleAt(112, 62);
    const auto before = m_capture->roundTrips();
    captureAt(114, 66);
    EXPECT_EQ(m_capture->roundTrips() - before, 1U);
    captureAt(114, 66);
    EXPECT_EQ(m_capture->roundTrips() - before, 1U);
}

TEST_P(OutlinedOverlayCapture, AsksForNothingWhileItStandsAndNothingChanges)
{
    settleAt(110, 98);
    const auto before = m_capture->roundTrips();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(wrongAt(110, 98), "");
    EXPECT_EQ(m_capture->roundTrips(), before);
    EXPECT_EQ(m_answersInRows > 0, GetParam());
}

TEST_P(OutlinedOverlayCapture, SeesAWindowThatIsPaintedPartByPart)
{
    settleAt(110, 60);
    for (int i = 1; i <= 12; ++i) {
        const auto colour = static_cast<std::uint32_t>(i);
        const DeviceRect part = {105 + i % 4, 56, 4, 4};
        m_desktop.fill(m_foreign, {part.x - 60, part.y - 20, part.width, part.height}, colour);
        EXPECT_TRUE(shows(110, 60, part, colour)) << i;
    }
}

TEST_P(OutlinedOverlayCapture, SeesAChildOfAWindowChange)
{
    auto& c = m_desktop.connection();
    const auto child = c.newId();
    const std::uint32_t red = 0xff0000;
    xcb_create_window(
        c, XCB_COPY_FROM_PARENT, child, m_foreign, 40, 30, 30, 30, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &red);
    settleAt(110, 60);
    xcb_map_window(c, child);
    EXPECT_TRUE(shows(110, 60, {105, 55, 10, 10}, red));
    settleAt(110, 60);
    m_desktop.fill(child, {0, 0, 30, 30}, 0x123456);
    EXPECT_TRUE(shows(110, 60, {105, 55, 10, 10}, 0x123456));
}

TEST_P(OutlinedOverlayCapture, SeesWindowsComeMoveAndGoBeneathIt)
{
    settleAt(110, 60);
    const auto other = m_desktop.makeMappedWindow({.inner = {100, 50, 30, 30}, .colour = 0x0000ff});
    m_desktop.restack(m_window, XCB_STACK_MODE_ABOVE);
    EXPECT_TRUE(shows(110, 60, {105, 55, 10, 10}, 0x0000ff));
    settleAt(110, 60);
    m_desktop.move(other, 110, 50);
    EXPECT_TRUE(shows(110, 60, {105, 55, 5, 10}, 0x00ff00));
    EXPECT_TRUE(shows(110, 60, {110, 55, 5, 10}, 0x0000ff));
    settleAt(110, 60);
    m_desktop.unmap(other);
    EXPECT_TRUE(shows(110, 60, {105, 55, 10, 10}, 0x00ff00));
}

TEST_P(OutlinedOverlayCapture, SeesAWindowBecomeTransparent)
{
    settleAt(110, 60);
    m_desktop.setOpacity(m_foreign, 0x80000000);
    EXPECT_TRUE(shows(110, 60, {105, 55, 10, 10}, 0x80ff80));
}

TEST_P(OutlinedOverlayCapture, SeesTheWallpaperChange)
{
    settleAt(250, 150);
    m_desktop.setRootTile(tileOf(0xabcdef));
    EXPECT_TRUE(shows(250, 150, {245, 145, 10, 10}, 0xabcdef));
}

TEST_P(OutlinedOverlayCapture, SeesAnotherOverlayComeAndGoBeneathIt)
{
    constexpr std::uint32_t lineColour = 0x445566;
    const DeviceRect line = {190, 0, 1, 200};
    settleAt(110, 60);
    const auto other = m_desktop.makeMappedWindow({.inner = line, .colour = lineColour});
    m_desktop.restack(m_window, XCB_STACK_MODE_ABOVE);
    m_entries.insert(m_entries.begin(), {.windowNumber = 2, .pictures = {{other, line}}});
    EXPECT_TRUE(TestSupport::waitUntil([&] { return m_desktop.screenPicture({190, 150, 1, 1}).pixel(0, 0) == (0xff000000 | lineColour); }));
    for (int x = 110; x < 190; x += 5)
        captureAt(x, 60);
    EXPECT_TRUE(shows(190, 60, {190, 55, 1, 10}, lineColour));
    captureAt(170, 60);
    m_desktop.unmap(other);
    m_entries.erase(m_entries.begin());
    EXPECT_EQ(captureAt(190, 60).pixel(toMiddle, toMiddle), m_before.pixel(190, 60));
    EXPECT_EQ(captureAt(190, 60).pixel(toMiddle, toMiddle), m_before.pixel(190, 60));
}

// Of what it covers nothing is read: the news alone tell it.
TEST_P(OutlinedOverlayCapture, SeesWhatChangesWhileItReadsSomethingElse)
{
    settleAt(110, 60);
    m_entries.back().upcoming.x += 4;
    m_stack.set(m_entries);
    const auto captureOnTheWay = [this] {
        const Rect rect = {110 - toMiddle, 60 - toMiddle, sampleSide, sampleSide};
        std::array<Captured, 1> answers;
        m_capture->windowsBelow(1, CaptureResolution::nominal, {&rect, 1}, answers);
        return std::move(answers[0]);
    };
    const auto captured = captureDuring(captureOnTheWay, [this] { m_desktop.fill(m_foreign, {0, 0, 100, 80}, 0x0000ff); });
    EXPECT_EQ(coloursOf(captured), (Colours{0xff0000ff}));
}

// What changed while it was not below the overlay is seen when it is.
TEST_P(OutlinedOverlayCapture, SeesWhatChangedBesideItWhenItMovesThere)
{
    settleAt(80, 60);
    m_desktop.fill(m_foreign, {0, 0, 100, 80}, 0x0000ff);
    EXPECT_TRUE(TestSupport::waitUntil([this] { return m_desktop.screenPicture({150, 60, 1, 1}).pixel(0, 0) == 0xff0000ff; }));
    for (int x = 80; x < 140; x += 4)
        captureAt(x, 60);
    EXPECT_TRUE(shows(140, 60, {135, 55, 10, 10}, 0x0000ff));
}

}  // namespace
}  // namespace CaptureTests
