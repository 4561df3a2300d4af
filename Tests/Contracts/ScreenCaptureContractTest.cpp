// What every screen capture promises, asked of the fake and of the one on a real server.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <thread>

#include "Platform/X11/Capture/X11ScreenCapture.h"
#include "Platform/X11/Connection.h"
#include "Support/FakeScreenCapture.h"
#include "Support/PrivateServer.h"

namespace Contracts {
namespace {

using Platform::Captured;
using Platform::CaptureResolution;
using Platform::CaptureTruth;
using Platform::Rect;

constexpr std::uint32_t colour = 0xff123456;

class FakeEye {
public:
    explicit FakeEye(bool isPermitted = true) { m_capture.setColour(isPermitted ? std::optional(colour) : std::nullopt); }
    Platform::ScreenCapture& capture() { return m_capture; }

private:
    TestSupport::CallLog m_log;
    TestSupport::FakeScreenCapture m_capture{m_log};
};

// A screen of one colour. What no client may read without the extension is not permitted.
class RealEye {
public:
    explicit RealEye(bool isPermitted = true)
        : m_server("320x200x24", isPermitted ? std::vector<std::string>() : std::vector<std::string>{"-extension", "Composite"})
    {
        m_layout.set(Platform::X11::MonitorLayout({{"MAIN", {0, 0, 320, 200}, 1}}));
        auto& connection = *m_connection;
        const std::uint32_t pixel = colour & 0xffffff;
        xcb_change_window_attributes(connection, connection.root(), XCB_CW_BACK_PIXEL, &pixel);
        xcb_clear_area(connection, 0, connection.root(), 0, 0, 0, 0);
        Platform::X11::adopt(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }
    Platform::ScreenCapture& capture() { return *m_capture; }

private:
    TestSupport::PrivateServer m_server;
    std::unique_ptr<Platform::X11::Connection> m_connection = Platform::X11::Connection::open(m_server.displayName());
    Platform::X11::SharedMonitorLayout m_layout;
    Platform::X11::OverlayStack m_stack;
    std::unique_ptr<Platform::X11::X11ScreenCapture> m_capture = Platform::X11::X11ScreenCapture::open(m_server.displayName(), m_layout, m_stack);
};

template <typename Eye> class ScreenCaptureContract : public testing::Test {
protected:
    template <std::size_t count> static std::array<Captured, count> captureWith(Eye& eye, const std::array<Rect, count>& rectangles)
    {
        std::array<Captured, count> answers;
        eye.capture().windowsBelow(7, CaptureResolution::nominal, rectangles, answers);
        return answers;
    }
    static void expectPicture(const Captured& answer, int width, int height)
    {
        EXPECT_EQ(answer.truth, CaptureTruth::exact);
        ASSERT_EQ(answer.image.width(), width);
        ASSERT_EQ(answer.image.height(), height);
        EXPECT_EQ(std::count(answer.image.pixels().begin(), answer.image.pixels().end(), colour), width * height);
    }
    static void expectNone(const Captured& answer)
    {
        EXPECT_EQ(answer.truth, CaptureTruth::none);
        EXPECT_TRUE(answer.image.isEmpty());
    }
};

using Eyes = testing::Types<FakeEye, RealEye>;
TYPED_TEST_SUITE(ScreenCaptureContract, Eyes);

TYPED_TEST(ScreenCaptureContract, GivesOneOpaquePicturePerRectangle)
{
    TypeParam eye;
    const auto answers = this->captureWith(eye, std::array<Rect, 2>{{{0, 50, 320, 1}, {40, 0, 1, 200}}});
    this->expectPicture(answers[0], 320, 1);
    this->expectPicture(answers[1], 1, 200);
}

TYPED_TEST(ScreenCaptureContract, RoundsBothEdgesOfASideHalvesUp)
{
    TypeParam eye;
    const auto answers = this->captureWith(eye, std::array<Rect, 3>{{{0.5, 10.5, 3, 1}, {0.4, 10, 3, 1.5}, {10.3, 0.49, 1, 5}}});
    this->expectPicture(answers[0], 3, 1);
    this->expectPicture(answers[1], 3, 2);
    this->expectPicture(answers[2], 1, 5);
}

TYPED_TEST(ScreenCaptureContract, AnswersForAnyWindowNumberAndResolution)
{
    TypeParam eye;
    const Rect rectangle = {10, 10, 20, 5};
    for (const auto resolution : {CaptureResolution::nominal, CaptureResolution::best}) {
        for (const std::uint32_t number : {0U, 1U, 4000000000U}) {
            std::array<Captured, 1> answers;
            eye.capture().windowsBelow(number, resolution, {&rectangle, 1}, answers);
            this->expectPicture(answers[0], 20, 5);
        }
    }
}

TYPED_TEST(ScreenCaptureContract, GivesNoneForARectangleWithoutPixelsAndTheOthersNevertheless)
{
    TypeParam eye;
    const auto answers = this->captureWith(eye, std::array<Rect, 4>{{{10, 10, 0, 5}, {10, 10, 20, 5}, {10, 10, 5, -1}, {10.1, 10, 0.2, 5}}});
    this->expectNone(answers[0]);
    this->expectPicture(answers[1], 20, 5);
    this->expectNone(answers[2]);
    this->expectNone(answers[3]);
}

TYPED_TEST(ScreenCaptureContract, IsAskedForNothingWithoutHarm)
{
    TypeParam eye;
    eye.capture().windowsBelow(7, CaptureResolution::nominal, {}, {});
    this->expectPicture(this->captureWith(eye, std::array<Rect, 1>{{{0, 0, 2, 2}}})[0], 2, 2);
}

TYPED_TEST(ScreenCaptureContract, UsesTheBuffersOfTheAnswersAgain)
{
    TypeParam eye;
    std::array<Captured, 1> answers;
    const auto captureInto = [&](const Rect& rectangle) { eye.capture().windowsBelow(7, CaptureResolution::nominal, {&rectangle, 1}, answers); };
    captureInto({0, 50, 320, 1});
    const auto* memory = answers[0].image.pixels().data();
    captureInto({0, 60, 300, 1});
    EXPECT_EQ(answers[0].image.pixels().data(), memory);
    this->expectPicture(answers[0], 300, 1);
    captureInto({0, 0, 0, 0});
    this->expectNone(answers[0]);
    captureInto({0, 70, 310, 1});
    EXPECT_EQ(answers[0].image.pixels().data(), memory);
    this->expectPicture(answers[0], 310, 1);
}

TYPED_TEST(ScreenCaptureContract, GivesNoneWhereItIsNotPermitted)
{
    TypeParam eye(false);
    std::array<Captured, 2> answers;
    for (auto& answer : answers) {
        answer.image.resize(3, 3);
        answer.truth = CaptureTruth::exact;
    }
    eye.capture().windowsBelow(7, CaptureResolution::nominal, std::array<Rect, 2>{{{0, 0, 3, 3}, {0, 1, 3, 3}}}, answers);
    this->expectNone(answers[0]);
    this->expectNone(answers[1]);
}

TYPED_TEST(ScreenCaptureContract, AnswersOnAnyThread)
{
    TypeParam eye;
    Captured answer;
    std::thread([&] { answer = this->captureWith(eye, std::array<Rect, 1>{{{0, 0, 9, 9}}})[0]; }).join();
    this->expectPicture(answer, 9, 9);
}

}  // namespace
}  // namespace Contracts
