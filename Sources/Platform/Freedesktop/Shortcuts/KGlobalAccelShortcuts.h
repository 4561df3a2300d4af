// The shortcuts of KDE Plasma, from its global-shortcut service.
#pragma once

#include "Platform/Freedesktop/Shortcuts/ShortcutSource.h"

namespace Platform::Freedesktop {

class KGlobalAccelShortcuts : public ShortcutSource {
public:
    std::vector<Accelerator> accelerators(Deadline) override;
};

}  // namespace Platform::Freedesktop
