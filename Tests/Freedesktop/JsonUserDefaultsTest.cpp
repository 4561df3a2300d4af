#include "Platform/Freedesktop/JsonUserDefaults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <limits>
#include <sstream>

#include "Freedesktop/SettingsFolder.h"
#include "Support/AllocationCounter.h"
#include "Support/WaitUntil.h"

namespace Platform::Freedesktop {
namespace {

using ::Freedesktop::SettingsFolder;
using ::Freedesktop::textOf;
using ::Freedesktop::writeText;

unsigned modeOf(const std::filesystem::path& path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

DefaultsValue text(const char* value) { return std::string(value); }

// How often this process has called read() so far.
long readCalls()
{
    std::istringstream lines(textOf("/proc/self/io"));
    for (std::string name, value; lines >> name >> value;) {
        if (name == "syscr:")
            return std::stol(value);
    }
    return -1;
}

TEST(JsonUserDefaults, HasNothingWithoutAFileAndMakesNoneByReading)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    EXPECT_EQ(defaults.object("loupe.zoom"), std::nullopt);
    EXPECT_TRUE(defaults.dictionaryRepresentation().empty());
    EXPECT_TRUE(std::filesystem::is_empty(settings.folder.path()));
}

TEST(JsonUserDefaults, TellsTypesApartAfterARoundTrip)
{
    const SettingsFolder settings;
    {
        JsonUserDefaults defaults(settings.file);
        defaults.setObject("diameter", 220.0);
        defaults.setObject("count", std::int64_t{220});
        defaults.setObject("off", false);
        defaults.setObject("zero", std::int64_t{0});
        defaults.setObject("text", text("false"));
        defaults.setObject("empty", text(""));
    }
    JsonUserDefaults defaults(settings.file);
    EXPECT_EQ(defaults.object("diameter"), DefaultsValue(220.0));
    EXPECT_EQ(defaults.object("count"), DefaultsValue(std::int64_t{220}));
    EXPECT_EQ(defaults.object("off"), DefaultsValue(false));
    EXPECT_EQ(defaults.object("zero"), DefaultsValue(std::int64_t{0}));
    EXPECT_EQ(defaults.object("text"), text("false"));
    EXPECT_EQ(defaults.object("empty"), text(""));
    EXPECT_EQ(defaults.object("absent"), std::nullopt);
    EXPECT_EQ(defaults.dictionaryRepresentation().size(), 6U);
}

TEST(JsonUserDefaults, KeepsExtremeValuesExactly)
{
    const SettingsFolder settings;
    const std::vector<DefaultsValue> values = {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(), 0.1, -0.0, 1e300,
        5e-324, 1e22, 123456789.0, text("\"\\\n\t\x01 \xe2\x8c\x98 \xf0\x9f\x8c\x90"), std::string("nul \0 inside", 12)};
    {
        JsonUserDefaults defaults(settings.file);
        for (std::size_t i = 0; i < values.size(); ++i)
            defaults.setObject("key" + std::to_string(i), values[i]);
    }
    JsonUserDefaults defaults(settings.file);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(defaults.object("key" + std::to_string(i)), values[i]) << i;
}

TEST(JsonUserDefaults, WritesAnIndentedObjectWithAMemberPerKey)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("loupe.zoom", 4.0);
    defaults.setObject("KeyboardShortcuts_toggleCrosshair", false);
    EXPECT_EQ(textOf(settings.file), "{\n    \"KeyboardShortcuts_toggleCrosshair\": false,\n    \"loupe.zoom\": 4.0\n}\n");
}

TEST(JsonUserDefaults, ReplacesAValueByOneOfAnotherType)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("key", std::int64_t{1});
    defaults.setObject("key", 1.0);
    EXPECT_EQ(defaults.object("key"), DefaultsValue(1.0));
    defaults.setObject("key", true);
    EXPECT_EQ(defaults.object("key"), DefaultsValue(true));
}

TEST(JsonUserDefaults, RemovesAKeyAndLeavesTheOthers)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("gone", true);
    defaults.setObject("stays", true);
    defaults.removeObject("gone");
    EXPECT_EQ(defaults.object("gone"), std::nullopt);
    EXPECT_EQ(defaults.object("stays"), DefaultsValue(true));
}

TEST(JsonUserDefaults, WritesNothingWhenNothingChanges)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    defaults.removeObject("absent");
    EXPECT_TRUE(std::filesystem::is_empty(settings.folder.path()));
    defaults.setObject("zoom", 4.0);
    const auto before = signatureOf(settings.file);
    defaults.setObject("zoom", 4.0);
    defaults.removeObject("absent");
    EXPECT_EQ(signatureOf(settings.file), before);
}

