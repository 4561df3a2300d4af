#include "Platform/X11/Capture/ImageReader.h"

#include <gtest/gtest.h>

#include "Support/PrivateServer.h"
#include "X11/Capture/Desktop.h"
#include "X11/Capture/ServerResources.h"

namespace CaptureTests {
namespace {

using namespace Platform::X11;

enum class Way { sharedCanvases, sharedMemory, connection };

class ImageReader : public testing::TestWithParam<Way> {
protected:
    static std::vector<std::string> serverArguments()
    {
        return GetParam() == Way::connection ? std::vector<std::string>{"-extension", "MIT-SHM"} : std::vector<std::string>();
    }

    void SetUp() override
    {
        m_desktop.makeMappedWindow({.inner = {0, 0, 320, 100}, .colour = upper});
        m_desktop.makeMappedWindow({.inner = {0, 100, 320, 100}, .colour = lower});
        m_desktop.sync();
    }

    static std::size_t count(const DeviceRect& area) { return static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height); }

    void fill(Canvas& canvas, const DeviceRect& area, std::uint32_t colour)
    {
        const auto graphics = m_connection.newId();
        xcb_create_gc(m_connection, graphics, canvas.pixmap, XCB_GC_FOREGROUND, &colour);
        const auto rectangle = toWire(area);
        xcb_poly_fill_rectangle(m_connection, canvas.pixmap, graphics, 1, &rectangle);
        xcb_free_gc(m_connection, graphics);
    }

    void expectAll(std::size_t picture, std::size_t expectedCount, std::uint32_t colour)
    {
        ASSERT_EQ(m_images->pixels(picture).size(), expectedCount);
        for (const auto pixel : m_images->pixels(picture))
            ASSERT_EQ(pixel & 0xffffff, colour);
    }

    static constexpr std::uint32_t upper = 0x00ff00;
    static constexpr std::uint32_t lower = 0x0000ff;

