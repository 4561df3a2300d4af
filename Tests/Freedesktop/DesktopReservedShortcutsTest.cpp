#include "Platform/Freedesktop/Shortcuts/DesktopReservedShortcuts.h"

#include <fcntl.h>
#include <glob.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "Freedesktop/PrivateBus.h"
#include "Freedesktop/SettingsFolder.h"
#include "Support/PrivateServer.h"

namespace Platform::Freedesktop {
namespace {

using ::Freedesktop::PrivateBus;
using ::Freedesktop::textOf;
using ::Freedesktop::writeText;
using TestSupport::Process;

struct Answer {
    std::vector<std::string> shortcuts;  // "key code, modifiers", sorted
    long milliseconds = -1;
    long descriptors = -1;

    bool has(const std::string& shortcut) const { return std::find(shortcuts.begin(), shortcuts.end(), shortcut) != shortcuts.end(); }
};

using Shortcuts = std::vector<std::string>;

// One desktop: folders for its settings, an environment, and a process that asks in it.
class ReservedShortcuts : public testing::Test {
protected:
    ReservedShortcuts()
    {
        setVariable("GSETTINGS_BACKEND", "keyfile");
        setVariable("XDG_CONFIG_HOME", m_folder.path() / "config");
        setVariable("XDG_CACHE_HOME", m_folder.path() / "cache");
        setVariable("XDG_DATA_HOME", m_folder.path() / "data");
        setVariable("XDG_RUNTIME_DIR", m_folder.path() / "runtime");
        setVariable("HOME", m_folder.path());
        setVariable("DBUS_SESSION_BUS_ADDRESS", "");
        setVariable("DISPLAY", "");
        std::filesystem::create_directory(m_folder.path() / "runtime");
        std::filesystem::permissions(m_folder.path() / "runtime", std::filesystem::perms::owner_all);
    }

    void setVariable(const std::string& name, const std::string& value)
    {
        std::erase_if(m_environment, [&](const auto& each) { return each.first == name; });
        m_environment.emplace_back(name, value);
    }

    Process::Options environment() const
    {
        Process::Options options;
        options.environment = m_environment;
        return options;
    }

    // Only these schemas exist for the processes of this test.
    void installSchemas(const std::string& schemas)
    {
        const auto folder = m_folder.path() / "share" / "glib-2.0" / "schemas";
        std::filesystem::create_directories(folder);
        writeText(folder / "test.gschema.xml", "<schemalist>" + schemas + "</schemalist>");
        ASSERT_EQ(Process::start({"glib-compile-schemas", "--strict", folder.string()}).waitForExit(std::chrono::seconds(30)), 0);
        setVariable("XDG_DATA_DIRS", m_folder.path() / "share");
    }

    void writeSettings(const std::string& text)
    {
        const auto folder = m_folder.path() / "config" / "glib-2.0" / "settings";
        std::filesystem::create_directories(folder);
        writeText(folder / "keyfile", text);
    }

    // With all the time that a busy machine may take.
    Answer ask(const std::string& desktop, int count = 1) { return ask(desktop, {std::to_string(count), "20000"}); }

    Answer askWithTheProgramsPatience(const std::string& desktop, int count) { return ask(desktop, {std::to_string(count)}); }

    Answer ask(const std::string& desktop, const std::vector<std::string>& arguments)
    {
        setVariable("XDG_CURRENT_DESKTOP", desktop);
        auto options = environment();
        options.standardOutput = m_folder.path() / "answer";
        options.standardError = m_folder.path() / "complaints";
        std::filesystem::remove(options.standardOutput);
        std::vector<std::string> command = {"/bin/sh", "-c", "exec \"$0\" \"$@\" </dev/null", RESERVED_SHORTCUTS_PROBE};
        command.insert(command.end(), arguments.begin(), arguments.end());
        auto asking = Process::start(command, options);
        EXPECT_EQ(asking.waitForExit(std::chrono::seconds(60)), 0);
        EXPECT_EQ(textOf(options.standardError), "");
        Answer answer;
        std::istringstream lines(textOf(options.standardOutput));
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("milliseconds "))
                answer.milliseconds = std::stol(line.substr(13));
            else if (line.starts_with("descriptors "))
                answer.descriptors = std::stol(line.substr(12));
            else
                answer.shortcuts.push_back(line);
        }
        std::sort(answer.shortcuts.begin(), answer.shortcuts.end());
        return answer;
    }

