#include "EndToEnd/TarnwickProgram.h"

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <signal.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Support/Desktop/ForeignHotKey.h"
#include "Support/WaitUntil.h"

namespace TestSupport {
namespace {

constexpr std::uint16_t superAndAlt = XCB_MOD_MASK_4 | XCB_MOD_MASK_1;

std::string contentsOf(const std::filesystem::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

long voluntaryContextSwitchesOf(const std::filesystem::path& thread)
{
    constexpr std::string_view name = "voluntary_ctxt_switches:";
    std::ifstream status(thread / "status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name))
            return std::stol(line.substr(name.size()));
    }
    return 0;
}

// What a program built with sanitizers writes about itself; a killed one, too.
bool isSanitizerReport(const std::string& text)
{
    return text.find("Sanitizer") != std::string::npos || text.find("runtime error:") != std::string::npos;
}

std::string troubleWithEnd(std::optional<int> status)
{
    if (!status)
        return "tarnwick does not end when asked to";
    return *status == 0 ? "" : "tarnwick ends with status " + std::to_string(*status);
}

}  // namespace

TarnwickProgram::TarnwickProgram(const Desktop& desktop, const Environment& furtherEnvironment)
    : m_displayName(desktop.displayName()), m_home(desktop.home() / "tarnwick-home")
{
    std::filesystem::create_directories(m_home);
    std::filesystem::permissions(m_home, std::filesystem::perms::owner_all);  // as Qt wants a runtime folder
    Process::Options options;
    for (const auto* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        options.environment.emplace_back(name, m_home.string());
    // No bus: the tester's own desktop must not be asked for its shortcuts.
    options.environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (m_home / "no-bus").string());
    options.environment.insert(options.environment.end(), furtherEnvironment.begin(), furtherEnvironment.end());
    options.standardOutput = m_home / "output";
    options.standardError = m_home / "errors";
    m_process = desktop.server().start({TARNWICK_PROGRAM}, options);
}

TarnwickProgram::~TarnwickProgram()
{
    if (m_hasEnded)
        return;
    EXPECT_EQ(end(), "");
}

std::string TarnwickProgram::end()
{
    m_hasEnded = true;
    std::string trouble;
    if (m_process.pid() != 0) {
        m_process.signal(SIGTERM);
        trouble = troubleWithEnd(m_process.waitForExit(std::chrono::seconds(30)));
        m_process.kill();
    }
    const auto errors = standardError();
    if (trouble.empty() && isSanitizerReport(errors))
        trouble = "tarnwick reports a fault";
    return trouble.empty() ? "" : trouble + ": " + errors;
}

void TarnwickProgram::waitUntilReady()
{
    if (!waitUntil([this] { return isHotKeyTaken(m_displayName, KEY_X, superAndAlt); }))
        throw std::runtime_error("tarnwick does not take its hot key: " + standardError());
}

std::string TarnwickProgram::standardOutput() const { return contentsOf(m_home / "output"); }

std::string TarnwickProgram::standardError() const { return contentsOf(m_home / "errors"); }

long TarnwickProgram::voluntaryContextSwitches() const
{
    long sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(m_process.pid()) + "/task"))
        sum += voluntaryContextSwitchesOf(thread.path());
    return sum;
}

long TarnwickProgram::sleepsOfMainThread() const { return voluntaryContextSwitchesOf("/proc/" + std::to_string(m_process.pid())); }

}  // namespace TestSupport
