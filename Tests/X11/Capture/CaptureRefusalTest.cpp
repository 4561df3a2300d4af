// Servers that let the capture see nothing, or not in the usual way.
#include <stdlib.h>
#include <xcb/shm.h>

#include "Support/TemporaryFolder.h"
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;

class WithoutSharedMemory : public CaptureSetting {
protected:
    WithoutSharedMemory() : CaptureSetting({"-extension", "MIT-SHM"}) { }
};

TEST_F(WithoutSharedMemory, ReadsThePictureThroughTheConnection)
{
    ASSERT_FALSE(m_desktop.connection().has(xcb_shm_id));
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    showOverlay(1, {0, 50, 320, 1});
    m_capture->activate();
    EXPECT_EQ(coloursOf(capture({0, 50, 20, 1})), (Colours{0xff00ff00}));
    const auto before = m_capture->roundTrips();
    EXPECT_EQ(coloursOf(capture({30, 50, 20, 1})), (Colours{0xff00ff00}));
    EXPECT_EQ(m_capture->roundTrips() - before, 1U);
}

class WithoutComposite : public CaptureSetting {
protected:
    WithoutComposite() : CaptureSetting({"-extension", "Composite"}) { }
};

TEST_F(WithoutComposite, GivesNone)
{
    m_capture->activate();
    const auto captured = capture({0, 50, 20, 1});
    EXPECT_EQ(captured.truth, CaptureTruth::none);
    EXPECT_TRUE(captured.image.isEmpty());
}

class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const std::string& value) : m_name(name) { setenv(name, value.c_str(), 1); }
    ~EnvironmentVariable() { unsetenv(m_name); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* m_name;
};

int runXauth(const std::string& file, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {"xauth", "-f", file};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return TestSupport::Process::start(command).waitForExit(std::chrono::seconds(10)).value_or(-1);
}

TEST(UntrustedClient, GetsNone)
{
    const std::string cookie = "00112233445566778899aabbccddeeff";
    const TestSupport::TemporaryFolder folder;
    const std::string serverFile = folder.path() / "server";
    const std::string trustedFile = folder.path() / "trusted";
    const std::string untrustedFile = folder.path() / "untrusted";
    ASSERT_EQ(runXauth(serverFile, {"add", ":0", ".", cookie}), 0);
    const TestSupport::PrivateServer server("320x200x24", {"-auth", serverFile});
    ASSERT_EQ(runXauth(trustedFile, {"add", server.displayName(), ".", cookie}), 0);

    Platform::X11::SharedMonitorLayout layout;
    layout.set(Platform::X11::MonitorLayout({{"MAIN", {0, 0, 320, 200}, 1}}));
    const Platform::X11::OverlayStack stack;
    const Rect rect = {0, 0, 10, 10};
    std::array<Captured, 1> answers;
    {
        const EnvironmentVariable trusted("XAUTHORITY", trustedFile);
        ASSERT_EQ(runXauth(untrustedFile, {"generate", server.displayName(), ".", "untrusted", "timeout", "0"}), 0);
        const auto capture = Platform::X11::X11ScreenCapture::open(server.displayName(), layout, stack);
        ASSERT_NE(capture, nullptr);
        capture->windowsBelow(1, CaptureResolution::nominal, {&rect, 1}, answers);
        EXPECT_EQ(answers[0].truth, CaptureTruth::exact);
    }
    const EnvironmentVariable untrusted("XAUTHORITY", untrustedFile);
    const auto capture = Platform::X11::X11ScreenCapture::open(server.displayName(), layout, stack);
    ASSERT_NE(capture, nullptr);
    capture->activate();
    capture->windowsBelow(1, CaptureResolution::nominal, {&rect, 1}, answers);
    EXPECT_EQ(answers[0].truth, CaptureTruth::none);
    EXPECT_TRUE(answers[0].image.isEmpty());
    capture->deactivate();
}

}  // namespace
}  // namespace CaptureTests
