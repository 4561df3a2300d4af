// What the loupe costs at several sizes and zooms, beside the magnifiers that a person
// would install instead, on the same desktop.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CostMeter.h"
#include "Options.h"
#include "Report.h"

namespace Benchmarks {

struct LoupeLook {
    int diameter = 0;
    int zoom = 0;
};

struct MagnifierFigures {
    std::string name;
    std::vector<Cost> moving;  // one for each round; the pointer's own cost is in it
    std::vector<Cost> still;
    double picturesPerSecond = 0;  // while the pointer moves
    std::vector<double> lags;      // milliseconds
};

struct LoupeFigures {
    Setup setup;
    std::vector<Cost> circling;  // nothing but the pointer
    std::vector<Cost> resting;   // nothing at all
    std::vector<MagnifierFigures> loupes;
    std::vector<MagnifierFigures> others;
    std::vector<std::string> missing;  // programs that are not installed
};

LoupeFigures measureLoupe(const Setup&, const Options&);

void report(Report&, const LoupeFigures&);

}  // namespace Benchmarks
