// What the program costs while nobody uses it, and what memory it takes.
#pragma once

#include <map>
#include <string>

#include "Options.h"
#include "ProcessFigures.h"
#include "Report.h"

namespace Benchmarks {

struct RestFigures {
    std::map<std::string, long> wakeUps;  // of each thread that woke
    TimerDescriptors timers;
    long residentBytes = 0;       // before any overlay
    long residentBytesLater = 0;  // after ten
    TimerDescriptors timersLater;
};

RestFigures measureRest(const Options&);

// How much more memory the X server holds while the crosshair is up.
struct ServerMemoryFigures {
    long bytesAlone = 0;        // on a screen without windows
    long bytesOfKeys = 0;       // of a client that only grabs as many keys as the program does
    long bytesWithWindows = 0;  // with ten
};

ServerMemoryFigures measureServerMemory(const Options&);

void report(Report&, const Options&, const RestFigures&, const ServerMemoryFigures&);

}  // namespace Benchmarks
