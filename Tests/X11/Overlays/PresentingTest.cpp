// When and where pictures come up.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <atomic>
#include <optional>
#include <thread>

#include "Support/Desktop/ForeignHotKey.h"
#include "X11/Overlays/OverlaysSetting.h"

namespace OverlayTests {
namespace {

using PresentingTest = OverlaysSetting;

// Another client, which looks at two pixels of the screen whenever a window comes, moves or
// goes, as soon as it hears of it.
class Onlooker {
public:
    explicit Onlooker(const std::string& displayName) : m_connection(Connection::open(displayName))
    {
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(*m_connection, m_connection->root(), XCB_CW_EVENT_MASK, &mask);
        m_connection->waitForServer();
        m_thread = std::thread([this] { run(); });
    }
    ~Onlooker()
    {
        m_isEnding = true;
        xcb_client_message_event_t end{.response_type = XCB_CLIENT_MESSAGE, .format = 32, .window = m_connection->root()};
        xcb_send_event(*m_connection, 0, m_connection->root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, reinterpret_cast<const char*>(&end));
        m_connection->flush();
        m_thread.join();
    }
    Onlooker(const Onlooker&) = delete;
    Onlooker& operator=(const Onlooker&) = delete;

    void watch(DeviceRect first, DeviceRect second)
    {
        const std::lock_guard lock(m_mutex);
        m_first = first;
        m_second = second;
    }
    int looks() const { return m_looks; }
    // How often the two pixels differed.
    int differences() const { return m_differences; }
    // How often neither was red.
    int looksWithoutRed() const { return m_looksWithoutRed; }

private:
    void run()
    {
        while (const auto event = adopt(xcb_wait_for_event(*m_connection))) {
            if (m_isEnding)
                return;
            const auto type = eventType(*event);
            if (type == XCB_MAP_NOTIFY || type == XCB_UNMAP_NOTIFY || type == XCB_CONFIGURE_NOTIFY)
                look();
        }
    }
    void look()
    {
        const std::lock_guard lock(m_mutex);
        const auto first = request(m_first);
        const auto second = request(m_second);
        const auto firstColour = receive(first);
        const auto secondColour = receive(second);
        m_differences += firstColour != secondColour ? 1 : 0;
        constexpr auto opaqueRed = red & 0xffffff;
        m_looksWithoutRed += firstColour != opaqueRed && secondColour != opaqueRed ? 1 : 0;
        ++m_looks;
    }
    xcb_get_image_cookie_t request(const DeviceRect& pixel) const
    {
        return xcb_get_image(*m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_connection->root(), static_cast<std::int16_t>(pixel.x),
            static_cast<std::int16_t>(pixel.y), 1, 1, 0xffffff);
    }
    std::uint32_t receive(xcb_get_image_cookie_t cookie) const
    {
        const auto reply = adopt(xcb_get_image_reply(*m_connection, cookie, nullptr));
        std::uint32_t colour = 0;
        std::memcpy(&colour, xcb_get_image_data(reply.get()), sizeof colour);
        return colour & 0xffffff;
    }

