#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <limits>

#include "Freedesktop/ForkedChild.h"
#include "Freedesktop/SettingsFolder.h"
#include "Platform/Freedesktop/JsonUserDefaults.h"
#include "Support/WaitUntil.h"

namespace Platform::Freedesktop {
namespace {

using ::Freedesktop::ForkedChild;
using ::Freedesktop::SettingsFolder;
using ::Freedesktop::standardErrorOf;
using ::Freedesktop::textOf;
using ::Freedesktop::writeText;
using namespace std::chrono_literals;

long linesIn(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

// Files of this process cannot grow beyond a size.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size) : m_formerHandler(signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit = {size, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_former);
        signal(SIGXFSZ, m_formerHandler);
    }

private:
    rlimit m_former = {};
    sighandler_t m_formerHandler;
};

TEST(JsonUserDefaults, KeepsACopyOfACorruptFileAndGoesOnWithTheDefaults)
{
    const SettingsFolder settings;
    writeText(settings.file, "{\"loupe.zoom\": 4.0, \"loupe.dia");
    const auto said = standardErrorOf([&] {
        JsonUserDefaults defaults(settings.file);
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(defaults.object("loupe.zoom"), std::nullopt);
        EXPECT_TRUE(defaults.dictionaryRepresentation().empty());
    });
    const auto copies = settings.corruptCopies();
    ASSERT_EQ(copies.size(), 1U);
    EXPECT_EQ(textOf(copies[0]), "{\"loupe.zoom\": 4.0, \"loupe.dia");
    EXPECT_EQ(said,
        "tarnwick: settings: " + settings.file.string() + " is not readable as JSON; the defaults apply; a copy is kept in " + copies[0].string() +
            "\n");
}

TEST(JsonUserDefaults, MakesAGoodFileByTheNextWrite)
{
    const SettingsFolder settings;
    writeText(settings.file, "not json");
    const auto said = standardErrorOf([&] {
        JsonUserDefaults defaults(settings.file);
        defaults.object("key");
        defaults.setObject("key", true);
        EXPECT_EQ(defaults.object("key"), DefaultsValue(true));
    });
    EXPECT_EQ(textOf(settings.file), "{\n    \"key\": true\n}\n");
    ASSERT_EQ(settings.corruptCopies().size(), 1U);
    EXPECT_EQ(textOf(settings.corruptCopies()[0]), "not json");
    EXPECT_EQ(linesIn(said), 1);
}

TEST(JsonUserDefaults, SaysSoAndKeepsACopyWhenTheFirstCallIsAWrite)
{
    const SettingsFolder settings;
    writeText(settings.file, "[1, 2]");
    const auto said = standardErrorOf([&] { JsonUserDefaults(settings.file).setObject("key", true); });
    EXPECT_EQ(textOf(settings.file), "{\n    \"key\": true\n}\n");
    ASSERT_EQ(settings.corruptCopies().size(), 1U);
    EXPECT_EQ(textOf(settings.corruptCopies()[0]), "[1, 2]");
    EXPECT_EQ(linesIn(said), 1);
}

TEST(JsonUserDefaults, KeepsOneCopyPerCorruptionAndOverwritesNone)
{
    const SettingsFolder settings;
    standardErrorOf([&] {
        for (const char* text : {"first", "first", "second", "", "\xff\xfe", "{\"a\": 1e400}", "first"}) {
            writeText(settings.file, text);
            JsonUserDefaults(settings.file).object("key");
            JsonUserDefaults(settings.file).object("key");
        }
    });
    std::vector<std::string> kept;
    for (const auto& copy : settings.corruptCopies())
        kept.push_back(textOf(copy));
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(kept, (std::vector<std::string>{"", "first", "second", "{\"a\": 1e400}", "\xff\xfe"}));
}

TEST(JsonUserDefaults, TakesAnotherNameWhereACopyWasCutShort)
{
    const SettingsFolder settings;
    writeText(settings.file, "corrupt");
    standardErrorOf([&] { JsonUserDefaults(settings.file).object("key"); });
    ASSERT_EQ(settings.corruptCopies().size(), 1U);
    writeText(settings.corruptCopies()[0], "cor");
    standardErrorOf([&] { JsonUserDefaults(settings.file).object("key"); });
    ASSERT_EQ(settings.corruptCopies().size(), 2U);
}

TEST(JsonUserDefaults, TreatsADocumentNestedWithoutEndAsCorrupt)
{
    const SettingsFolder settings;
    writeText(settings.file, "{\"a\": " + std::string(200'000, '[') + std::string(200'000, ']') + "}");
    standardErrorOf([&] { JsonUserDefaults(settings.file).setObject("key", true); });
    EXPECT_EQ(textOf(settings.file), "{\n    \"key\": true\n}\n");
    EXPECT_EQ(settings.corruptCopies().size(), 1U);
}

TEST(JsonUserDefaults, RefusesValuesThatJsonDoesNotHave)
{
    const SettingsFolder settings;
    const auto said = standardErrorOf([&] {
        JsonUserDefaults defaults(settings.file);
        defaults.setObject("infinite", std::numeric_limits<double>::infinity());
        defaults.setObject("nan", std::numeric_limits<double>::quiet_NaN());
        defaults.setObject("text", std::string("\xff"));
        defaults.setObject("\xff", true);
        defaults.setObject("good", true);
    });
    EXPECT_EQ(linesIn(said), 4);
    EXPECT_TRUE(said.starts_with("tarnwick: settings: cannot store \"infinite\": JSON has no such value\n")) << said;
    EXPECT_EQ(textOf(settings.file), "{\n    \"good\": true\n}\n");
}

TEST(JsonUserDefaults, LosesOnlyTheOneWriteWhereTheFolderCannotBe)
{
    const SettingsFolder settings;
    const auto blocker = settings.folder.path() / "tarnwick";
    writeText(blocker, "a file where the folder should be");
    JsonUserDefaults defaults(blocker / "defaults.json");
    const auto said = standardErrorOf([&] {
        EXPECT_EQ(defaults.object("key"), std::nullopt);
        defaults.setObject("key", true);
        defaults.removeObject("key");
    });
    EXPECT_EQ(said, "tarnwick: settings: cannot store \"key\": cannot make " + blocker.string() + ": Not a directory\n");
    std::filesystem::remove(blocker);
    EXPECT_EQ(standardErrorOf([&] { defaults.setObject("key", true); }), "");
    EXPECT_EQ(defaults.object("key"), DefaultsValue(true));
}

TEST(JsonUserDefaults, LeavesWhatCannotBeReadAlone)
{
    const SettingsFolder settings;
    std::filesystem::create_directory(settings.file);
    JsonUserDefaults defaults(settings.file);
    const auto said = standardErrorOf([&] {
        defaults.object("key");
        defaults.object("key");
        defaults.setObject("key", true);
    });
    EXPECT_EQ(linesIn(said), 2) << said;
    EXPECT_TRUE(std::filesystem::is_directory(settings.file));
    std::filesystem::remove(settings.file);
    ASSERT_EQ(mkfifo(settings.file.c_str(), 0600), 0);
    EXPECT_EQ(linesIn(standardErrorOf([&] { defaults.setObject("key", true); })), 1);
    EXPECT_TRUE(std::filesystem::is_fifo(settings.file));
}

// The write stops in the middle of the contents, as on a full disk.
TEST(JsonUserDefaults, KeepsTheFormerFileWhenAWriteStopsHalfWay)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("kept", true);
    const auto said = standardErrorOf([&] {
        const FileSizeLimit limit(4096);
        defaults.setObject("long", std::string(10'000, 'x'));
    });
    EXPECT_EQ(said, "tarnwick: settings: cannot store \"long\": cannot write " + settings.file.string() + ": File too large\n");
    EXPECT_EQ(textOf(settings.file), "{\n    \"kept\": true\n}\n");
    EXPECT_FALSE(std::filesystem::exists(settings.file.string() + ".new"));
    EXPECT_EQ(standardErrorOf([&] { defaults.setObject("long", std::string(10'000, 'x')); }), "");
    EXPECT_EQ(defaults.object("long"), DefaultsValue(std::string(10'000, 'x')));
}

TEST(JsonUserDefaults, DoesNotWriteOverACorruptFileWithoutACopyOfIt)
{
    const SettingsFolder settings;
    const std::string corrupt(10'000, 'x');
    writeText(settings.file, corrupt);
    JsonUserDefaults defaults(settings.file);
    const auto said = standardErrorOf([&] {
        const FileSizeLimit limit(4096);
        defaults.setObject("key", true);
    });
    EXPECT_EQ(linesIn(said), 1) << said;
    EXPECT_EQ(textOf(settings.file), corrupt);
    EXPECT_TRUE(settings.corruptCopies().empty());
    standardErrorOf([&] { defaults.setObject("key", true); });
    EXPECT_EQ(textOf(settings.file), "{\n    \"key\": true\n}\n");
    EXPECT_EQ(settings.corruptCopies().size(), 1U);
}

TEST(JsonUserDefaults, DoesNotWaitForEverForAStuckProcess)
{
    const SettingsFolder settings;
    const auto lockFile = settings.file.string() + ".lock";
    ForkedChild holder([&] {
        const int file = open(lockFile.c_str(), O_RDWR | O_CREAT, 0600);
        flock(file, LOCK_EX);
        writeText(settings.folder.path() / "held", "");
        pause();
    });
    ASSERT_TRUE(TestSupport::waitUntil([&] { return std::filesystem::exists(settings.folder.path() / "held"); }));
    JsonUserDefaults defaults(settings.file, 1500ms);
    const auto start = std::chrono::steady_clock::now();
    const auto said = standardErrorOf([&] { defaults.setObject("first", true); });
    const auto afterFirst = std::chrono::steady_clock::now();
    EXPECT_EQ(said, "tarnwick: settings: cannot store \"first\": cannot lock " + settings.file.string() + ": another process holds the lock\n");
    EXPECT_GE(afterFirst - start, 1500ms);
    EXPECT_EQ(linesIn(standardErrorOf([&] { defaults.setObject("second", true); })), 1);
    EXPECT_LT(std::chrono::steady_clock::now() - afterFirst, 1000ms);
    holder.kill();
    EXPECT_EQ(standardErrorOf([&] { defaults.setObject("third", true); }), "");
    EXPECT_EQ(textOf(settings.file), "{\n    \"third\": true\n}\n");
}

}  // namespace
}  // namespace Platform::Freedesktop
