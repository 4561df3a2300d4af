#include <gtest/gtest.h>

#include <limits>

#include "Platform/UserDefaults.h"
#include "Support/CallLog.h"
#include "Support/FakeUserDefaults.h"

namespace Platform {
namespace {

using TestSupport::CallLog;
using TestSupport::FakeUserDefaults;

class UserDefaultsConversion : public testing::Test {
protected:
    FakeUserDefaults& holding(const DefaultsValue& value)
    {
        m_userDefaults.values()["key"] = value;
        return m_userDefaults;
    }
    FakeUserDefaults& holdingText(const char* text) { return holding(std::string(text)); }

    std::optional<bool> boolOf(const DefaultsValue& value) { return holding(value).boolValue("key"); }
    std::optional<bool> boolOfText(const char* text) { return holdingText(text).boolValue("key"); }
    std::optional<std::int64_t> integerOf(const DefaultsValue& value) { return holding(value).integerValue("key"); }
    std::optional<std::int64_t> integerOfText(const char* text) { return holdingText(text).integerValue("key"); }
    std::optional<double> doubleOf(const DefaultsValue& value) { return holding(value).doubleValue("key"); }
    std::optional<double> doubleOfText(const char* text) { return holdingText(text).doubleValue("key"); }

    CallLog m_log;
    FakeUserDefaults m_userDefaults{m_log};
};

TEST_F(UserDefaultsConversion, FindsNothingUnderAnAbsentKey)
{
    EXPECT_EQ(m_userDefaults.boolValue("absent"), std::nullopt);
    EXPECT_EQ(m_userDefaults.integerValue("absent"), std::nullopt);
    EXPECT_EQ(m_userDefaults.doubleValue("absent"), std::nullopt);
    EXPECT_EQ(m_userDefaults.stringValue("absent"), std::nullopt);
}

TEST_F(UserDefaultsConversion, TakesANumberAsTrueUnlessItIsZero)
{
    EXPECT_EQ(boolOf(true), true);
    EXPECT_EQ(boolOf(false), false);
    EXPECT_EQ(boolOf(std::int64_t{0}), false);
    EXPECT_EQ(boolOf(std::int64_t{-3}), true);
    EXPECT_EQ(boolOf(0.0), false);
    EXPECT_EQ(boolOf(0.25), true);
}

TEST_F(UserDefaultsConversion, TakesATextAsBoolWhenItSaysSo)
{
    for (const char* text : {"true", "YES", "y", "T", "1", "2.5", "-1"})
        EXPECT_EQ(boolOfText(text), true) << text;
    for (const char* text : {"false", "No", "n", "F", "0", "0.0"})
        EXPECT_EQ(boolOfText(text), false) << text;
    for (const char* text : {"", "maybe", "truex", "tru", " true", "1 x"})
        EXPECT_EQ(boolOfText(text), std::nullopt) << text;
}

TEST_F(UserDefaultsConversion, ReadsIntegers)
{
    EXPECT_EQ(integerOf(std::int64_t{-7}), -7);
    EXPECT_EQ(integerOf(true), 1);
    EXPECT_EQ(integerOf(false), 0);
    EXPECT_EQ(integerOf(7.9), 7);
    EXPECT_EQ(integerOf(-7.9), -7);
    EXPECT_EQ(integerOf(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(integerOf(9223372036854775808.0), std::nullopt);
    EXPECT_EQ(integerOf(std::numeric_limits<double>::quiet_NaN()), std::nullopt);
}

TEST_F(UserDefaultsConversion, ReadsTextsThatAreIntegers)
{
    EXPECT_EQ(integerOfText("42"), 42);
    EXPECT_EQ(integerOfText("9223372036854775807"), 9223372036854775807);
    EXPECT_EQ(integerOfText("-2.5"), -2);
    EXPECT_EQ(integerOfText("9223372036854775808"), std::nullopt);
    EXPECT_EQ(integerOfText("42px"), std::nullopt);
    EXPECT_EQ(integerOfText(""), std::nullopt);
    EXPECT_EQ(integerOfText("true"), std::nullopt);
}

TEST_F(UserDefaultsConversion, ReadsDoubles)
{
    EXPECT_EQ(doubleOf(220.5), 220.5);
    EXPECT_EQ(doubleOf(std::int64_t{220}), 220.0);
    EXPECT_EQ(doubleOf(true), 1.0);
    EXPECT_EQ(doubleOf(false), 0.0);
}

TEST_F(UserDefaultsConversion, ReadsTextsThatAreDoubles)
{
    EXPECT_EQ(doubleOfText("4.25"), 4.25);
    EXPECT_EQ(doubleOfText("-1e2"), -100.0);
    EXPECT_EQ(doubleOfText("4,25"), std::nullopt);
    EXPECT_EQ(doubleOfText(" 4"), std::nullopt);
    EXPECT_EQ(doubleOfText("1e999"), std::nullopt);
    EXPECT_EQ(doubleOfText("nan"), std::nullopt);
    EXPECT_EQ(doubleOfText("inf"), std::nullopt);
}

TEST_F(UserDefaultsConversion, TakesOnlyATextAsText)
{
    EXPECT_EQ(holdingText("menu").stringValue("key"), "menu");
    EXPECT_EQ(holdingText("").stringValue("key"), "");
    EXPECT_EQ(holding(true).stringValue("key"), std::nullopt);
    EXPECT_EQ(holding(std::int64_t{1}).stringValue("key"), std::nullopt);
    EXPECT_EQ(holding(1.5).stringValue("key"), std::nullopt);
}

}  // namespace
}  // namespace Platform