    // The bus could start the service; if it does, a file appears.
    std::filesystem::path makeStartable(const PrivateBus& bus, const std::string& service)
    {
        auto marker = m_folder.path() / (service + ".started");
        writeText(
            bus.servicesFolder() / (service + ".service"), "[D-BUS Service]\nName=" + service + "\nExec=/usr/bin/touch " + marker.string() + "\n");
        return marker;
    }

    TestSupport::TemporaryFolder m_folder;

private:
    std::vector<std::pair<std::string, std::string>> m_environment;
};

std::string schema(const std::string& id, const std::string& path, const std::string& keys)
{
    return "<schema id=\"" + id + "\"" + (path.empty() ? "" : " path=\"" + path + "\"") + ">" + keys + "</schema>";
}

std::string key(const std::string& name, const std::string& type, const std::string& value)
{
    return "<key name=\"" + name + "\" type=\"" + type + "\"><default><![CDATA[" + value + "]]></default></key>";
}

TEST_F(ReservedShortcuts, AreNoneOnAnUnknownDesktop)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    EXPECT_EQ(ask("").shortcuts, Shortcuts());
    EXPECT_EQ(ask("i3").shortcuts, Shortcuts());
    EXPECT_EQ(ask("::").shortcuts, Shortcuts());
}

TEST_F(ReservedShortcuts, OfGnomeAreThoseOfItsInstalledSchemas)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    installSchemas(schema("org.gnome.desktop.wm.keybindings", "/org/gnome/desktop/wm/keybindings/",
                       key("close", "as", "['<Alt>F4']") + key("maximize", "as", "['<Super>Up', '']") + key("lower", "as", "[]")) +
        schema("org.gnome.settings-daemon.plugins.media-keys", "/org/gnome/settings-daemon/plugins/media-keys/",
            key("screensaver", "as", "['<Super>l']") + key("volume-mute-static", "as", "['XF86AudioMute']") + key("old-style", "s", "'<Super>e'") +
                key("max-screencast-length", "u", "30") + key("custom-keybindings", "as", "[]")) +
        schema("org.gnome.shell.keybindings", "/org/gnome/shell/keybindings/", key("toggle-overview", "as", "['<Super>s']")) +
        schema("org.gnome.mutter.keybindings", "/org/gnome/mutter/keybindings/", key("toggle-tiled-left", "as", "['<Super>Left']")) +
        schema("org.gnome.mutter.wayland.keybindings", "/org/gnome/mutter/wayland/keybindings/",
            key("restore-shortcuts", "as", "['<Super>Escape', '<Super>s']")) +
        schema("org.cinnamon.desktop.keybindings", "/org/cinnamon/desktop/keybindings/", key("other", "as", "['<Super>F12']")));
    const Shortcuts expected = {"1 0x100", "118 0x800", "123 0x100", "126 0x100", "14 0x100", "37 0x100", "53 0x100", "74 0x0"};
    EXPECT_EQ(ask("GNOME").shortcuts, expected);
    EXPECT_EQ(ask("ubuntu:GNOME").shortcuts, expected);
    EXPECT_EQ(ask("Budgie:GNOME").shortcuts, expected);
    EXPECT_EQ(ask("X-Cinnamon").shortcuts, Shortcuts{"111 0x100"});
}

TEST_F(ReservedShortcuts, OfGnomeAreReadAsTheUserSetThem)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    installSchemas(schema("org.gnome.desktop.wm.keybindings", "/org/gnome/desktop/wm/keybindings/", key("close", "as", "['<Alt>F4']")) +
        schema(
            "org.gnome.settings-daemon.plugins.media-keys", "/org/gnome/settings-daemon/plugins/media-keys/", key("custom-keybindings", "as", "[]")) +
        schema("org.gnome.settings-daemon.plugins.media-keys.custom-keybinding", "", key("binding", "s", "''") + key("command", "s", "''")));
    EXPECT_EQ(ask("GNOME").shortcuts, Shortcuts{"118 0x800"});
    writeSettings("[org/gnome/desktop/wm/keybindings]\nclose=['<Super>q']\n"
                  "[org/gnome/settings-daemon/plugins/media-keys]\ncustom-keybindings=['/a/custom0/', '/a/custom1/', 'no path', '/a//b/', '/']\n"
                  "[a/custom0]\nbinding='<Super><Alt>x'\ncommand='x'\n[a/custom1]\nbinding=''\n");
    EXPECT_EQ(ask("GNOME").shortcuts, (Shortcuts{"12 0x100", "7 0x900"}));
}

