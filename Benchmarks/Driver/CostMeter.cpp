#include "CostMeter.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "BesideThisProgram.h"
#include "ProcessFigures.h"
#include "Support/WaitUntil.h"

namespace Benchmarks {
namespace {

using Clock = std::chrono::steady_clock;

// The circling pointer sleeps once before each of its steps.
long sleepsOf(pid_t circling) { return voluntarySwitches(circling).begin()->second; }

}  // namespace

struct CostMeter::Reading {
    Clock::time_point time;
    std::chrono::nanoseconds client{0};
    std::chrono::nanoseconds server{0};
    std::chrono::nanoseconds compositor{0};
    std::chrono::nanoseconds machine{0};

    Cost costUntil(const Reading& to) const
    {
        const std::chrono::duration<double> seconds = to.time - time;
        const auto rate = [&](std::chrono::nanoseconds before, std::chrono::nanoseconds after) {
            return std::chrono::duration<double, std::milli>(after - before).count() / seconds.count();
        };
        Cost cost{rate(client, to.client), rate(server, to.server), rate(compositor, to.compositor)};
        cost.others = std::max(0.0, rate(machine, to.machine) - cost.client - cost.server - cost.compositor);
        return cost;
    }
};

CostMeter::Reading CostMeter::readClocks(std::optional<pid_t> client)
{
    Reading reading;
    reading.time = Clock::now();
    if (client)
        reading.client = processorTime(*client);
    reading.server = processorTime(m_desktop.serverPid());
    if (const auto compositor = m_desktop.compositorPid())
        reading.compositor = processorTime(*compositor);
    reading.machine = machineProcessorTime();
    return reading;
}

Cost CostMeter::whileCircling(std::optional<pid_t> client)
{
    const auto circling = startCircling(m_desktop, m_lines);
    return undisturbedCost(circling.pid(), client);
}

Cost CostMeter::whileStill(std::optional<pid_t> client)
{
    const auto from = readClocks(client);
    std::this_thread::sleep_until(from.time + m_options.roundLength);
    return from.costUntil(readClocks(client));
}

// A machine that kept the pointer from its steps kept the clients from theirs, and
// what they did not do cost nothing: such a figure is taken anew.
Cost CostMeter::undisturbedCost(pid_t circling, std::optional<pid_t> client)
{
    constexpr int attempts = 10;
    const double stepsWanted = 0.97 * 125 * std::chrono::duration<double>(m_options.roundLength).count();
    for (int i = 0; i < attempts; ++i) {
        const auto stepsBefore = sleepsOf(circling);
        const auto cost = whileStill(client);
        if (m_options.isQuick || static_cast<double>(sleepsOf(circling) - stepsBefore) >= stepsWanted)
            return cost;
    }
    throw std::runtime_error("the machine is too busy to measure anything");
}

TestSupport::Process startCircling(const Desktop& desktop, const LineReader& lines)
{
    const auto before = lines.pointer();
    auto circling = desktop.start({besideThisProgram("tarnwick_bench_circling_pointer")});
    if (!TestSupport::waitUntil([&] { return lines.pointer() != before; }))
        throw std::runtime_error("the pointer does not circle");
    return circling;
}

}  // namespace Benchmarks
