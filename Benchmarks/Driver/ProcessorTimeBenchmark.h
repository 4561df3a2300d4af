// Processor time of client and X server together while the pointer circles, for the
// program and for the floor, in turns on the same desktop.
#pragma once

#include <optional>
#include <vector>

#include "CostMeter.h"
#include "Options.h"
#include "Report.h"

namespace Benchmarks {

struct Round {
    Cost circling;  // nothing but the pointer
    Cost floor;
    std::optional<Cost> movingFloor;
    std::optional<Cost> crosshair;
};

struct ProcessorTimeFigures {
    Setup setup;
    std::vector<Round> rounds;
};

// Throws when the floor or the crosshair did not show what they must.
ProcessorTimeFigures measureProcessorTime(const Setup&, const Options&);

void report(Report&, const std::vector<ProcessorTimeFigures>&);

}  // namespace Benchmarks