TEST(JsonUserDefaults, SeesWhatAnotherOneWrites)
{
    const SettingsFolder settings;
    JsonUserDefaults one(settings.file);
    JsonUserDefaults other(settings.file);
    EXPECT_EQ(other.object("n"), std::nullopt);
    for (std::int64_t n = 0; n < 200; ++n) {
        one.setObject("n", n);
        ASSERT_EQ(other.object("n"), DefaultsValue(n));
    }
    one.removeObject("n");
    EXPECT_EQ(other.object("n"), std::nullopt);
    std::filesystem::remove(settings.file);
    EXPECT_TRUE(other.dictionaryRepresentation().empty());
}

// Same inode, same size, often the same tick of the file system's clock.
TEST(JsonUserDefaults, SeesChangesInPlaceWithinOneTickOfTheClock)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    for (int round = 0; round < 300; ++round) {
        writeText(settings.file, "{\"n\": 1}");
        ASSERT_EQ(defaults.object("n"), DefaultsValue(std::int64_t{1}));
        writeText(settings.file, "{\"n\": 2}");
        ASSERT_EQ(defaults.object("n"), DefaultsValue(std::int64_t{2}));
    }
}

// Kernels with coarse clocks give two changes within a tick the same signature.
TEST(JsonUserDefaults, ReadsAFileThatChangedAMomentAgoAgain)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("zoom", 4.0);
    defaults.object("zoom");
    ASSERT_FALSE(isSettled(signatureOf(settings.file)));
    const long before = readCalls();
    for (int i = 0; i < 10; ++i)
        defaults.object("zoom");
    EXPECT_GE(readCalls() - before, 10);
}

// In chunks: what is compared may be longer than one.
TEST(JsonUserDefaults, SeesChangesInPlaceOfALargeFileWithinOneTickOfTheClock)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    const std::string filling(40000, 'x');
    for (int round = 0; round < 100; ++round) {
        writeText(settings.file, R"({"a": ")" + filling + R"(", "n": 1})");
        ASSERT_EQ(defaults.object("n"), DefaultsValue(std::int64_t{1}));
        writeText(settings.file, R"({"a": ")" + filling + R"(", "n": 2})");
        ASSERT_EQ(defaults.object("n"), DefaultsValue(std::int64_t{2}));
    }
}

// A freed inode may be the new file's.
TEST(JsonUserDefaults, SeesFilesThatReplaceEachOtherWithinOneTickOfTheClock)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    for (int round = 0; round < 300; ++round) {
        for (const int value : {1, 2}) {
            std::filesystem::remove(settings.file);
            writeText(settings.file, "{\"n\": " + std::to_string(value) + "}");
            ASSERT_EQ(defaults.object("n"), DefaultsValue(std::int64_t{value}));
        }
    }
}

TEST(JsonUserDefaults, AllocatesNothingToReadANumberAgain)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("zoom", 4.0);
    for (const bool mustBeSettled : {false, true}) {
        ASSERT_TRUE(!mustBeSettled || TestSupport::waitUntil([&] { return isSettled(signatureOf(settings.file)); }));
        ASSERT_EQ(defaults.object("zoom"), DefaultsValue(4.0));
        const TestSupport::AllocationCounter counter;
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(defaults.doubleValue("zoom"), 4.0);
        EXPECT_EQ(counter.count(), 0) << mustBeSettled;
    }
}

TEST(JsonUserDefaults, DoesNotReadASettledFileAgain)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("zoom", 4.0);
    ASSERT_TRUE(TestSupport::waitUntil([&] { return isSettled(signatureOf(settings.file)); }));
    ASSERT_EQ(defaults.object("zoom"), DefaultsValue(4.0));
    const long before = readCalls();
    const long forAsking = readCalls() - before;
    for (int i = 0; i < 1000; ++i)
        defaults.object("zoom");
    EXPECT_EQ(readCalls() - before, 2 * forAsking);
    writeText(settings.file, "{\"zoom\": 5.0}");
    EXPECT_EQ(defaults.object("zoom"), DefaultsValue(5.0));
}

