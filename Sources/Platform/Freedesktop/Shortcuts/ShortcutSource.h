// One desktop's global shortcuts.
#pragma once

#include <chrono>
#include <memory>
#include <string_view>
#include <vector>

#include "Platform/Freedesktop/Accelerator.h"

namespace Platform::Freedesktop {

using Deadline = std::chrono::steady_clock::time_point;

class ShortcutSource {
public:
    virtual ~ShortcutSource() = default;

    // Those in force now, read afresh. What is not known by the deadline is left out.
    // Starts no service: one that does not run has no shortcuts.
    virtual std::vector<Accelerator> accelerators(Deadline) = 0;
};

// The source for the first desktop known here in a list like "ubuntu:GNOME" (the form of
// XDG_CURRENT_DESKTOP); nothing without one.
std::unique_ptr<ShortcutSource> shortcutSourceFor(std::string_view currentDesktop);

}  // namespace Platform::Freedesktop
