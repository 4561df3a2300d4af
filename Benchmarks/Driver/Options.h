// What the command line asks for.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Desktop.h"

namespace Benchmarks {

struct Options {
    std::string programPath;   // empty: only the floor is measured
    std::string markdownPath;  // empty: no file
    bool hasMovingFloor = false;
    bool isQuick = false;
    bool hasCrosshair = true;  // which parts are measured
    bool hasLoupe = true;
    std::vector<Setup> setups;
    int rounds = 5;
    std::chrono::milliseconds roundLength{3000};
    int presses = 40;
    std::chrono::seconds idleLength{60};
    Setup memorySetup;

    // Nothing when the arguments make no sense; a line on standard error then says which
    // there are.
    static std::optional<Options> parse(int argc, char** argv);
};

}  // namespace Benchmarks
