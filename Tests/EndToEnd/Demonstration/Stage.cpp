#include "EndToEnd/Demonstration/Stage.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "EndToEnd/Demonstration/Pictures.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/WaitUntil.h"

namespace Demonstration {

using TestSupport::waitUntil;

Stage::Stage(std::filesystem::path folder, TestSupport::WindowManagerKind kind, Platform::X11::DevicePoint pointer)
    : m_folder(std::move(folder)), m_desktop(kind), m_wallpaper(m_desktop.displayName(), landscape(1280, 800)),
      m_chart(m_desktop.displayName(), "Colours", {580, 150}, colourChart(320, 240)),
      m_page(m_desktop.displayName(), "A page", {140, 210}, page(400, 340)), m_program(m_desktop)
{
    std::filesystem::create_directories(m_folder);
    moveTo(pointer);
    m_page.activate();
    m_program.waitUntilReady();
    m_beneath = m_desktop.screenshotAtRest();
    takeEvents();
}

void Stage::moveTo(Platform::X11::DevicePoint position)
{
    m_position = position;
    m_desktop.pointer().moveTo(position.x, position.y);
}

void Stage::say(const std::string& what, bool isTrue)
{
    std::printf("%-6s %s\n", isTrue ? "yes" : "NO", what.c_str());
    m_isAllRight = m_isAllRight && isTrue;
}

void Stage::sayWhetherTheDesktopIsBack(const std::string& what)
{
    say(what + ": the screen is as it was before", waitUntil([&] { return m_desktop.screenshot() == m_beneath; }));
    say("the pointer's picture is back", waitUntil([&] { return showsCursor(); }));
}

void Stage::sayWhetherThePointerIsHidden()
{
    say("the pointer's picture is hidden", waitUntil([&] { return !showsCursor(); }));
}

void Stage::photograph(const std::string& name) const { write(m_folder / (name + ".png"), m_desktop.frameBuffer().read()); }

void Stage::photograph(const std::string& name, const Platform::X11::DeviceRect& area) const
{
    write(m_folder / (name + ".png"), part(m_desktop.screenshot(), area));
}

std::vector<std::string> Stage::takeEvents()
{
    auto events = m_page.takeEvents();
    std::ranges::move(m_chart.takeEvents(), std::back_inserter(events));
    std::erase_if(events, [](const std::string& event) { return event.ends_with(" 125") || event.ends_with(" 56"); });
    return events;
}

bool Stage::end()
{
    say("the program ends when asked to", m_program.end().empty());
    return m_isAllRight;
}

bool Stage::showsCursor() const { return TestSupport::showsVisibleCursor(m_desktop.frameBuffer().read(), m_position.x, m_position.y); }

}  // namespace Demonstration
