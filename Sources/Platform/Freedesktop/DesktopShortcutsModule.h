// The shortcuts that the running desktop keeps for itself, from a module that is loaded at
// the first question and stays loaded: what it needs would else be in memory all the time.
// Without the module there are none; a line on standard error says so once. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/Freedesktop/KeymapKeys.h"
#include "Platform/KeyboardLayout.h"

namespace Platform::Freedesktop {

// Asked once per question, for the keys of the layout that counts then.
using CurrentKeys = std::function<KeyOfSymbol()>;

class DesktopShortcutsModule final : public ReservedShortcuts {
public:
    // A path, or the name of a file beside the program.
    explicit DesktopShortcutsModule(std::string file = "tarnwick-desktop-shortcuts.so", CurrentKeys currentKeys = usKeys);

    std::vector<SymbolicHotKey> copySymbolicHotKeys() override;

private:
    void loadIfNeeded();

    std::string m_file;
    CurrentKeys m_currentKeys;
    bool m_hasTried = false;
    std::unique_ptr<ReservedShortcuts> m_shortcuts;
};

}  // namespace Platform::Freedesktop

// What the module exports. The caller owns the result.
extern "C" Platform::ReservedShortcuts* tarnwickMakeReservedShortcuts(const Platform::Freedesktop::CurrentKeys&);
