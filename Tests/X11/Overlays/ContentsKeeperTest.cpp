#include "Platform/X11/Overlays/ContentsKeeper.h"

#include <chrono>
#include <future>

#include "Platform/X11/WireRect.h"
#include "X11/Overlays/OverlaysSetting.h"

using namespace OverlayTests;

namespace {

class ContentsKeeping : public OverlaysSetting {
protected:
    // A row and a column of the screen in red, with the column above.
    static void present(OverlayWindow& overlay, int column, int row)
    {
        const auto horizontal = solid(800, 1, red);
        const auto vertical = solid(1, 600, red);
        const Picture pictures[] = {
            {.rectangle = {0, 599.0 - row, 800, 1}, .image = &horizontal}, {.rectangle = {double(column), 0, 1, 600}, .image = &vertical}};
        overlay.present(pictures);
    }

    static void show(OverlayWindow& overlay, int column, int row)
    {
        overlay.makeKeyAndOrderFront();
        present(overlay, column, row);
    }

    // The capture was told what the screen showed where there is a red line now.
    void expectCovered(const Image& before)
    {
        for (const auto& [window, place, pixmap] : capture.covered) {
            EXPECT_TRUE(shows(place.x, place.y, red));
            const auto [x, y, width, height] = toWire(place);
            const auto cookie = xcb_get_image(*requests, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, 0, width, height, 0xffffff);
            const auto reply = adopt(xcb_get_image_reply(*requests, cookie, nullptr));
            ASSERT_NE(reply, nullptr);
            const auto* pixels = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(reply.get()));
            for (int i = 0; i < width * height; ++i)
                ASSERT_EQ(pixels[i], before.pixel(x + i % width, y + i / width) & 0xffffff) << i;
        }
    }
};

TEST_F(ContentsKeeping, HasContentsKeptFromTheStartWhereACompositorDoesSoAnyway)
{
    const auto owner = mapForeign({-10, -10, 1, 1}, 0, true);
    auto& other = desktop.connection();
    xcb_set_selection_owner(other, owner, other.compositorSelection(), XCB_CURRENT_TIME);
    screenshot();
    const auto overlay = makeOverlay();
    show(*overlay, 200, 300);
    EXPECT_EQ(capture.calls, "activate ");
}

// The copying would else delay the first picture.
TEST_F(ContentsKeeping, HasContentsKeptOnceTheFirstPicturesAreShown)
{
    mapForeign({100, 100, 400, 300}, blue, true);
    auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    EXPECT_EQ(capture.calls, "activateBeforeContents ");
    show(*overlay, 200, 300);
    EXPECT_EQ(capture.calls, "activateBeforeContents keepContents ");
    EXPECT_TRUE(shows(10, 300, red));
    show(*overlay, 210, 310);
    const auto second = makeOverlay();
    show(*second, 20, 30);
    EXPECT_EQ(capture.calls, "activateBeforeContents keepContents ");
}

TEST_F(ContentsKeeping, HasContentsKeptOncePicturesOfBeforeAreShown)
{
    mapForeign({100, 100, 400, 300}, blue, true);
    const auto before = screenshot();
    const auto overlay = makeOverlay();
    present(*overlay, 200, 300);
    EXPECT_EQ(capture.calls, "activateBeforeContents ");
    overlay->makeKeyAndOrderFront();
    EXPECT_EQ(capture.calls, "activateBeforeContents keepContents ");
    EXPECT_EQ(capture.covered.size(), 2U);
    expectCovered(before);
}

TEST_F(ContentsKeeping, TellsWhatItsFirstPicturesCover)
{
    mapForeign({100, 100, 400, 300}, blue, true);
    const auto before = screenshot();
    const auto overlay = makeOverlay();
    show(*overlay, 200, 300);
    ASSERT_EQ(capture.covered.size(), 2U);
    EXPECT_EQ(capture.covered[0].place, (DeviceRect{0, 300, 800, 1}));
    EXPECT_EQ(capture.covered[1].place, (DeviceRect{200, 0, 1, 600}));
    expectCovered(before);
}

TEST_F(ContentsKeeping, LetsNoOtherProgramPaintMeanwhile)
{
    ContentsKeeper keeper(*requests, capture);
    keeper.start();
    keeper.willMap(mapForeign({0, 0, 10, 10}, blue, true), {0, 0, 10, 10});
    requests->flush();
    auto& other = desktop.connection();
    auto roundTrip = std::async(std::launch::async, [&other] { other.waitForServer(); });
    EXPECT_EQ(roundTrip.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    keeper.haveMapped();
    EXPECT_EQ(roundTrip.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(capture.calls, "activateBeforeContents keepContents ");
}

}  // namespace
