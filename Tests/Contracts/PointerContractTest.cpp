// What every pointer and its picture promise, asked of the fake and of a real server's.
#include <gtest/gtest.h>

#include "Platform/X11/X11Pointer.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/FakePointer.h"

namespace Contracts {
namespace {

using Platform::Point;

class FakeMouse {
public:
    Platform::Pointer& pointer() { return m_pointer; }
    Platform::Cursor& cursor() { return m_cursor; }
    void moveTo(const Point& location) { m_pointer.moveTo(location); }
    bool showsCursor() const { return m_cursor.isVisible(); }

private:
    TestSupport::CallLog m_log;
    TestSupport::FakePointer m_pointer{m_log};
    TestSupport::FakeCursor m_cursor{m_log};
};

class RealMouse {
public:
    RealMouse()
    {
        m_layout.set(Platform::X11::MonitorLayout({{"MAIN", {0, 0, 800, 600}, 1}}));
        const auto cursor = TestSupport::makeVisibleCursor(m_desktop.connection());
        auto& connection = m_desktop.connection();
        xcb_change_window_attributes(connection, connection.root(), XCB_CW_CURSOR, &cursor);
        connection.flush();
        m_desktop.pointer().moveTo(400, 300);
    }
    Platform::Pointer& pointer() { return m_pointer; }
    Platform::Cursor& cursor() { return m_cursor; }
    // Row 0 of the screen is the point 599 and a bit above it.
    void moveTo(const Point& location) { m_desktop.pointer().moveTo(static_cast<int>(location.x), 600 - static_cast<int>(location.y)); }
    bool showsCursor()
    {
        m_pointer.location();  // afterwards the server has done all that was asked
        return TestSupport::visibleCursorPixels(m_desktop.frameBuffer().read()) > 0;
    }

private:
    TestSupport::Desktop m_desktop{TestSupport::WindowManagerKind::none, "800x600x24"};
    Platform::X11::SharedMonitorLayout m_layout;
    std::unique_ptr<Platform::X11::Connection> m_requests = Platform::X11::Connection::open(m_desktop.displayName());
    Platform::X11::X11Pointer m_pointer{*m_requests, m_layout};
    Platform::X11::X11Cursor m_cursor{*m_requests};
};

template <typename Mouse> class PointerContract : public testing::Test {
protected:
    Mouse mouse;
};
template <typename Mouse> class CursorContract : public PointerContract<Mouse> {
};

using Mice = testing::Types<FakeMouse, RealMouse>;
TYPED_TEST_SUITE(PointerContract, Mice);
TYPED_TEST_SUITE(CursorContract, Mice);

TYPED_TEST(PointerContract, TellsWhereThePointerIsNow)
{
    for (const Point location : {Point{0, 600}, Point{10, 20}, Point{799, 1}, Point{10, 20}}) {
        this->mouse.moveTo(location);
        EXPECT_EQ(this->mouse.pointer().location(), location);
        EXPECT_EQ(this->mouse.pointer().location(), location);
    }
}

TYPED_TEST(CursorContract, IsThereAtFirstAndGoneWhileHidden)
{
    EXPECT_TRUE(this->mouse.showsCursor());
    this->mouse.cursor().hide();
    EXPECT_FALSE(this->mouse.showsCursor());
    this->mouse.moveTo({200, 200});
    EXPECT_FALSE(this->mouse.showsCursor());
    this->mouse.cursor().show();
    EXPECT_TRUE(this->mouse.showsCursor());
}

TYPED_TEST(CursorContract, WantsAShowForEachHide)
{
    this->mouse.cursor().hide();
    this->mouse.cursor().hide();
    this->mouse.cursor().show();
    EXPECT_FALSE(this->mouse.showsCursor());
    this->mouse.cursor().show();
    EXPECT_TRUE(this->mouse.showsCursor());
    this->mouse.cursor().hide();
    EXPECT_FALSE(this->mouse.showsCursor());
}

}  // namespace
}  // namespace Contracts
