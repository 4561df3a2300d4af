#include "Platform/Freedesktop/ConfigurationFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace Platform::Freedesktop {
namespace {

std::filesystem::path homeFolder()
{
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
        return home;
    if (const passwd* user = getpwuid(getuid()); user != nullptr && user->pw_dir != nullptr)
        return user->pw_dir;
    return "/";
}

}  // namespace

std::filesystem::path configurationFolder()
{
    if (const char* folder = std::getenv("XDG_CONFIG_HOME"); folder != nullptr && *folder == '/')
        return folder;
    return homeFolder() / ".config";
}

}  // namespace Platform::Freedesktop