TEST(JsonUserDefaults, PreservesWhatOthersWroteAndReadsItAsAbsent)
{
    const SettingsFolder settings;
    writeText(settings.file, R"({"nothing": null, "list": [1, [2.5, "x"]], "object": {"a": {"b": true}}, "huge": 18446744073709551615, "known": 1})");
    JsonUserDefaults defaults(settings.file);
    EXPECT_EQ(defaults.object("nothing"), std::nullopt);
    EXPECT_EQ(defaults.object("list"), std::nullopt);
    EXPECT_EQ(defaults.object("object"), std::nullopt);
    EXPECT_EQ(defaults.object("huge"), DefaultsValue(18446744073709551616.0));
    EXPECT_EQ(defaults.dictionaryRepresentation().size(), 2U);
    defaults.setObject("known", std::int64_t{2});
    EXPECT_EQ(textOf(settings.file),
        "{\n    \"huge\": 18446744073709551615,\n    \"known\": 2,\n    \"list\": [\n        1,\n        [\n            2.5,\n            \"x\"\n    "
        "    ]\n"
        "    ],\n    \"nothing\": null,\n    \"object\": {\n        \"a\": {\n            \"b\": true\n        }\n    }\n}\n");
}

TEST(JsonUserDefaults, SetsAndRemovesKeysThatHeldForeignKinds)
{
    const SettingsFolder settings;
    writeText(settings.file, R"({"list": [1], "nothing": null})");
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("list", true);
    defaults.removeObject("nothing");
    EXPECT_EQ(textOf(settings.file), "{\n    \"list\": true\n}\n");
}

TEST(JsonUserDefaults, MakesPrivateFoldersAndFiles)
{
    const SettingsFolder settings;
    const auto file = settings.folder.path() / "new" / "tarnwick" / "defaults.json";
    const auto formerMask = umask(0);
    JsonUserDefaults(file).setObject("key", true);
    umask(formerMask);
    EXPECT_EQ(modeOf(settings.folder.path() / "new"), 0700U);
    EXPECT_EQ(modeOf(file.parent_path()), 0700U);
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(file.string() + ".lock"), 0600U);
}

TEST(JsonUserDefaults, KeepsTheModeOfAFile)
{
    const SettingsFolder settings;
    writeText(settings.file, "{}");
    ASSERT_EQ(chmod(settings.file.c_str(), 0664), 0);
    JsonUserDefaults(settings.file).setObject("key", true);
    EXPECT_EQ(modeOf(settings.file), 0664U);
    EXPECT_EQ(JsonUserDefaults(settings.file).object("key"), DefaultsValue(true));
}

TEST(JsonUserDefaults, WritesThroughSymbolicLinks)
{
    const SettingsFolder settings;
    const auto kept = settings.folder.path() / "kept";
    std::filesystem::create_directory(kept);
    writeText(kept / "real.json", R"({"old": 1})");
    std::filesystem::create_symlink("kept/second", settings.file);
    std::filesystem::create_symlink("real.json", kept / "second");
    JsonUserDefaults(settings.file).setObject("key", true);
    EXPECT_TRUE(std::filesystem::is_symlink(settings.file));
    EXPECT_TRUE(std::filesystem::is_symlink(kept / "second"));
    EXPECT_EQ(textOf(kept / "real.json"), "{\n    \"key\": true,\n    \"old\": 1\n}\n");
    EXPECT_EQ(JsonUserDefaults(settings.file).object("key"), DefaultsValue(true));
}

TEST(JsonUserDefaults, MakesTheFileThatADanglingLinkNames)
{
    const SettingsFolder settings;
    const auto real = settings.folder.path() / "elsewhere" / "real.json";
    std::filesystem::create_symlink(real, settings.file);
    JsonUserDefaults defaults(settings.file);
    EXPECT_EQ(defaults.object("key"), std::nullopt);
    defaults.setObject("key", true);
    EXPECT_TRUE(std::filesystem::is_symlink(settings.file));
    EXPECT_EQ(textOf(real), "{\n    \"key\": true\n}\n");
    EXPECT_EQ(defaults.object("key"), DefaultsValue(true));
}

TEST(JsonUserDefaults, LeavesOnlyTheFileAndItsLock)
{
    const SettingsFolder settings;
    writeText(settings.file.string() + ".new", "left behind by a killed process");
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("key", true);
    defaults.removeObject("key");
    std::filesystem::directory_iterator files(settings.folder.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 2);
    EXPECT_EQ(textOf(settings.file), "{}\n");
    EXPECT_TRUE(std::filesystem::exists(settings.file.string() + ".lock"));
}

}  // namespace
}  // namespace Platform::Freedesktop
