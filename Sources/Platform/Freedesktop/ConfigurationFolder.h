// Where this user's settings belong, by the rules of the XDG base directories.
#pragma once

#include <filesystem>

namespace Platform::Freedesktop {

// $XDG_CONFIG_HOME when it is an absolute path (a relative one is to be ignored), else
// .config in the home folder: $HOME, without it the one of the user database.
std::filesystem::path configurationFolder();

}  // namespace Platform::Freedesktop
