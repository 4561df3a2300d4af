// The program's icon and its menu in a real panel.
#pragma once

#include <filesystem>

namespace Demonstration {

// Clicks on the icon and leaves "tray-menu.png", the panel's end with the menu open. Whether
// all was there that should be.
bool showPanel(const std::filesystem::path& folder);

}  // namespace Demonstration
