// Settings on a disk that takes nothing.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>

#include "Freedesktop/SettingsFolder.h"
#include "Platform/Freedesktop/JsonUserDefaults.h"

namespace Platform::Freedesktop {
namespace {

using ::Freedesktop::SettingsFolder;
using ::Freedesktop::standardErrorOf;
using ::Freedesktop::textOf;
using ::Freedesktop::writeText;

// A small file system of its own over a folder, seen by this process only. Root can make
// one, and anybody where user namespaces are allowed.
class PrivateFileSystem {
public:
    explicit PrivateFileSystem(std::filesystem::path folder) : m_folder(std::move(folder))
    {
        static const bool isPrivate = makeMountsPrivate();
        m_isMounted = isPrivate && mount("tmpfs", m_folder.c_str(), "tmpfs", 0, "size=64k") == 0;
    }
    ~PrivateFileSystem()
    {
        if (m_isMounted)
            umount2(m_folder.c_str(), MNT_DETACH);
    }

    explicit operator bool() const { return m_isMounted; }
    bool setReadOnly(bool isReadOnly)
    {
        unsigned long flags = MS_REMOUNT;
        if (isReadOnly)
            flags |= MS_RDONLY;
        return mount("tmpfs", m_folder.c_str(), "tmpfs", flags, "size=64k") == 0;
    }

private:
    static bool makeMountsPrivate()
    {
        const auto user = std::to_string(getuid());
        const auto group = std::to_string(getgid());
        if (unshare(CLONE_NEWNS) != 0) {
            if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
                return false;
            writeText("/proc/self/uid_map", "0 " + user + " 1");
            writeText("/proc/self/setgroups", "deny");
            writeText("/proc/self/gid_map", "0 " + group + " 1");
        }
        return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }

    std::filesystem::path m_folder;
    bool m_isMounted = false;
};

// A folder in which this user may make, rename and remove nothing; nor may root, who gives up
// for so long what lets it write everywhere.
class ProtectedFolder {
public:
    explicit ProtectedFolder(std::filesystem::path folder) : m_folder(std::move(folder)), m_former(capabilities())
    {
        auto reduced = m_former;
        reduced[0].effective &= ~(1U << CAP_DAC_OVERRIDE);
        setCapabilities(reduced);
        std::filesystem::permissions(m_folder, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    }
    ~ProtectedFolder()
    {
        std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all);
        setCapabilities(m_former);
    }
    ProtectedFolder(const ProtectedFolder&) = delete;
    ProtectedFolder& operator=(const ProtectedFolder&) = delete;

private:
    using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

    static Capabilities capabilities()
    {
        Capabilities current = {};
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        EXPECT_EQ(syscall(SYS_capget, &header, current.data()), 0);
        return current;
    }

    static void setCapabilities(const Capabilities& wanted)
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        EXPECT_EQ(syscall(SYS_capset, &header, wanted.data()), 0);
    }

