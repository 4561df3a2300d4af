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
    int repeated = 0;                   // presses that were taken again instead, because the host ran others meanwhile
    std::chrono::nanoseconds stolen{};  // in the presses that were kept all the same
};

// Throws when a press had no effect.
KeyToPictureFigures measureKeyToPicture(const Setup&, const Options&);

void report(Report&, const std::vector<KeyToPictureFigures>&);

}  // namespace Benchmarks
