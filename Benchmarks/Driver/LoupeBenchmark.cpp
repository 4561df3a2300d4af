#include "LoupeBenchmark.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "Magnifier.h"
#include "Statistics.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/Desktop/XTestPointer.h"
#include "Support/WaitUntil.h"
#include "Support/XTestKeyboard.h"

namespace Benchmarks {
namespace {

using namespace std::chrono_literals;

struct Other {
    std::string name;
    std::vector<std::string> command;
};
const std::vector<Other> others = {{"kmag", {"kmag"}}, {"magnus", {"magnus"}}, {"gpick's picker", {"gpick", "--pick"}}};

std::string nameOf(const LoupeLook& look) { return std::to_string(look.diameter) + " points, zoom " + std::to_string(look.zoom); }

std::vector<LoupeLook> looksFor(const Options& options)
{
    if (options.isQuick)
        return {{220, 4}};
    std::vector<LoupeLook> looks;
    for (const int diameter : {120, 220, 400}) {
        for (const int zoom : {1, 4, 10})
            looks.push_back({diameter, zoom});
    }
    return looks;
}

class Measurement {
public:
    Measurement(const Setup& setup, const Options& options)
        : m_options(options), m_desktop(setup), m_pointer(m_desktop.displayName()), m_lines(m_desktop.displayName()),
          m_meter(m_desktop, m_lines, options), m_keyboard(m_desktop.displayName())
    {
        rest();
    }

    // In each round one after the other, so that all have the same share of the machine's
    // better and worse minutes.
    LoupeFigures run(const Setup& setup)
    {
        LoupeFigures figures;
        figures.setup = setup;
        const auto looks = looksFor(m_options);
        for (const auto& look : looks)
            figures.loupes.push_back({.name = nameOf(look)});
        std::vector<Other> installed;
        for (const auto& other : others) {
            if (!TestSupport::programExists(other.command.front())) {
                figures.missing.push_back(other.name);
                continue;
            }
            installed.push_back(other);
            figures.others.push_back({.name = other.name});
        }
        const auto program = startProgram();
        for (int round = 0; round < m_options.rounds; ++round) {
            const bool isLast = round + 1 == m_options.rounds;
            figures.circling.push_back(m_meter.whileCircling({}));
            rest();
            figures.resting.push_back(m_meter.whileStill({}));
            for (std::size_t i = 0; i < looks.size(); ++i)
                measureLoupe(looks[i], program.pid(), isLast, figures.loupes[i]);
            for (std::size_t i = 0; i < installed.size(); ++i)
                measureOther(installed[i], isLast, figures.others[i]);
        }
        return figures;
    }

private:
    void rest() { m_pointer.moveTo(m_lines.screenWidth() / 3, m_lines.screenHeight() / 3); }

    TestSupport::Process startProgram()
    {
        auto process = m_desktop.start({m_options.programPath});
        if (!TestSupport::waitUntil([this] { return TestSupport::isHotKeyTaken(m_desktop.displayName(), KEY_L, XCB_MOD_MASK_4 | XCB_MOD_MASK_1); }))
            throw std::runtime_error("the program does not take its shortcut");
        waitUntilAtRest(process.pid());
        return process;
    }

    void measureLoupe(const LoupeLook& look, pid_t program, bool isLast, MagnifierFigures& figures)
    {
        rest();
        const auto windowsBefore = Magnifier::windowsOf(m_desktop);
        store(look);
        pressShortcut();
        measure(program, Magnifier(m_desktop, windowsBefore), isLast, figures);
        pressShortcut();
        waitUntilAtRest(program);
    }

    // Among what the program has stored itself; it reads afresh.
    void store(const LoupeLook& look) const
    {
        const auto file = m_desktop.home() / "tarnwick" / "defaults.json";
        std::ifstream stored(file);
        auto settings = nlohmann::json::parse(stored);
        settings["loupe.diameter"] = look.diameter;
        settings["loupe.zoom"] = look.zoom;
        std::ofstream(file) << settings;
    }

    void pressShortcut() { m_keyboard.chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_L}); }

    void measureOther(const Other& other, bool isLast, MagnifierFigures& figures)
    {
        rest();
        const auto windowsBefore = Magnifier::windowsOf(m_desktop);
        const auto process = m_desktop.start(other.command);
        const Magnifier magnifier(m_desktop, windowsBefore);
        std::this_thread::sleep_for(3s);  // such a program never comes to rest
        measure(process.pid(), Magnifier(m_desktop, windowsBefore), isLast, figures);
    }