    std::unique_ptr<Connection> m_connection;
    std::thread m_thread;
    std::mutex m_mutex;
    DeviceRect m_first;
    DeviceRect m_second;
    std::atomic<bool> m_isEnding = false;
    std::atomic<int> m_looks = 0;
    std::atomic<int> m_differences = 0;
    std::atomic<int> m_looksWithoutRed = 0;
};

TEST_F(PresentingTest, ChangesAllPicturesAtOnce)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    Onlooker onlooker(desktop.displayName());
    // They grow, so that each time there is memory to be agreed on with the server.
    for (int i = 1; i <= 20; ++i) {
        const int length = 300 + 10 * i;
        const auto row = solid(length, 4, red);
        const auto column = solid(4, length, red);
        onlooker.watch({20, 5 * i, 1, 1}, {300 + 5 * i, 550, 1, 1});
        const Picture pictures[] = {{.rectangle = {0, 600.0 - 5 * i - 4, static_cast<double>(length), 4}, .image = &row},
            {.rectangle = {300.0 + 5 * i, 0, 4, static_cast<double>(length)}, .image = &column}};
        overlay->present(pictures);
        EXPECT_TRUE(shows(20, 5 * i, red) && shows(300 + 5 * i, 550, red)) << i;
    }
    EXPECT_GE(onlooker.looks(), 10);
    EXPECT_EQ(onlooker.differences(), 0);
}

TEST_F(PresentingTest, TakesAPictureAwayOnceTheOthersAreThere)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto corner = solid(4, 4, red);
    const auto former = solid(300, 4, red);
    const Picture before[] = {{.rectangle = {0, 0, 4, 4}, .image = &corner}, {.rectangle = {0, 596, 300, 4}, .image = &former}};
    overlay->present(before);
    EXPECT_TRUE(shows(20, 1, red));
    Onlooker onlooker(desktop.displayName());
    onlooker.watch({20, 1, 1, 1}, {20, 201, 1, 1});
    // It grows, so that each time there is memory to be agreed on with the server.
    for (int i = 1; i <= 20; ++i) {
        const int length = 300 + 10 * i;
        const auto next = solid(length, 4, red);
        const Picture after{.rectangle = {0, 396, static_cast<double>(length), 4}, .image = &next};
        overlay->present({&after, 1});
        EXPECT_TRUE(shows(20, 201, red) && !shows(20, 1, red)) << i;
        overlay->present(before);
        EXPECT_TRUE(shows(20, 1, red) && !shows(20, 201, red)) << i;
    }
    EXPECT_GE(onlooker.looks(), 10);
    EXPECT_EQ(onlooker.looksWithoutRed(), 0);
}

TEST_F(PresentingTest, BringsAPictureBackAtAnotherPlace)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto square = solid(20, 20, red);
    const auto presentAt = [&](double left, double bottom) {
        const Picture picture{.rectangle = {left, bottom, 20, 20}, .image = &square};
        overlay->present({&picture, 1});
    };
    presentAt(100, 100);
    EXPECT_TRUE(shows(110, 490, red));
    overlay->present({});
    presentAt(0, 580);
    EXPECT_TRUE(shows(10, 10, red));
    presentAt(100, 100);
    constexpr double outside = 900;
    presentAt(outside, 100);
    EXPECT_FALSE(shows(110, 490, red));
    presentAt(0, 580);
    EXPECT_TRUE(shows(10, 10, red));
}

// The server needs milliseconds for the keys. What a window covers is kept once it is mapped.
TEST_F(PresentingTest, LetsTheFirstPictureGoBeforeTheKeys)
{
    const auto overlay = makeOverlay();
    const auto hasKeys = [&] { return TestSupport::isHotKeyTaken(desktop.displayName(), KEY_A, 0); };
    overlay->makeKeyAndOrderFront();
    EXPECT_FALSE(hasKeys());
    std::optional<bool> hadKeysWithThePicture;
    capture.whenKept = [&] {
        if (shows(20, 580, red))
            hadKeysWithThePicture = hasKeys();
    };
    const Picture picture{.rectangle = {10, 10, 20, 20}, .colour = red};
    overlay->present({&picture, 1});
    EXPECT_EQ(hadKeysWithThePicture, std::optional(false));
    EXPECT_TRUE(hasKeys());
    overlay->orderOut();
    EXPECT_FALSE(hasKeys());
}

// A compositor has more to do than the server until the picture is seen.
TEST_F(PresentingTest, TakesTheKeysATickLaterUnderACompositor)
{
    auto picom = desktop.server().start({"picom", "--backend", "xrender", "--config", "/dev/null"});
    ASSERT_TRUE(loopUntil([this] { return requests->hasCompositor(); }));
    const auto overlay = makeOverlay();
    const auto hasKeys = [&] { return TestSupport::isHotKeyTaken(desktop.displayName(), KEY_A, 0); };
    overlay->makeKeyAndOrderFront();
    const Picture picture{.rectangle = {10, 10, 20, 20}, .colour = red};
    overlay->present({&picture, 1});
    EXPECT_FALSE(hasKeys());
    EXPECT_TRUE(loopUntil(hasKeys));
}

TEST_F(PresentingTest, LeavesTheKeysWhereItGoesBeforeItsFirstPicture)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    overlay->orderOut();
    constexpr auto longerThanATick = std::chrono::milliseconds(100);
    const auto end = std::chrono::steady_clock::now() + longerThanATick;
    loopUntil([&] { return std::chrono::steady_clock::now() > end; });
    EXPECT_FALSE(TestSupport::isHotKeyTaken(desktop.displayName(), KEY_A, 0));
}

}  // namespace
}  // namespace OverlayTests
