#include "EndToEnd/Scene.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "EndToEnd/ExpectedScreen.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/Desktop/Monitors.h"
#include "Support/Desktop/TestPattern.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/WaitUntil.h"

namespace TestSupport {
namespace {

std::string screenArgument(const SceneOptions& options) { return std::to_string(options.width) + "x" + std::to_string(options.height) + "x24"; }

std::filesystem::path settingsFile(const Desktop& desktop) { return desktop.home() / "tarnwick-home" / "tarnwick" / "defaults.json"; }

// Before the first window and the program are there. Returns the display's name.
const std::string& prepare(Desktop& desktop, const SceneOptions& options)
{
    for (std::size_t i = 0; i < options.monitors.size(); ++i)
        setMonitor(desktop.connection(), options.monitors[i].name, options.monitors[i].frame, i == 0);
    if (!options.settings.empty()) {
        std::filesystem::create_directories(settingsFile(desktop).parent_path());
        std::ofstream(settingsFile(desktop)) << options.settings;
    }
    return desktop.displayName();
}

}  // namespace

Scene::Scene(const SceneOptions& options)
    : m_options(options), m_desktop(options.windowManager, screenArgument(options), options.serverArguments),
      m_wallpaper(prepare(m_desktop, options), testPattern(options.width, options.height, 7)),
      m_other(m_desktop.displayName(), "other", {600, 330, 560, 380}, 2), m_active(m_desktop.displayName(), "active", {120, 90, 640, 420}, 1)
{
    m_program.emplace(m_desktop, options.environment);
    m_desktop.pointer().moveTo(300, 300);
    m_active.activate();
    m_program->waitUntilReady();
    if (!waitUntil([this] { return m_active.isPaintedOn(m_desktop.screenshot()); }))
        throw std::runtime_error("the active window is not painted");
    m_beneath = m_desktop.screenshotAtRest();
    m_active.takeEvents();
    m_other.takeEvents();
}

void Scene::pressEscape() { m_desktop.keyboard().tap(KEY_ESC); }

void Scene::restartProgram()
{
    m_program.reset();
    waitUntil([this] { return !isHotKeyTaken(m_desktop.displayName(), KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1); });
    m_program.emplace(m_desktop, m_options.environment);
    m_program->waitUntilReady();
}

testing::AssertionResult Scene::shows(const Platform::Image& expected)
{
    return showsWithout([&](const Platform::Image& actual) -> std::optional<std::string> {
        return actual == expected ? std::nullopt : difference(expected, actual);
    });
}

testing::AssertionResult Scene::withKeys(const testing::AssertionResult& result)
{
    // All are asked for at once, in the order of their codes; that one has the highest.
    constexpr std::uint16_t lastOfThem = KEY_RFKILL;
    if (result && !waitUntil([this] { return isHotKeyTaken(m_desktop.displayName(), lastOfThem, 0); }))
        return testing::AssertionFailure() << "the overlays do not take the keys";
    return result;
}

bool Scene::waitForPicture(const std::function<bool()>& isRight) { return waitUntil(isRight, std::chrono::seconds(5)); }

bool Scene::showsCursorAt(int x, int y)
{
    return waitUntil([&] { return showsVisibleCursor(m_desktop.frameBuffer().read(), x, y); }, std::chrono::seconds(5));
}

bool Scene::showsNoCursor()
{
    return waitUntil([&] { return visibleCursorPixels(m_desktop.frameBuffer().read()) == 0; }, std::chrono::seconds(5));
}

bool Scene::takesOverlaysAway()
{
    auto& c = m_desktop.connection();
    const auto isMappedOverlay = [&](xcb_window_t window) {
        const auto attributes = Platform::X11::adopt(xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr));
        const auto nameCookie = xcb_get_property(c, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64);
        const auto name = Platform::X11::adopt(xcb_get_property_reply(c, nameCookie, nullptr));
        if (!attributes || !name || attributes->override_redirect == 0 || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
            return false;
        const std::string_view value(
            static_cast<const char*>(xcb_get_property_value(name.get())), static_cast<std::size_t>(xcb_get_property_value_length(name.get())));
        return value.starts_with("tarnwick");
    };
    return waitUntil([&] {
        const auto tree = Platform::X11::adopt(xcb_query_tree_reply(c, xcb_query_tree(c, c.root()), nullptr));
        const auto* children = xcb_query_tree_children(tree.get());
        return std::none_of(children, children + xcb_query_tree_children_length(tree.get()), isMappedOverlay);
    });
}

std::vector<std::string> Scene::eventsUpTo(const std::string& last)
{
    std::vector<std::string> events;
    EXPECT_TRUE(waitUntil([&] {
        for (auto& event : m_active.takeEvents())
            events.push_back(std::move(event));
        return !events.empty() && events.back() == last;
    })) << last;
    std::erase_if(events, [](const std::string& event) {
        const auto key = event.substr(event.find(' ') + 1);
        return event.starts_with("Key") && (key == "29" || key == "56" || key == "125");
    });
    return events;
}

}  // namespace TestSupport