    TestSupport::PrivateServer m_server{"320x200x24", serverArguments()};
    Desktop m_desktop{m_server.displayName()};
    std::unique_ptr<CaptureServer> m_captureServer =
        CaptureServer::open(m_server.displayName(), GetParam() == Way::sharedCanvases ? CanvasMemory::shared : CanvasMemory::servers);
    Connection& m_connection = m_captureServer->connection();
    std::unique_ptr<Platform::X11::ImageReader> m_images = std::make_unique<Platform::X11::ImageReader>(*m_captureServer);
};

using ImageReaderOnRequest = ImageReader;

std::string nameOf(const testing::TestParamInfo<Way>& info)
{
    constexpr const char* names[] = {"sharedCanvases", "sharedMemory", "connection"};
    return names[static_cast<int>(info.param)];
}
INSTANTIATE_TEST_SUITE_P(Every, ImageReader, testing::Values(Way::sharedCanvases, Way::sharedMemory, Way::connection), nameOf);
INSTANTIATE_TEST_SUITE_P(Two, ImageReaderOnRequest, testing::Values(Way::sharedMemory, Way::connection), nameOf);

TEST_P(ImageReader, SharesCanvasesWhereTheServerDoes)
{
    m_images->begin(1);
    EXPECT_EQ(m_images->sharesCanvases(), GetParam() == Way::sharedCanvases);
}

TEST_P(ImageReader, ReadsAfterThereWasNothingToRead)
{
    m_images->begin(0);
    EXPECT_TRUE(m_images->read());
    m_images->begin(100);
    EXPECT_EQ(m_images->sharesCanvases(), GetParam() == Way::sharedCanvases);
    const auto picture = m_images->add(m_connection.root(), {0, 0, 10, 10});
    ASSERT_TRUE(m_images->read());
    expectAll(picture, 100, upper);
}

TEST_P(ImageReader, DoesWithoutSharedCanvasesOnceTheServerRefusedOne)
{
    m_images->begin(100);
    m_images->add(m_connection.root(), {0, 0, 10, 10});
    ASSERT_TRUE(m_images->read());
    xcb_generic_error_t error{};
    error.major_code = xcb_get_extension_data(m_connection, &xcb_render_id)->major_opcode;
    error.minor_code = XCB_SHM_CREATE_PIXMAP;
    m_images->failed(error);
    EXPECT_FALSE(m_images->hasFailed());
    error.major_code = xcb_get_extension_data(m_connection, &xcb_shm_id)->major_opcode;
    error.minor_code = XCB_SHM_ATTACH;
    m_images->failed(error);
    EXPECT_FALSE(m_images->hasFailed());
    error.minor_code = XCB_SHM_CREATE_PIXMAP;
    m_images->failed(error);
    EXPECT_TRUE(m_images->hasFailed());
    m_images->begin(100);
    EXPECT_FALSE(m_images->hasFailed());
    EXPECT_FALSE(m_images->sharesCanvases());
    const auto picture = m_images->add(m_connection.root(), {0, 0, 10, 10});
    ASSERT_TRUE(m_images->read());
    expectAll(picture, 100, upper);
}

TEST_P(ImageReader, ReadsMoreAndLessAtATime)
{
    const auto root = m_connection.root();
    for (const DeviceRect area : {DeviceRect{0, 0, 5, 5}, {0, 0, 320, 100}, {0, 0, 3, 3}, {10, 10, 310, 90}}) {
        m_images->begin(2 * count(area));
        const auto above = m_images->add(root, area);
        const auto below = m_images->add(root, {area.x, area.y + 100, area.width, area.height});
        ASSERT_TRUE(m_images->read());
        expectAll(above, count(area), upper);
        expectAll(below, count(area), lower);
    }
}

TEST_P(ImageReader, ReadsWhatIsPaintedOnCanvasesBesideWhatIsOnTheScreen)
{
    for (const DeviceRect area : {DeviceRect{0, 0, 7, 3}, {0, 0, 64, 50}, {0, 0, 7, 3}, {0, 0, 7, 5}, {0, 0, 3, 7}}) {
        m_images->begin(3 * count(area));
        std::size_t first = 0;
        std::size_t second = 0;
        fill(m_images->addCanvas(area, first), area, 0x112233);
        const auto screen = m_images->add(m_connection.root(), area);
        fill(m_images->addCanvas(area, second), area, 0x445566);
        ASSERT_TRUE(m_images->read());
        expectAll(first, count(area), 0x112233);
        expectAll(screen, count(area), upper);
        expectAll(second, count(area), 0x445566);
    }
}

TEST_P(ImageReader, WaitsOnceForTheServerHoweverMuchIsRead)
{
    const auto read = [this] {
        m_images->begin(400);
        for (int i = 0; i < 4; ++i)
            m_images->add(m_connection.root(), {i, i, 10, 10});
        EXPECT_TRUE(m_images->read());
    };
    read();
    const auto before = m_captureServer->roundTrips();
    read();
    EXPECT_EQ(m_captureServer->roundTrips() - before, 1U);
    m_images->begin(0);
    EXPECT_TRUE(m_images->read());
    EXPECT_EQ(m_captureServer->roundTrips() - before, 1U);
}

TEST_P(ImageReader, LeavesNothingInTheServer)
{
    m_images.reset();
    const auto before = serverResources(m_connection);
    m_images = std::make_unique<Platform::X11::ImageReader>(*m_captureServer);
    for (int size = 1; size < 40; ++size) {
        const DeviceRect area{0, 0, size, 40 - size};
        m_images->begin(2 * count(area));
        std::size_t number = 0;
        fill(m_images->addCanvas(area, number), area, 0x112233);
        m_images->add(m_connection.root(), area);
        EXPECT_TRUE(m_images->read());
    }
    // Those of the last few captures.
    EXPECT_LE(serverResources(m_connection)["PIXMAP"], 12U);
    m_images.reset();
    EXPECT_EQ(serverResources(m_connection), before);
}

TEST_P(ImageReaderOnRequest, SaysWhenTheServerRefusesOneOfThem)
{
    const auto root = m_connection.root();
    for (const bool isFirst : {true, false}) {
        m_images->begin(1000);
        m_images->add(root, isFirst ? DeviceRect{310, 0, 50, 10} : DeviceRect{0, 0, 50, 10});
        m_images->add(root, isFirst ? DeviceRect{0, 0, 50, 10} : DeviceRect{310, 0, 50, 10});
        EXPECT_FALSE(m_images->read());
    }
    m_images->begin(0);
    EXPECT_TRUE(m_images->read());
}

}  // namespace
}  // namespace CaptureTests
