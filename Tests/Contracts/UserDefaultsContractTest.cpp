// What every store of settings promises, asked of the one in memory and of the JSON file.
#include <gtest/gtest.h>

#include "Platform/Freedesktop/JsonUserDefaults.h"
#include "Support/FakeUserDefaults.h"
#include "Support/TemporaryFolder.h"

namespace Contracts {
namespace {

using Platform::DefaultsValue;

class InMemory {
public:
    Platform::UserDefaults& defaults() { return m_defaults; }
    void writeFromAnotherProcess(const std::string& key, const DefaultsValue& value) { m_defaults.values()[key] = value; }
    void makeUnwritable() { m_defaults.loseWrites(true); }

private:
    TestSupport::CallLog m_log;
    TestSupport::FakeUserDefaults m_defaults{m_log};
};

class JsonFile {
public:
    Platform::UserDefaults& defaults() { return m_defaults; }
    void writeFromAnotherProcess(const std::string& key, const DefaultsValue& value)
    {
        Platform::Freedesktop::JsonUserDefaults(m_file).setObject(key, value);
    }
    // Where the lock belongs stands something that is no file.
    void makeUnwritable()
    {
        auto lock = m_file;
        lock += ".lock";
        std::filesystem::remove(lock);
        std::filesystem::create_directory(lock);
    }

private:
    TestSupport::TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.path() / "defaults.json";
    Platform::Freedesktop::JsonUserDefaults m_defaults{m_file};
};

template <typename Store> class UserDefaultsContract : public testing::Test {
protected:
    Platform::UserDefaults& defaults() { return store.defaults(); }
    std::optional<DefaultsValue> object(std::string_view key) { return defaults().object(key); }

    Store store;
};

using Stores = testing::Types<InMemory, JsonFile>;
TYPED_TEST_SUITE(UserDefaultsContract, Stores);

const DefaultsValue no = false;
const DefaultsValue three = std::int64_t{3};
const DefaultsValue threePointZero = 3.0;
const DefaultsValue text = std::string("false");
const DefaultsValue emptyText = std::string();

TYPED_TEST(UserDefaultsContract, HasNothingAtFirst)
{
    EXPECT_EQ(this->object("key"), std::nullopt);
    EXPECT_TRUE(this->defaults().dictionaryRepresentation().empty());
    EXPECT_EQ(this->defaults().boolValue("key"), std::nullopt);
    EXPECT_EQ(this->defaults().stringValue("key"), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, TellsAbsentFalseAndTextApart)
{
    this->defaults().setObject("no", no);
    this->defaults().setObject("text", text);
    this->defaults().setObject("empty", emptyText);
    EXPECT_EQ(this->object("no"), no);
    EXPECT_EQ(this->object("text"), text);
    EXPECT_EQ(this->object("empty"), emptyText);
    EXPECT_EQ(this->object("absent"), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, KeepsWholeAndOtherNumbersApart)
{
    this->defaults().setObject("whole", three);
    this->defaults().setObject("other", threePointZero);
    EXPECT_EQ(this->object("whole"), three);
    EXPECT_EQ(this->object("other"), threePointZero);
    this->defaults().setObject("largest", std::int64_t{9223372036854775807});
    EXPECT_EQ(this->defaults().integerValue("largest"), 9223372036854775807);
    this->defaults().setObject("tenth", 0.1);
    EXPECT_EQ(this->defaults().doubleValue("tenth"), 0.1);
}

TYPED_TEST(UserDefaultsContract, KeepsTextsAndKeysOfAnyKind)
{
    const std::string line = "\"a\\b\"\n\t\u00fc \u2318";
    for (const std::string key : {"", "a.b", "with space", "\u2318"}) {
        this->defaults().setObject(key, line);
        EXPECT_EQ(this->defaults().stringValue(key), line) << key;
    }
    EXPECT_EQ(this->defaults().dictionaryRepresentation().size(), 4U);
}

TYPED_TEST(UserDefaultsContract, ReplacesAValueByOneOfAnotherType)
{
    this->defaults().setObject("key", no);
    this->defaults().setObject("key", text);
    EXPECT_EQ(this->object("key"), text);
    this->defaults().setObject("key", three);
    EXPECT_EQ(this->object("key"), three);
}

TYPED_TEST(UserDefaultsContract, RemovesOneKeyOnly)
{
    this->defaults().setObject("key", three);
    this->defaults().setObject("key2", no);
    this->defaults().removeObject("key");
    this->defaults().removeObject("absent");
    EXPECT_EQ(this->object("key"), std::nullopt);
    EXPECT_EQ(this->object("key2"), no);
}

TYPED_TEST(UserDefaultsContract, ListsAllThereIs)
{
    this->defaults().setObject("b", three);
    this->defaults().setObject("a", text);
    EXPECT_EQ(this->defaults().dictionaryRepresentation(), (std::map<std::string, DefaultsValue>{{"a", text}, {"b", three}}));
}

TYPED_TEST(UserDefaultsContract, SeesAtOnceWhatAnotherProcessWrites)
{
    EXPECT_EQ(this->object("key"), std::nullopt);
    this->store.writeFromAnotherProcess("key", three);
    EXPECT_EQ(this->object("key"), three);
    this->store.writeFromAnotherProcess("key", text);
    EXPECT_EQ(this->object("key"), text);
    EXPECT_EQ(this->defaults().dictionaryRepresentation().at("key"), text);
}

TYPED_TEST(UserDefaultsContract, LosesAWriteThatCannotBeStoredAndKeepsTheRest)
{
    this->defaults().setObject("key", three);
    this->store.makeUnwritable();
    testing::internal::CaptureStderr();
    this->defaults().setObject("key", text);
    this->defaults().setObject("new", text);
    this->defaults().removeObject("key");
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(this->object("key"), three);
    EXPECT_EQ(this->object("new"), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, ConvertsWhatIsStored)
{
    this->defaults().setObject("three", three);
    this->defaults().setObject("text", text);
    this->defaults().setObject("no", no);
    EXPECT_EQ(this->defaults().boolValue("three"), true);
    EXPECT_EQ(this->defaults().boolValue("text"), false);
    EXPECT_EQ(this->defaults().integerValue("no"), 0);
    EXPECT_EQ(this->defaults().doubleValue("three"), 3.0);
    EXPECT_EQ(this->defaults().stringValue("three"), std::nullopt);
    EXPECT_EQ(this->defaults().integerValue("text"), std::nullopt);
}

}  // namespace
}  // namespace Contracts
