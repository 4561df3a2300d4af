#include "ProcessorTimeBenchmark.h"

#include <algorithm>
#include <stdexcept>

#include "BesideThisProgram.h"
#include "Crosshair.h"
#include "Lines.h"
#include "Statistics.h"
#include "Support/Desktop/XTestPointer.h"
#include "Support/WaitUntil.h"

namespace Benchmarks {
namespace {

class Measurement {
public:
    Measurement(const Setup& setup, const Options& options)
        : m_options(options), m_desktop(setup), m_pointer(m_desktop.displayName()), m_lines(m_desktop.displayName()),
          m_meter(m_desktop, m_lines, options)
    {
        rest();
        if (!options.programPath.empty())
            m_crosshair.emplace(m_desktop, options.programPath);
    }

    Round round()
    {
        Round round;
        round.circling = m_meter.whileCircling({});
        round.floor = floor(false);
        if (m_options.hasMovingFloor)
            round.movingFloor = floor(true);
        if (m_crosshair)
            round.crosshair = crosshair();
        return round;
    }

private:
    // Where a check finds neither the floor's windows nor its strips hidden.
    void rest() { m_pointer.moveTo(m_lines.screenWidth() / 3, m_lines.screenHeight() / 3); }

    Cost floor(bool isMoving)
    {
        rest();
        const auto beneath = m_lines.read(m_lines.pointer());
        const auto without = shownByFloor(isMoving);
        std::vector<std::string> command = {besideThisProgram("tarnwick_bench_floor")};
        if (isMoving)
            command.emplace_back("--moving");
        auto process = m_desktop.start(command);
        if (!TestSupport::waitUntil([&] { return areInverse(shownByFloor(isMoving), beneath); }))
            throw std::runtime_error("the floor does not show what it must");
        const auto cost = m_meter.whileCircling(process.pid());
        if (!process.isRunning())
            throw std::runtime_error("the floor ended");
        process.kill();
        rest();
        if (!TestSupport::waitUntil([&] { return shownByFloor(isMoving) == without; }))
            throw std::runtime_error("the floor did not leave");
        return cost;
    }

    // Where the floor's two windows lie, the same columns and rows as are read at the pointer.
    LinePieces shownByFloor(bool isMoving) const
    {
        const auto pointer = m_lines.pointer();
        if (isMoving)
            return m_lines.read(pointer);
        return {m_lines.read({pointer.x, m_lines.screenHeight() / 2})[0], m_lines.read({m_lines.screenWidth() / 2, pointer.y})[1]};
    }

    Cost crosshair()
    {
        rest();
        m_crosshair->show();
        const auto cost = m_meter.whileCircling(m_crosshair->pid());
        const auto isBackAndRight = [this] {
            rest();
            return m_crosshair->isRight();
        };
        if (!TestSupport::waitUntil(isBackAndRight))
            throw std::runtime_error("the crosshair did not follow the pointer");
        m_crosshair->hide();
        return cost;
    }

