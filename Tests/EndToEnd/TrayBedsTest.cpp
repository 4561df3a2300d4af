// The trays that other tests rely on, tried with a small program of the toolkit's.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/PopupMenus.h"
#include "Support/Desktop/StatusNotifierHost.h"
#include "Support/Desktop/TrayIcon.h"
#include "Support/Desktop/Trayer.h"
#include "Support/Desktop/XfcePanel.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Labels = std::vector<std::string>;

namespace {

class Probe {
public:
    Probe(const Desktop& desktop, const std::string& mode, const std::string& busAddress = "unix:path=/nonexistent")
        : m_output(desktop.home() / "probe-output")
    {
        Process::Options options;
        options.environment = {{"DBUS_SESSION_BUS_ADDRESS", busAddress}, {"QT_QPA_PLATFORM", "xcb"}, {"HOME", desktop.home().string()}};
        options.standardOutput = m_output;
        m_process = desktop.server().start({TRAY_PROBE, mode}, options);
    }

    Process& process() { return m_process; }

    testing::AssertionResult says(const std::string& all) const
    {
        if (waitUntil([&] { return output() == all; }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << output();
    }

private:
    std::string output() const
    {
        std::ifstream file(m_output);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::string m_output;
    Process m_process;
};

struct BusTray : testing::Test {
    Desktop desktop{WindowManagerKind::openbox};
    PrivateBus bus{desktop.home(), {}};
};

TEST_F(BusTray, ReadsTheIcon)
{
    const StatusNotifierHost host(bus.address());
    EXPECT_TRUE(host.items().empty());
    const Probe probe(desktop, "menu", bus.address());
    const auto item = host.waitForItem();
    EXPECT_EQ(item.title(), "Probe");
    EXPECT_EQ(item.toolTip(), "Probe");
    EXPECT_EQ(item.iconName(), "");
    ASSERT_FALSE(item.pictures().empty());
    EXPECT_EQ(item.pictures().front().width, 22);
    EXPECT_EQ(item.pictures().front().height, 22);
    EXPECT_EQ(item.pictures().front().visiblePixels, 484);
}

TEST_F(BusTray, BringsClicks)
{
    const StatusNotifierHost host(bus.address());
    const Probe probe(desktop, "menu", bus.address());
    const auto item = host.waitForItem();
    item.activate();
    item.secondaryActivate();
    item.contextMenu();
    EXPECT_TRUE(probe.says("activated 3\nactivated 4\nactivated 1\n"));
}

TEST_F(BusTray, OpensTheMenuAndChooses)
{
    const StatusNotifierHost host(bus.address());
    const Probe probe(desktop, "menu", bus.address());
    const auto menu = host.waitForItem().menu();
    EXPECT_EQ(menu.labels(), (Labels{"First", "---", "Last"}));
    EXPECT_EQ(menu.shortcutOf("First"), "Super+Alt+X");
    EXPECT_EQ(menu.shortcutOf("Last"), "");
    EXPECT_EQ(menu.entries(), menu.entriesAskedForOneByOne());
    const auto changesBefore = host.menuChanges();
    menu.open();
    EXPECT_TRUE(waitUntil([&] { return menu.labels() == Labels{"First 1", "---", "Last"}; }));
    EXPECT_GT(host.menuChanges(), changesBefore);
    menu.click("First 1");
    EXPECT_TRUE(probe.says("opened 1\nchosen 0\n"));
    EXPECT_THROW(menu.click("Nowhere"), std::runtime_error);
}

TEST_F(BusTray, SeesAProgramEnd)
{
    const StatusNotifierHost host(bus.address());
    Probe probe(desktop, "menu", bus.address());
    host.waitForItem().menu().click("Last");
    EXPECT_EQ(probe.process().waitForExit(std::chrono::seconds(10)), 0);
    EXPECT_TRUE(waitUntil([&] { return host.items().empty(); }));
}

TEST_F(BusTray, GoesAndComesBack)
{
    std::optional<StatusNotifierHost> host(bus.address());
    const Probe probe(desktop, "menu", bus.address());
    const auto former = host->waitForItem();
    host.reset();
    EXPECT_THROW(former.title(), std::runtime_error);
    host.emplace(bus.address());
    EXPECT_EQ(host->waitForItem().title(), "Probe");
    EXPECT_EQ(host->items().size(), 1U);
}

TEST_F(BusTray, IsTheOnlyOne)
{
    const StatusNotifierHost host(bus.address());
    EXPECT_THROW(StatusNotifierHost(bus.address()), std::runtime_error);
}

struct EmbeddingTray : testing::Test {
    Desktop desktop{WindowManagerKind::openbox};
    Trayer trayer{desktop};
    Platform::Image empty = desktop.screenshotAtRest();
};

TEST_F(EmbeddingTray, ShowsTheIconAndBringsClicks)
{
    const Probe probe(desktop, "bare");
    const auto icon = waitForIcon(desktop, empty, Trayer::frame);
    EXPECT_GE(icon.width, 16);
    EXPECT_LE(icon.width, 24);
    EXPECT_EQ(desktop.screenshot().pixel(icon.x + icon.width / 2, icon.y + icon.height / 2), 0xff00ff00);
    click(desktop, icon, 1);
    EXPECT_TRUE(probe.says("activated 3\n"));
    EXPECT_TRUE(openMenus(desktop.connection()).empty());
    click(desktop, icon, 3);
    const auto menu = waitForMenu(desktop);
    EXPECT_TRUE(probe.says("activated 3\nactivated 1\nopened 1\n"));
    clickFirstEntry(desktop, menu);
    EXPECT_TRUE(probe.says("activated 3\nactivated 1\nopened 1\nchosen 0\n"));
    EXPECT_TRUE(waitForNoMenu(desktop));
}

struct PanelTray : testing::Test {
    Desktop desktop{WindowManagerKind::openbox};
    XfcePanel panel{desktop};
    Platform::Image empty = desktop.screenshotAtRest();
};

TEST_F(PanelTray, ShowsTheIconAndItsMenu)
{
    const Probe probe(desktop, "menu", panel.busAddress());
    const auto icon = waitForIcon(desktop, empty, XfcePanel::frame);
    EXPECT_GE(icon.width, 16);
    EXPECT_LE(icon.width, 32);
    EXPECT_EQ(desktop.screenshot().pixel(icon.x + icon.width / 2, icon.y + icon.height / 2), 0xff00ff00);
    click(desktop, icon, 1);
    EXPECT_TRUE(probe.says("activated 3\n"));
    click(desktop, icon, 3);
    const auto menu = waitForMenu(desktop);
    EXPECT_TRUE(probe.says("activated 3\nopened 1\n"));
    clickFirstEntry(desktop, menu);
    EXPECT_TRUE(probe.says("activated 3\nopened 1\nchosen 0\n"));
}

TEST(ChangedPart, IsTheSmallestRectangleAroundWhatDiffers)
{
    const Platform::Image before(20, 10);
    auto after = before;
    EXPECT_EQ(changedPart(before, after, {0, 0, 20, 10}), std::nullopt);
    after.pixels()[43] = 1;   // (3, 2)
    after.pixels()[127] = 1;  // (7, 6)
    EXPECT_EQ(changedPart(before, after, {0, 0, 20, 10}), (Platform::X11::DeviceRect{3, 2, 5, 5}));
    EXPECT_EQ(changedPart(before, after, {0, 4, 20, 6}), (Platform::X11::DeviceRect{7, 6, 1, 1}));
    EXPECT_EQ(changedPart(before, after, {10, 0, 10, 10}), std::nullopt);
}

}  // namespace
