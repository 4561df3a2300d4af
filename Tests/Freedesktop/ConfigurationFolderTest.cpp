#include "Platform/Freedesktop/ConfigurationFolder.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "Platform/Freedesktop/JsonUserDefaults.h"

namespace Platform::Freedesktop {
namespace {

// Gives the environment back as it was.
class ConfigurationFolder : public testing::Test {
protected:
    ~ConfigurationFolder() override
    {
        restore("XDG_CONFIG_HOME", m_configHome);
        restore("HOME", m_home);
    }

private:
    static std::optional<std::string> valueOf(const char* name)
    {
        const char* value = std::getenv(name);
        return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    }
    static void restore(const char* name, const std::optional<std::string>& value) { value ? setenv(name, value->c_str(), 1) : unsetenv(name); }

    std::optional<std::string> m_configHome = valueOf("XDG_CONFIG_HOME");
    std::optional<std::string> m_home = valueOf("HOME");
};

TEST_F(ConfigurationFolder, IsTheOneOfTheEnvironment)
{
    setenv("XDG_CONFIG_HOME", "/somewhere/settings", 1);
    EXPECT_EQ(configurationFolder(), "/somewhere/settings");
    EXPECT_EQ(JsonUserDefaults::standardFile(), "/somewhere/settings/tarnwick/defaults.json");
}

TEST_F(ConfigurationFolder, IsInTheHomeFolderWithoutOne)
{
    setenv("HOME", "/home/somebody", 1);
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(configurationFolder(), "/home/somebody/.config");
    setenv("XDG_CONFIG_HOME", "", 1);
    EXPECT_EQ(configurationFolder(), "/home/somebody/.config");
    EXPECT_EQ(JsonUserDefaults::standardFile(), "/home/somebody/.config/tarnwick/defaults.json");
}

TEST_F(ConfigurationFolder, IgnoresARelativePath)
{
    setenv("HOME", "/home/somebody", 1);
    setenv("XDG_CONFIG_HOME", "settings/here", 1);
    EXPECT_EQ(configurationFolder(), "/home/somebody/.config");
}

TEST_F(ConfigurationFolder, AsksTheUserDatabaseWithoutAHomeInTheEnvironment)
{
    unsetenv("HOME");
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(configurationFolder(), std::string(getpwuid(getuid())->pw_dir) + "/.config");
}

}  // namespace
}  // namespace Platform::Freedesktop
