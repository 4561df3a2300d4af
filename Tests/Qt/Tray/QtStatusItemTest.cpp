#include "Platform/Qt/Tray/QtStatusItem.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Platform {
namespace {

std::vector<std::string>& complaints()
{
    static std::vector<std::string> lines;
    return lines;
}

// Collects what Qt's tray icon would write to standard error; that there is no tray
// without a display is another matter.
class QtStatusItemTest : public testing::Test {
protected:
    QtStatusItemTest() : m_former(qInstallMessageHandler(complain)) { complaints().clear(); }
    ~QtStatusItemTest() override { qInstallMessageHandler(m_former); }

    std::vector<QtStatusItem*> items;

private:
    static void complain(QtMsgType, const QMessageLogContext&, const QString& text)
    {
        if (text.startsWith(QLatin1String("QSystemTrayIcon")))
            complaints().push_back(text.toStdString());
    }

    QtMessageHandler m_former;
};

TEST_F(QtStatusItemTest, IsKnownToItsBarWhileItLives)
{
    {
        QtStatusItem item(items);
        EXPECT_EQ(items, std::vector<QtStatusItem*>{&item});
    }
    EXPECT_TRUE(items.empty());
}

TEST_F(QtStatusItemTest, WaitsForItsImageBeforeItIsShown)
{
    for (const auto kind : {TrayKind::dbus, TrayKind::xembed}) {
        QtStatusItem item(items);
        item.show(kind);
        item.button()->setImage(StatusItemImage::plusViewfinder, "Tarnwick");
        EXPECT_EQ(complaints(), std::vector<std::string>{});
    }
}

TEST_F(QtStatusItemTest, WaitsForItsHostBeforeItIsShown)
{
    for (const auto kind : {TrayKind::dbus, TrayKind::xembed}) {
        QtStatusItem item(items);
        item.button()->setImage(StatusItemImage::plusViewfinder, "Tarnwick");
        item.show(kind);
        EXPECT_EQ(complaints(), std::vector<std::string>{});
    }
}

TEST_F(QtStatusItemTest, TellsAtOnceThatThereIsNoMenuToClose)
{
    QtStatusItem item(items);
    int closed = 0;
    item.button()->performClick([&] { ++closed; });
    EXPECT_EQ(closed, 1);
}

}  // namespace
}  // namespace Platform