TEST_F(ReservedShortcuts, OfCinnamonIncludeCustomOnes)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    installSchemas(schema("org.cinnamon.desktop.keybindings", "/org/cinnamon/desktop/keybindings/",
                       key("custom-list", "as", "['__dummy__']") + key("looking-glass-keybinding", "as", "['<Super>l']")) +
        schema("org.cinnamon.desktop.keybindings.wm", "/org/cinnamon/desktop/keybindings/wm/", key("close", "as", "['<Alt>F4']")) +
        schema("org.cinnamon.desktop.keybindings.media-keys", "/org/cinnamon/desktop/keybindings/media-keys/",
            key("terminal", "as", "['<Primary><Alt>t']")) +
        schema("org.cinnamon.desktop.keybindings.custom-keybinding", "", key("binding", "as", "[]")));
    writeSettings("[org/cinnamon/desktop/keybindings]\ncustom-list=['__dummy__', 'custom0']\n"
                  "[org/cinnamon/desktop/keybindings/custom-keybindings/custom0]\nbinding=['<Super>b', '<Super>1']\n");
    EXPECT_EQ(ask("X-Cinnamon").shortcuts, (Shortcuts{"11 0x100", "118 0x800", "17 0x1800", "18 0x100", "37 0x100"}));
}

TEST_F(ReservedShortcuts, OfMateIncludeCustomOnesWithGaps)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    installSchemas(schema("org.mate.Marco.global-keybindings", "/org/mate/marco/global-keybindings/",
                       key("panel-run-dialog", "s", "'<Alt>F2'") + key("run-command-1", "s", "'disabled'")) +
        schema("org.mate.Marco.window-keybindings", "/org/mate/marco/window-keybindings/", key("close", "s", "'<Alt>F4'")) +
        schema("org.mate.SettingsDaemon.plugins.media-keys", "/org/mate/settings-daemon/plugins/media-keys/",
            key("screensaver", "s", "'<Control><Alt>l'")) +
        schema("org.mate.control-center.keybinding", "", key("binding", "s", "''")));
    writeSettings("[org/mate/desktop/keybindings/custom0]\nbinding='<Mod4>b'\n[org/mate/desktop/keybindings/custom9]\nbinding='<Mod4>c'\n");
    EXPECT_EQ(ask("MATE").shortcuts, (Shortcuts{"11 0x100", "118 0x800", "120 0x800", "37 0x1800", "8 0x100"}));
}

TEST_F(ReservedShortcuts, OfGnomeAreReadFromTheRealSchemasThroughDconf)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    setVariable("GSETTINGS_BACKEND", "dconf");
    const auto service = bus.start({"/usr/libexec/dconf-service"}, environment());
    ASSERT_TRUE(bus.waitForService("ca.desrt.dconf"));
    const auto before = ask("GNOME");
    EXPECT_TRUE(before.has("118 0x800"));
    EXPECT_FALSE(before.has("12 0x1900"));
    ASSERT_TRUE(bus.runs({"gsettings", "set", "org.gnome.desktop.wm.keybindings", "close", "['<Control><Alt><Super>q']"}, environment()));
    const auto after = ask("GNOME", 20);
    EXPECT_FALSE(after.has("118 0x800"));
    EXPECT_TRUE(after.has("12 0x1900"));
    EXPECT_LT(after.descriptors, 10);
    EXPECT_LT(after.milliseconds, 500);
}

