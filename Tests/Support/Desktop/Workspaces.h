// The workspaces of a window manager, as a pager sees them, numbered from 0.
#pragma once

#include "Support/Desktop/Desktop.h"

namespace TestSupport {

// Both return once it is the current one. Throw when that does not come true.

// With i3, which has no workspace but those that were gone to, as its own tool does it.
void makeWorkspace(Desktop&, std::uint32_t number);
void switchToWorkspace(Desktop&, std::uint32_t number);

std::uint32_t currentWorkspace(Desktop&);

}  // namespace TestSupport
