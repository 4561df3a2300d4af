#include "Tarnwick/PersistentSetting.h"

#include <gtest/gtest.h>

#include "Support/FakeUserDefaults.h"
#include "Tarnwick/StatusItemAction.h"

namespace Tarnwick {
namespace {

class PersistentSettingTest : public testing::Test {
protected:
    TestSupport::CallLog log;
    TestSupport::FakeUserDefaults defaults{log};
};

TEST_F(PersistentSettingTest, ReadsTheDefaultWhereTheKeyIsAbsentAndDoesNotWriteIt)
{
    EXPECT_TRUE(PersistentSetting<bool>(defaults, "tarnwick.showMenuBarItem", true).get());
    EXPECT_EQ(PersistentSetting<double>(defaults, "loupe.diameter", 220).get(), 220);
    EXPECT_EQ(PersistentSetting<std::int64_t>(defaults, "count", 3).get(), 3);
    EXPECT_EQ(PersistentSetting<std::string>(defaults, "name", "none").get(), "none");
    EXPECT_TRUE(defaults.values().empty());
}

TEST_F(PersistentSettingTest, WritesUnderItsKey)
{
    PersistentSetting<bool>(defaults, "tarnwick.showMenuBarItem", true).set(false);
    PersistentSetting<double>(defaults, "loupe.zoom", 4).set(5);
    PersistentSetting<std::int64_t>(defaults, "count", 3).set(8);
    PersistentSetting<std::string>(defaults, "name", "").set("text");
    EXPECT_EQ(defaults.values().at("tarnwick.showMenuBarItem"), Platform::DefaultsValue(false));
    EXPECT_EQ(defaults.values().at("loupe.zoom"), Platform::DefaultsValue(5.0));
    EXPECT_EQ(defaults.values().at("count"), Platform::DefaultsValue(std::int64_t(8)));
    EXPECT_EQ(defaults.values().at("name"), Platform::DefaultsValue(std::string("text")));
}

TEST_F(PersistentSettingTest, SeesWhatOthersWriteAtTheNextRead)
{
    const PersistentSetting<double> zoom(defaults, "loupe.zoom", 4);
    EXPECT_EQ(zoom.get(), 4);
    defaults.values()["loupe.zoom"] = 7.5;
    EXPECT_EQ(zoom.get(), 7.5);
    defaults.values().erase("loupe.zoom");
    EXPECT_EQ(zoom.get(), 4);
}

TEST_F(PersistentSettingTest, ReadsTheDefaultWhereTheValueIsOfAnotherKind)
{
    defaults.values()["loupe.zoom"] = std::string("much");
    defaults.values()["tarnwick.showMenuBarItem"] = std::string("perhaps");
    EXPECT_EQ(PersistentSetting<double>(defaults, "loupe.zoom", 4).get(), 4);
    EXPECT_TRUE(PersistentSetting<bool>(defaults, "tarnwick.showMenuBarItem", true).get());
}

TEST_F(PersistentSettingTest, StoresAnEnumerationAsItsRawText)
{
    PersistentSetting<StatusItemAction> action(defaults, "tarnwick.statusItemAction", StatusItemAction::menu);
    EXPECT_EQ(action.get(), StatusItemAction::menu);
    action.set(StatusItemAction::crosshair);
    EXPECT_EQ(defaults.values().at("tarnwick.statusItemAction"), Platform::DefaultsValue(std::string("crosshair")));
    defaults.values()["tarnwick.statusItemAction"] = std::string("loupe");
    EXPECT_EQ(action.get(), StatusItemAction::loupe);
}

TEST_F(PersistentSettingTest, ReadsTheDefaultForAnUnknownRawText)
{
    const PersistentSetting<StatusItemAction> action(defaults, "tarnwick.statusItemAction", StatusItemAction::menu);
    for (const char* text : {"", "Menu", "magnifier", "crosshair "}) {
        defaults.values()["tarnwick.statusItemAction"] = std::string(text);
        EXPECT_EQ(action.get(), StatusItemAction::menu) << text;
    }
    defaults.values()["tarnwick.statusItemAction"] = true;
    EXPECT_EQ(action.get(), StatusItemAction::menu);
}

TEST(StatusItemAction, HasItsCasesInOrderWithTheirRawTexts)
{
    std::vector<std::string_view> texts;
    texts.reserve(3);
    for (const auto action : allStatusItemActions)
        texts.push_back(rawValue(action));
    EXPECT_EQ(texts, (std::vector<std::string_view>{"menu", "crosshair", "loupe"}));
}

TEST(StatusItemAction, HasNoValueForAnUnknownRawText)
{
    EXPECT_EQ(statusItemActionOf("loupe"), StatusItemAction::loupe);
    EXPECT_EQ(statusItemActionOf("nothing"), std::nullopt);
}

}  // namespace
}  // namespace Tarnwick