TEST_F(ReservedShortcuts, OfXfceAreThoseOfTheRealSettingsService)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    glob_t found = {};
    ASSERT_EQ(glob("/usr/lib/*/xfce4/xfconf/xfconfd", 0, nullptr, &found), 0) << "package xfconf is missing";
    const auto service = bus.start({found.gl_pathv[0]}, environment());
    globfree(&found);
    ASSERT_TRUE(bus.waitForService("org.xfce.Xfconf"));
    const auto set = [&](const std::string& property, const std::string& type, const std::string& value) {
        return bus.runs({"xfconf-query", "-c", "xfce4-keyboard-shortcuts", "-p", property, "-n", "-t", type, "-s", value}, environment());
    };
    // The machine's own default trees may be there as well: look at combinations that they do not have.
    ASSERT_TRUE(set("/commands/default/<Super><Control><Shift>F7", "string", "xfce4-appfinder"));
    ASSERT_TRUE(set("/commands/default/<Super><Control><Shift>F7/startup-notify", "bool", "true"));
    ASSERT_TRUE(set("/xfwm4/default/<Super><Control><Shift>F8", "string", "close_window_key"));
    ASSERT_TRUE(set("/xfwm4/default/Escape", "string", "cancel_key"));
    ASSERT_TRUE(set("/xfwm4/default/Left", "string", "left_key"));
    ASSERT_TRUE(set("/commands/custom/<Super><Control><Shift>e", "string", "thunar"));
    ASSERT_TRUE(set("/commands/custom/<Super><Control><Shift>r", "string", ""));
    const auto defaults = ask("XFCE");
    EXPECT_TRUE(defaults.has("98 0x1300"));
    EXPECT_TRUE(defaults.has("100 0x1300"));
    EXPECT_FALSE(defaults.has("53 0x0"));
    EXPECT_FALSE(defaults.has("123 0x0"));
    EXPECT_FALSE(defaults.has("14 0x1300"));
    ASSERT_TRUE(set("/commands/custom/override", "bool", "true"));
    const auto custom = ask("XFCE", 20);
    EXPECT_FALSE(custom.has("98 0x1300"));
    EXPECT_TRUE(custom.has("100 0x1300"));
    EXPECT_TRUE(custom.has("14 0x1300"));
    EXPECT_FALSE(custom.has("15 0x1300"));
    EXPECT_LT(custom.descriptors, 10);
    EXPECT_LT(custom.milliseconds, 500);
}

TEST_F(ReservedShortcuts, OfKdeAreTheActiveOnesOfTheRealService)
{
    const PrivateBus bus;
    const TestSupport::PrivateServer display;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    setVariable("DISPLAY", display.displayName());
    ASSERT_TRUE(TestSupport::programExists("kglobalaccel5")) << "package libkf5globalaccel-bin is missing";
    const auto service = bus.start({"kglobalaccel5"}, environment());
    ASSERT_TRUE(bus.waitForService("org.kde.kglobalaccel"));
    EXPECT_EQ(ask("KDE").shortcuts, Shortcuts());
    const auto set = [&](const std::string& component, const std::string& action, const std::string& keys, const std::string& flags) {
        const auto names = "['" + component + "', '" + action + "', 'Component', 'Action']";
        const auto call = [&](const std::string& method, const std::vector<std::string>& arguments) {
            std::vector<std::string> command = {"gdbus", "call", "--session", "--dest", "org.kde.kglobalaccel", "--object-path", "/kglobalaccel",
                "--method", "org.kde.KGlobalAccel." + method, names};
            command.insert(command.end(), arguments.begin(), arguments.end());
            return bus.runs(command, environment());
        };
        return call("doRegister", {}) && call("setShortcut", {keys, flags});
    };
    constexpr auto* present = "uint32 6";  // present, not what an earlier run stored
    constexpr auto* notPresent = "uint32 4";
    ASSERT_TRUE(set("kwin", "desktop", "[268435524]", present));          // Meta+D
    ASSERT_TRUE(set("kwin", "zoom", "[268435499, 268435517]", present));  // Meta++, Meta+=
    ASSERT_TRUE(set("kwin", "unset", "[0]", present));
    ASSERT_TRUE(set("ksmserver", "lock", "[268435532]", present));  // Meta+L
    ASSERT_TRUE(set("editor", "find", "[268435526]", notPresent));  // Meta+F
    const auto answer = ask("KDE", 20);
    EXPECT_EQ(answer.shortcuts, (Shortcuts{"2 0x100", "24 0x100", "24 0x300", "37 0x100"}));
    EXPECT_LT(answer.descriptors, 10);
    EXPECT_LT(answer.milliseconds, 500);
}

