// How long it takes from the shortcut's key press until both lines are right.
#pragma once

#include <vector>

#include "Crosshair.h"
#include "Options.h"
#include "Report.h"

namespace Benchmarks {

struct KeyToPictureFigures {
    Setup setup;
    std::vector<Crosshair::Latency> presses;
};

// Throws when a press had no effect.
KeyToPictureFigures measureKeyToPicture(const Setup&, const Options&);

void report(Report&, const std::vector<KeyToPictureFigures>&);

}  // namespace Benchmarks
