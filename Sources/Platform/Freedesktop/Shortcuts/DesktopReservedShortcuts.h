// The shortcuts that the running desktop keeps for itself, by what it really uses: the
// settings of GNOME, Cinnamon and MATE, the settings service of Xfce, the global-shortcut
// service of KDE Plasma. Other desktops and bare window managers have none. Main thread
// only; nothing happens before the first question.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "Platform/Freedesktop/KeymapKeys.h"
#include "Platform/KeyboardLayout.h"

namespace Platform::Freedesktop {

class DesktopReservedShortcuts : public ReservedShortcuts {
public:
    struct Options {
        // Asked once per question, for the keys of the layout that counts then.
        std::function<KeyOfSymbol()> currentKeys = usKeys;
        // In the form of XDG_CURRENT_DESKTOP.
        std::string currentDesktop = runningDesktop();
        std::chrono::milliseconds patience = std::chrono::milliseconds(500);
    };

    explicit DesktopReservedShortcuts(Options options) : m_options(std::move(options)) { }
    DesktopReservedShortcuts() : DesktopReservedShortcuts(Options()) { }

    // Each shortcut once, enabled ones only; those with a key that has no virtual key
    // code, or that the layout does not have, are left out.
    std::vector<SymbolicHotKey> copySymbolicHotKeys() override;

    static std::string runningDesktop();

private:
    Options m_options;
};

}  // namespace Platform::Freedesktop
