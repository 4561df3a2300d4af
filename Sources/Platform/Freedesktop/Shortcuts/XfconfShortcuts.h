// The shortcuts of Xfce: those of its window manager and those that start commands,
// from the settings service that both read.
#pragma once

#include "Platform/Freedesktop/Shortcuts/ShortcutSource.h"

namespace Platform::Freedesktop {

class XfconfShortcuts : public ShortcutSource {
public:
    std::vector<Accelerator> accelerators(Deadline) override;
};

}  // namespace Platform::Freedesktop
