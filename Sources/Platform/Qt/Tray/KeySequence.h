// Hints of menu items as Qt spells them, in the desktop's own notation.
#pragma once

#include <QKeySequence>

#include "Platform/StatusBar.h"

namespace Platform {

// Empty for a hint without text, and for a key that Qt has no name for.
QKeySequence keySequenceOf(const KeyEquivalent&);

}  // namespace Platform