    const std::filesystem::path m_folder;
    const Capabilities m_former;
};

TEST(JsonUserDefaults, GoesOnWithoutTheValueWhereItMayNotWrite)
{
    const SettingsFolder settings;
    JsonUserDefaults defaults(settings.file);
    {
        const ProtectedFolder folder(settings.folder.path());
        const auto said = standardErrorOf([&] { defaults.setObject("key", true); });
        EXPECT_EQ(said, "tarnwick: settings: cannot store \"key\": cannot lock " + settings.file.string() + ": Permission denied\n");
        EXPECT_EQ(defaults.object("key"), std::nullopt);
    }
    defaults.setObject("kept", true);
    {
        const ProtectedFolder folder(settings.folder.path());
        const auto said = standardErrorOf([&] { defaults.setObject("key", true); });
        EXPECT_EQ(said, "tarnwick: settings: cannot store \"key\": cannot write " + settings.file.string() + ": Permission denied\n");
        EXPECT_EQ(defaults.object("kept"), DefaultsValue(true));
        EXPECT_EQ(defaults.object("key"), std::nullopt);
    }
    EXPECT_EQ(standardErrorOf([&] { defaults.setObject("key", true); }), "");
    EXPECT_EQ(defaults.object("key"), DefaultsValue(true));
}

TEST(JsonUserDefaults, SaysThatACorruptFileHasNoCopyWhereItMayNotWrite)
{
    const SettingsFolder settings;
    writeText(settings.file, "corrupt");
    JsonUserDefaults defaults(settings.file);
    const auto said = standardErrorOf([&] {
        const ProtectedFolder folder(settings.folder.path());
        EXPECT_EQ(defaults.object("key"), std::nullopt);
        EXPECT_EQ(defaults.object("key"), std::nullopt);
    });
    EXPECT_EQ(said, "tarnwick: settings: " + settings.file.string() + " is not readable as JSON; the defaults apply; no copy could be kept\n");
    EXPECT_TRUE(settings.corruptCopies().empty());
    EXPECT_EQ(textOf(settings.file), "corrupt");
}

TEST(JsonUserDefaults, GoesOnWithoutTheValueWhileTheDiskIsFull)
{
    const SettingsFolder settings;
    const PrivateFileSystem disk(settings.folder.path());
    if (!disk)
        GTEST_SKIP() << "this user may not mount a file system";
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("kept", true);
    const auto filler = settings.folder.path() / "filler";
    writeText(filler, std::string(1'000'000, 'x'));
    const auto said = standardErrorOf([&] { defaults.setObject("key", true); });
    EXPECT_EQ(said, "tarnwick: settings: cannot store \"key\": cannot write " + settings.file.string() + ": No space left on device\n");
    EXPECT_EQ(defaults.object("kept"), DefaultsValue(true));
    EXPECT_EQ(defaults.object("key"), std::nullopt);
    std::filesystem::remove(filler);
    EXPECT_EQ(standardErrorOf([&] { defaults.setObject("key", true); }), "");
    EXPECT_EQ(defaults.object("key"), DefaultsValue(true));
}

TEST(JsonUserDefaults, GoesOnWithoutTheValueWhileTheFolderIsReadOnly)
{
    const SettingsFolder settings;
    PrivateFileSystem disk(settings.folder.path());
    if (!disk)
        GTEST_SKIP() << "this user may not mount a file system";
    JsonUserDefaults defaults(settings.file);
    defaults.setObject("kept", true);
    ASSERT_TRUE(disk.setReadOnly(true));
    const auto said = standardErrorOf([&] { defaults.setObject("key", true); });
    EXPECT_EQ(said, "tarnwick: settings: cannot store \"key\": cannot lock " + settings.file.string() + ": Read-only file system\n");
    EXPECT_EQ(defaults.object("kept"), DefaultsValue(true));
    EXPECT_EQ(defaults.object("key"), std::nullopt);
    ASSERT_TRUE(disk.setReadOnly(false));
    EXPECT_EQ(standardErrorOf([&] { defaults.setObject("key", true); }), "");
    EXPECT_EQ(defaults.object("key"), DefaultsValue(true));
}

TEST(JsonUserDefaults, SaysThatACorruptFileOnAReadOnlyDiskHasNoCopy)
{
    const SettingsFolder settings;
    PrivateFileSystem disk(settings.folder.path());
    if (!disk)
        GTEST_SKIP() << "this user may not mount a file system";
    writeText(settings.file, "corrupt");
    ASSERT_TRUE(disk.setReadOnly(true));
    JsonUserDefaults defaults(settings.file);
    const auto said = standardErrorOf([&] {
        EXPECT_EQ(defaults.object("key"), std::nullopt);
        EXPECT_EQ(defaults.object("key"), std::nullopt);
    });
    EXPECT_EQ(said, "tarnwick: settings: " + settings.file.string() + " is not readable as JSON; the defaults apply; no copy could be kept\n");
}

}  // namespace
}  // namespace Platform::Freedesktop