    const Options& m_options;
    Desktop m_desktop;
    TestSupport::XTestPointer m_pointer;
    LineReader m_lines;
    CostMeter m_meter;
    std::optional<Crosshair> m_crosshair;
};

// What a program costs beyond the pointer's own motion.
double extra(const Cost& cost, const Round& round) { return cost.clientAndServer() - round.circling.clientAndServer(); }

template <typename Value> std::vector<double> ofRounds(const ProcessorTimeFigures& figures, Value&& value)
{
    std::vector<double> values;
    for (const auto& round : figures.rounds)
        values.push_back(value(round));
    return values;
}

template <typename Value> std::string medianOf(const ProcessorTimeFigures& figures, Value&& value)
{
    return format(median(ofRounds(figures, value)), 1);
}

double extraOfFloor(const Round& round) { return extra(round.floor, round); }
double extraOfMovingFloor(const Round& round) { return extra(*round.movingFloor, round); }
double extraOfCrosshair(const Round& round) { return extra(*round.crosshair, round); }
double ratioToFloor(const Round& round) { return extraOfCrosshair(round) / extraOfFloor(round); }

std::string clientPlusServer(const ProcessorTimeFigures& figures, std::optional<Cost> Round::*which)
{
    const auto client = medianOf(figures, [&](const Round& round) { return (round.*which)->client; });
    const auto server = medianOf(figures, [&](const Round& round) { return (round.*which)->server - round.circling.server; });
    return client + " + " + server;
}

std::string spread(const std::vector<double>& values)
{
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    return format(*least, 2) + " to " + format(*most, 2);
}

Report::Row rowOf(const ProcessorTimeFigures& figures)
{
    const auto& first = figures.rounds.front();
    Report::Row row = {figures.setup.name(), medianOf(figures, [](const Round& round) { return round.circling.clientAndServer(); }),
        medianOf(figures, extraOfFloor)};
    if (first.movingFloor)
        row.push_back(medianOf(figures, extraOfMovingFloor));
    if (first.crosshair) {
        const auto ratios = ofRounds(figures, ratioToFloor);
        const double target = figures.setup.screenName == "1080p" ? 4 : 2.5;
        row.insert(row.end(),
            {medianOf(figures, extraOfCrosshair), clientPlusServer(figures, &Round::crosshair), format(median(ratios), 2), spread(ratios),
                againstTarget(median(ratios), target, 1)});
    }
    row.push_back(medianOf(figures, [](const Round& round) { return round.floor.others; }));
    return row;
}

void reportCompositor(Report& report, const std::vector<ProcessorTimeFigures>& all)
{
    std::vector<Report::Row> rows = {{"screen", "circling alone", "floor"}};
    const bool hasCrosshair = all.front().rounds.front().crosshair.has_value();
    if (hasCrosshair)
        rows.front().emplace_back("crosshair");
    for (const auto& figures : all) {
        if (!figures.setup.hasCompositor)
            continue;
        rows.push_back({figures.setup.screenName, medianOf(figures, [](const Round& round) { return round.circling.compositor; }),
            medianOf(figures, [](const Round& round) { return round.floor.compositor; })});
        if (hasCrosshair)
            rows.back().push_back(medianOf(figures, [](const Round& round) { return round.crosshair->compositor; }));
    }
    if (rows.size() == 1)
        return;
    report.paragraph("picom's own processor time meanwhile, in ms/s, counted in none of the above:");
    report.table(rows);
}

// How much dearer the largest screen is than the smallest: pixels grow by 16, sides by 4.
void reportGrowth(Report& report, const std::vector<ProcessorTimeFigures>& all, bool hasCompositor)
{
    const auto find = [&](const std::string& screenName) {
        return std::find_if(all.begin(), all.end(), [&](const ProcessorTimeFigures& figures) {
            return figures.setup.screenName == screenName && figures.setup.hasCompositor == hasCompositor;
        });
    };
    const auto small = find("1080p");
    const auto large = find("8K");
    if (small == all.end() || large == all.end())
        return;
    const auto growth = [&](auto&& value) { return median(ofRounds(*large, value)) / median(ofRounds(*small, value)); };
    auto text = "Growth from 1080p to 8K, " + std::string(hasCompositor ? "picom" : "no compositor") + ": floor " + format(growth(extraOfFloor), 2);
    if (small->rounds.front().crosshair)
        text += ", crosshair " + format(growth(extraOfCrosshair), 2) + ", target " + againstTarget(growth(extraOfCrosshair), 3, 0);
    report.paragraph(text + ".");
}

}  // namespace

ProcessorTimeFigures measureProcessorTime(const Setup& setup, const Options& options)
{
    Measurement measurement(setup, options);
    ProcessorTimeFigures figures{setup, {}};
    for (int i = 0; i < options.rounds; ++i)
        figures.rounds.push_back(measurement.round());
    return figures;
}

void report(Report& report, const std::vector<ProcessorTimeFigures>& all)
{
    const auto& first = all.front().rounds.front();
    std::vector<Report::Row> rows = {{"screen", "circling alone", "floor"}};
    if (first.movingFloor)
        rows.front().emplace_back("floor that follows");
    if (first.crosshair)
        rows.front().insert(rows.front().end(), {"crosshair", "program + X server", "times the floor", "of single rounds", "target"});
    rows.front().emplace_back("rest of the machine");
    for (const auto& figures : all)
        rows.push_back(rowOf(figures));
    report.table(rows);
    reportGrowth(report, all, false);
    reportGrowth(report, all, true);
    reportCompositor(report, all);
}

}  // namespace Benchmarks
