// Processor time of a client, of the X server and of the compositor on a benchmark's
// desktop, per second of the clock on the wall.
#pragma once

#include <optional>

#include "Desktop.h"
#include "Lines.h"
#include "Options.h"

namespace Benchmarks {

// Milliseconds of processor time per second.
struct Cost {
    double client = 0;
    double server = 0;
    double compositor = 0;
    double others = 0;  // everything else on the machine, the measurement included

    double clientAndServer() const { return client + server; }
};

class CostMeter {
public:
    CostMeter(Desktop& desktop, const LineReader& lines, const Options& options) : m_desktop(desktop), m_lines(lines), m_options(options) { }

    // While the pointer circles. Throws on a machine that is too busy for that,
    // but for a quick run, whose figures nobody keeps.
    Cost whileCircling(std::optional<pid_t> client);
    // While nothing is done to the pointer.
    Cost whileStill(std::optional<pid_t> client);

private:
    struct Reading;

    Reading readClocks(std::optional<pid_t> client);
    Cost undisturbedCost(pid_t circling, std::optional<pid_t> client);

    Desktop& m_desktop;
    const LineReader& m_lines;
    const Options& m_options;
};

// The pointer circles as long as the process lives. Returns when it has begun to.
TestSupport::Process startCircling(const Desktop&, const LineReader&);

}  // namespace Benchmarks