    // Pictures and lags are looked at in the last round only.
    void measure(pid_t pid, const Magnifier& magnifier, bool isLast, MagnifierFigures& figures)
    {
        figures.moving.push_back(m_meter.whileCircling(pid));
        rest();
        std::this_thread::sleep_for(500ms);
        figures.still.push_back(m_meter.whileStill(pid));
        if (!isLast)
            return;
        {
            const auto circling = startCircling(m_desktop, m_lines);
            figures.picturesPerSecond = magnifier.picturesPerSecond();
        }
        figures.lags = magnifier.lags(m_options.isQuick ? 3 : m_options.presses);
    }

    const Options& m_options;
    Desktop m_desktop;
    TestSupport::XTestPointer m_pointer;
    LineReader m_lines;
    CostMeter m_meter;
    TestSupport::XTestKeyboard m_keyboard;
};

double medianOf(const std::vector<Cost>& costs)
{
    std::vector<double> values;
    values.reserve(costs.size());
    for (const auto& cost : costs)
        values.push_back(cost.clientAndServer());
    return median(values);
}

double moving(const MagnifierFigures& figures, const LoupeFigures& all) { return medianOf(figures.moving) - medianOf(all.circling); }
double still(const MagnifierFigures& figures, const LoupeFigures& all) { return medianOf(figures.still) - medianOf(all.resting); }
double perPicture(const MagnifierFigures& figures, const LoupeFigures& all) { return moving(figures, all) / figures.picturesPerSecond; }

Report::Row rowOf(const MagnifierFigures& figures, const LoupeFigures& all)
{
    const bool hasLags = !figures.lags.empty();
    return {figures.name, format(moving(figures, all), 1), format(still(figures, all), 1), format(figures.picturesPerSecond, 1),
        figures.picturesPerSecond > 0 ? format(perPicture(figures, all), 3) : "none seen", hasLags ? format(median(figures.lags), 1) : "none seen",
        hasLags ? format(percentile(figures.lags, 0.95), 1) : "none seen"};
}

using Costs = std::vector<Cost>;

// What a picture of the one costs of one of the other: the median of the rounds, each of
// which measures both within a minute or two. At rest, where pictures cannot be told from
// each other, each is taken to show as many as while the pointer moves.
double ratioOf(const MagnifierFigures& one, const MagnifierFigures& other, Costs MagnifierFigures::*costs, const Costs& without)
{
    std::vector<double> ratios;
    for (std::size_t round = 0; round < without.size(); ++round) {
        const auto perPicture = [&](const MagnifierFigures& figures) {
            return ((figures.*costs)[round].clientAndServer() - without[round].clientAndServer()) / figures.picturesPerSecond;
        };
        ratios.push_back(perPicture(one) / perPicture(other));
    }
    return median(ratios);
}

// The cheapest and the dearest loupe against one of the others, picture for picture.
void reportRatios(Report& report, const LoupeFigures& figures, const MagnifierFigures& other, Costs MagnifierFigures::*costs, const Costs& without,
    const std::string& when)
{
    std::vector<double> ratios;
    for (const auto& loupe : figures.loupes) {
        if (loupe.picturesPerSecond > 0 && other.picturesPerSecond > 0)
            ratios.push_back(ratioOf(loupe, other, costs, without));
    }
    if (ratios.empty())
        return;
    const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
    report.paragraph("While the pointer " + when + ", a picture of the loupe costs " + format(*least, 2) + " to " + format(*most, 2) +
        " times one of " + other.name + " (medians of single rounds), target " + againstTarget(*most, 1, 0) + ".");
}

void reportRatios(Report& report, const LoupeFigures& figures)
{
    for (const auto& other : figures.others)
        reportRatios(report, figures, other, &MagnifierFigures::moving, figures.circling, "circles");
    for (const auto& other : figures.others)
        reportRatios(report, figures, other, &MagnifierFigures::still, figures.resting, "rests");
}

}  // namespace

LoupeFigures measureLoupe(const Setup& setup, const Options& options) { return Measurement(setup, options).run(setup); }

void report(Report& report, const LoupeFigures& figures)
{
    report.paragraph(figures.setup.name() + ":");
    std::vector<Report::Row> rows = {
        {"magnifier", "ms/s, pointer circles", "ms/s, pointer rests", "pictures/s", "ms per picture", "lag, median ms", "lag, 95 % ms"}};
    for (const auto* part : {&figures.loupes, &figures.others}) {
        for (const auto& magnifier : *part)
            rows.push_back(rowOf(magnifier, figures));
    }
    report.table(rows);
    reportRatios(report, figures);
    std::vector<double> lags;
    for (const auto& loupe : figures.loupes)
        lags.insert(lags.end(), loupe.lags.begin(), loupe.lags.end());
    if (!lags.empty())
        report.paragraph(
            "Lag of the loupe over all sizes: median " + format(median(lags), 1) + " ms, target " + againstTarget(median(lags), 17, 0) + ".");
    for (const auto& name : figures.missing)
        report.paragraph("Not installed here, so not measured: " + name + ".");
}

}  // namespace Benchmarks
