#include "Platform/Qt/Tray/QtMenu.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QCoreApplication>
#include <optional>
#include <string>
#include <vector>

namespace Platform {
namespace {

class QtMenuTest : public testing::Test, private MenuDelegate {
protected:
    using Lines = std::vector<std::string>;

    QtMenuTest()
    {
        menu->setDelegate(this);
        menu->addItem("Fish & Chips", {.text = "x", .modifierMask = 0x180000}, [this] { m_lines.emplace_back("chosen"); });
    }

    QAction& firstAction() { return *menu->qtMenu()->actions().front(); }
    Lines takeLines() { return std::exchange(m_lines, {}); }
    std::function<void()> closed()
    {
        return [this] { m_lines.emplace_back("closed"); };
    }

    Lines m_lines;
    std::optional<QtMenu> menu{std::in_place, [this](bool isTracking) { m_lines.emplace_back(isTracking ? "tracking" : "no tracking"); }};

private:
    void menuWillOpen() override { m_lines.emplace_back("will open"); }
};

TEST_F(QtMenuTest, ShowsTitlesAsTheyAreAndTheirHints)
{
    auto& item = menu->addItem("First", {}, [] {});
    menu->addSeparator();
    EXPECT_EQ(firstAction().text().toStdString(), "Fish && Chips");
    EXPECT_EQ(firstAction().shortcut().toString().toStdString(), "Meta+Alt+X");
    item.setTitle("Second…");
    item.setKeyEquivalent({.text = "q"});
    EXPECT_EQ(menu->qtMenu()->actions().at(1)->text().toStdString(), "Second…");
    EXPECT_EQ(menu->qtMenu()->actions().at(1)->shortcut().toString().toStdString(), "Meta+Q");
    EXPECT_TRUE(menu->qtMenu()->actions().at(2)->isSeparator());
}

TEST_F(QtMenuTest, TellsWhenItOpensAndCloses)
{
    menu->popUp({}, closed());
    EXPECT_TRUE(menu->qtMenu()->isVisible());
    EXPECT_EQ(takeLines(), (Lines{"tracking", "will open"}));
    menu->qtMenu()->close();
    EXPECT_EQ(takeLines(), (Lines{"no tracking", "closed"}));
}

TEST_F(QtMenuTest, StaysOpenWhenItIsOpenedAgain)
{
    menu->popUp({}, closed());
    takeLines();
    menu->popUp({}, nullptr);
    EXPECT_TRUE(takeLines().empty());
    menu->qtMenu()->close();
    EXPECT_EQ(takeLines(), (Lines{"no tracking", "closed"}));
}

TEST_F(QtMenuTest, CallsNobodyBackWhenItIsDismissed)
{
    menu->popUp({}, closed());
    takeLines();
    menu->dismiss();
    EXPECT_FALSE(menu->qtMenu()->isVisible());
    EXPECT_EQ(takeLines(), (Lines{"no tracking"}));
}

TEST_F(QtMenuTest, ActsOnAChoiceOnceTheMenusOwnCallHasReturned)
{
    firstAction().trigger();
    EXPECT_TRUE(takeLines().empty());
    QCoreApplication::processEvents();
    EXPECT_EQ(takeLines(), (Lines{"chosen"}));
}

TEST_F(QtMenuTest, DropsAChoiceOfAMenuThatIsGone)
{
    firstAction().trigger();
    menu.reset();
    QCoreApplication::processEvents();
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(QtMenuTest, TakesNoClickWhenNoPressClosedIt)
{
    EXPECT_FALSE(menu->takeClosingClick());
    menu->popUp({}, closed());
    menu->qtMenu()->close();
    EXPECT_FALSE(menu->takeClosingClick());
}

// As a panel does that draws the menu itself, and then says no more.
TEST_F(QtMenuTest, EndsTrackingAtAChoiceFromAPanel)
{
    Q_EMIT menu->qtMenu()->aboutToShow();
    EXPECT_EQ(takeLines(), (Lines{"tracking", "will open"}));
    firstAction().trigger();
    EXPECT_EQ(takeLines(), (Lines{"no tracking"}));
}

TEST_F(QtMenuTest, EndsTrackingWhenItGoes)
{
    Q_EMIT menu->qtMenu()->aboutToShow();
    takeLines();
    menu.reset();
    EXPECT_EQ(takeLines(), (Lines{"no tracking"}));
}

}  // namespace
}  // namespace Platform
