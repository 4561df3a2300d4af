#pragma once

#include "Platform/Image.h"

namespace Tarnwick {

// Turns every colour into its opposite: a channel c under alpha a becomes a - c, the
// inverse in multiplied form. Alpha stays, so transparent pixels stay transparent.
void invertColours(Platform::Image&);

}  // namespace Tarnwick
