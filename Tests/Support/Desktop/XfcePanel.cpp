#include "Support/Desktop/XfcePanel.h"

#include <fstream>
#include <stdexcept>

#include "Support/Desktop/BusConnection.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::X11;

namespace {

constexpr auto settings = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="32"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
)";

std::filesystem::path makeHome(const std::filesystem::path& home)
{
    const auto folder = home / "xfce4" / "xfconf" / "xfce-perchannel-xml";
    std::filesystem::create_directories(folder);
    std::filesystem::permissions(home, std::filesystem::perms::owner_all);
    std::ofstream(folder / "xfce4-panel.xml") << settings;
    return home;
}

Process::Options optionsFor(const Desktop& desktop, const std::filesystem::path& home)
{
    Process::Options options;
    for (const auto* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        options.environment.emplace_back(name, home.string());
    options.environment.emplace_back("DISPLAY", desktop.displayName());
    options.environment.emplace_back("NO_AT_BRIDGE", "1");
    options.standardError = home / "panel.log";
    return options;
}

bool hasHost(const BusConnection& bus)
{
    try {
        const auto value = bus.property(
            {"org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher"}, "IsStatusNotifierHostRegistered");
        return g_variant_get_boolean(value.get()) != 0;
    } catch (const std::runtime_error&) {
        return false;
    }
}

}  // namespace

XfcePanel::XfcePanel(Desktop& desktop)
    : m_home(makeHome(desktop.home() / "panel-home")), m_options(optionsFor(desktop, m_home)), m_bus(m_home, m_options)
{
    m_options.environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    m_process = Process::start({"xfce4-panel", "--disable-wm-check"}, m_options);
    const BusConnection bus(m_bus.address());
    if (!waitUntil([&] { return hasHost(bus); }, std::chrono::seconds(20)))
        throw std::runtime_error("xfce4-panel does not come up; see " + m_options.standardError);
}

}  // namespace TestSupport
