// What all screens promise, asked of the fake and of a real server's.
#include <gtest/gtest.h>

#include <vector>

#include "Contracts/RealLoop.h"
#include "Platform/X11/X11Screens.h"
#include "Support/Desktop/Monitors.h"
#include "Support/Desktop/XTestPointer.h"
#include "Support/FakeScreens.h"
#include "Support/PrivateServer.h"

namespace Contracts {
namespace {

using Platform::Screen;

const Screen one = {"MAIN", {0, 0, 1920, 1080}, 1};
const Screen right = {"SIDE", {1920, 56, 1280, 1024}, 1};

class FakeDesk {
public:
    Platform::Screens& screens() { return *m_screens; }
    void closeScreens() { m_screens.reset(); }
    void plugInRight() { m_screens->set({one, right}); }
    void unplugRight() { m_screens->set({one}); }
    void unplugAll() { m_screens->set({}); }
    void makeMain(std::size_t index) { m_screens->set({one, right}, index); }
    template <typename Condition> bool waitUntil(Condition&& condition) { return condition(); }

private:
    TestSupport::CallLog m_log;
    std::unique_ptr<TestSupport::FakeScreens> m_screens = std::make_unique<TestSupport::FakeScreens>(m_log);
};

class RealDesk {
public:
    RealDesk()
    {
        TestSupport::setMonitor(*m_requests, "MAIN", {0, 0, 1920, 1080}, true);
        m_screens = std::make_unique<Platform::X11::X11Screens>(
            *m_requests, *m_changes, m_loop.loop(), m_loop.loop(), m_layout, [](const std::string&) { return 1.0; });
    }
    Platform::Screens& screens() { return *m_screens; }
    void closeScreens() { m_screens.reset(); }
    void plugInRight() { TestSupport::setMonitor(*m_requests, "SIDE", {1920, 0, 1280, 1024}, false); }
    void unplugRight() { TestSupport::removeMonitor(*m_requests, "SIDE"); }
    void unplugAll()
    {
        m_server.process().kill();
        m_screens->readAgain();
    }
    // Without any window, by the pointer.
    void makeMain(std::size_t index) { m_pointer.moveTo(index == 0 ? 100 : 2000, 500); }
    template <typename Condition> bool waitUntil(Condition&& condition) { return TestSupport::loopUntil(condition); }

private:
    RealLoop m_loop;
    TestSupport::PrivateServer m_server{"3200x1080x24"};
    TestSupport::XTestPointer m_pointer{m_server.displayName()};
    std::unique_ptr<Platform::X11::Connection> m_requests = Platform::X11::Connection::open(m_server.displayName());
    std::unique_ptr<Platform::X11::Connection> m_changes = Platform::X11::Connection::open(m_server.displayName());
    Platform::X11::SharedMonitorLayout m_layout;
    std::unique_ptr<Platform::X11::X11Screens> m_screens;
};

template <typename Desk> class ScreensContract : public testing::Test {
protected:
    std::vector<Screen> list() { return {desk.screens().screens().begin(), desk.screens().screens().end()}; }
    bool hasTwo() { return list().size() == 2; }
    void plugInRightAndWait()
    {
        desk.plugInRight();
        ASSERT_TRUE(desk.waitUntil([this] { return hasTwo(); }));
    }

    Desk desk;
};

using Desks = testing::Types<FakeDesk, RealDesk>;
TYPED_TEST_SUITE(ScreensContract, Desks);

TYPED_TEST(ScreensContract, ListsThePrimaryScreenFirst)
{
    EXPECT_EQ(this->list(), (std::vector<Screen>{one}));
    this->plugInRightAndWait();
    EXPECT_EQ(this->list(), (std::vector<Screen>{one, right}));
}

TYPED_TEST(ScreensContract, NamesOneOfItsScreensAsTheMainOne)
{
    EXPECT_EQ(this->desk.screens().mainScreen(), one);
    this->plugInRightAndWait();
    this->desk.makeMain(1);
    EXPECT_EQ(this->desk.screens().mainScreen(), right);
    this->desk.makeMain(0);
    EXPECT_EQ(this->desk.screens().mainScreen(), one);
}

TYPED_TEST(ScreensContract, HasNoMainScreenWithoutScreens)
{
    this->desk.unplugAll();
    EXPECT_TRUE(this->list().empty());
    EXPECT_EQ(this->desk.screens().mainScreen(), std::nullopt);
}

TYPED_TEST(ScreensContract, TellsEveryObserverAfterTheScreensHaveChanged)
{
    std::vector<std::size_t> counts;
    const auto countScreens = [&] { counts.push_back(this->list().size()); };
    const auto first = this->desk.screens().observe(countScreens);
    const auto second = this->desk.screens().observe(countScreens);
    EXPECT_TRUE(counts.empty());
    this->plugInRightAndWait();
    EXPECT_EQ(counts, (std::vector<std::size_t>{2, 2}));
    this->desk.unplugRight();
    ASSERT_TRUE(this->desk.waitUntil([&] { return counts.size() >= 4; }));
    EXPECT_EQ(counts, (std::vector<std::size_t>{2, 2, 1, 1}));
}

TYPED_TEST(ScreensContract, TellsAnObserverNothingOnceItsTokenEnds)
{
    int ended = 0;
    int living = 0;
    auto token = this->desk.screens().observe([&] { ++ended; });
    const auto other = this->desk.screens().observe([&] { ++living; });
    this->plugInRightAndWait();
    token.release();
    this->desk.unplugRight();
    ASSERT_TRUE(this->desk.waitUntil([&] { return living == 2; }));
    EXPECT_EQ(ended, 1);
}

TYPED_TEST(ScreensContract, LetsAnObserverEndAnyToken)
{
    int calls = 0;
    std::array<Platform::Token, 2> tokens;
    for (auto& token : tokens) {
        token = this->desk.screens().observe([&] {
            ++calls;
            for (auto& any : tokens)
                any.release();
        });
    }
    this->plugInRightAndWait();
    EXPECT_EQ(calls, 1);
}

TYPED_TEST(ScreensContract, LetsTokensOutliveIt)
{
    auto token = this->desk.screens().observe([] { FAIL(); });
    this->desk.closeScreens();
    token.release();
    EXPECT_FALSE(token);
}

}  // namespace
}  // namespace Contracts