TEST_F(ReservedShortcuts, AreNoneWithoutTheServiceAndDoNotStartIt)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    const auto xfconf = makeStartable(bus, "org.xfce.Xfconf");
    const auto kde = makeStartable(bus, "org.kde.kglobalaccel");
    const auto dconf = makeStartable(bus, "ca.desrt.dconf");
    setVariable("GSETTINGS_BACKEND", "dconf");
    for (const auto* desktop : {"XFCE", "KDE"}) {
        const auto answer = ask(desktop, 5);
        EXPECT_EQ(answer.shortcuts, Shortcuts());
        EXPECT_LT(answer.milliseconds, 250);
    }
    EXPECT_TRUE(ask("GNOME").has("118 0x800"));
    EXPECT_FALSE(std::filesystem::exists(xfconf));
    EXPECT_FALSE(std::filesystem::exists(kde));
    EXPECT_FALSE(std::filesystem::exists(dconf));
    // The bus really could have started one.
    bus.runs({"gdbus", "call", "--session", "--dest", "org.xfce.Xfconf", "--object-path", "/", "--method", "a.b.c", "--timeout", "1"});
    EXPECT_TRUE(TestSupport::waitUntil([&] { return std::filesystem::exists(xfconf); }));
}

TEST_F(ReservedShortcuts, AreNoneWithoutABus)
{
    for (const auto* desktop : {"GNOME", "XFCE", "KDE"}) {
        const auto answer = ask(desktop, 5);
        EXPECT_EQ(answer.shortcuts, Shortcuts());
        EXPECT_LT(answer.milliseconds, 250);
    }
    setVariable("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
    EXPECT_EQ(ask("KDE").shortcuts, Shortcuts());
    setVariable("DBUS_SESSION_BUS_ADDRESS", "not an address");
    EXPECT_EQ(ask("KDE").shortcuts, Shortcuts());
}

TEST_F(ReservedShortcuts, DoNotWaitLongForAMuteService)
{
    const PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    const auto xfconf = bus.start({RESERVED_SHORTCUTS_PROBE, "mute", "org.xfce.Xfconf"}, environment());
    const auto kde = bus.start({RESERVED_SHORTCUTS_PROBE, "mute", "org.kde.kglobalaccel"}, environment());
    ASSERT_TRUE(bus.waitForService("org.xfce.Xfconf"));
    ASSERT_TRUE(bus.waitForService("org.kde.kglobalaccel"));
    for (const auto* desktop : {"XFCE", "KDE"}) {
        const auto answer = askWithTheProgramsPatience(desktop, 2);
        EXPECT_EQ(answer.shortcuts, Shortcuts());
        EXPECT_GE(answer.milliseconds, 490);
        EXPECT_LT(answer.milliseconds, 1500);
    }
}

TEST_F(ReservedShortcuts, DoNotWaitLongForAMuteBus)
{
    const auto path = (m_folder.path() / "mute").string();
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 8), 0);
    setVariable("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path);
    setVariable("GSETTINGS_BACKEND", "dconf");
    for (const auto* desktop : {"GNOME", "XFCE", "KDE"}) {
        const auto answer = askWithTheProgramsPatience(desktop, 1);
        EXPECT_EQ(answer.shortcuts, Shortcuts());
        EXPECT_GE(answer.milliseconds, 490);
        // A second question may find GLib's failed connection still about, and be over at once.
        EXPECT_LT(askWithTheProgramsPatience(desktop, 2).milliseconds, 1500);
    }
    close(listener);
}

TEST_F(ReservedShortcuts, DoNotTieTheProgramToTheBus)
{
    PrivateBus bus;
    setVariable("DBUS_SESSION_BUS_ADDRESS", bus.address());
    setVariable("GSETTINGS_BACKEND", "dconf");
    setVariable("XDG_CURRENT_DESKTOP", "GNOME");
    int input[2];
    ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
    auto options = environment();
    options.standardOutput = m_folder.path() / "answer";
    options.inheritedDescriptors = {input[0]};
    auto asking = Process::start({"/bin/sh", "-c", "exec \"$0\" 1 <&" + std::to_string(input[0]), RESERVED_SHORTCUTS_PROBE}, options);
    ASSERT_TRUE(TestSupport::waitUntil([&] { return textOf(options.standardOutput).find("descriptors") != std::string::npos; }));
    bus.daemon().kill();
    EXPECT_EQ(asking.waitForExit(std::chrono::milliseconds(300)), std::nullopt);
    close(input[1]);
    EXPECT_EQ(asking.waitForExit(std::chrono::seconds(10)), 0);
    close(input[0]);
}

}  // namespace
}  // namespace Platform::Freedesktop
