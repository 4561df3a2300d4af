// Prints the running desktop's reserved shortcuts, one "key code, modifiers" a line, then
// how long the quickest of COUNT questions took and how many file descriptors all but the
// first left open. Ends when standard input does. PATIENCE is in milliseconds; without it,
// the program's own counts, and they come from the module as in the program.
//     reserved_shortcuts_probe [COUNT [PATIENCE]]
// Or owns a name on the session bus and never answers anybody (it stops itself):
//     reserved_shortcuts_probe mute NAME
#include <gio/gio.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string_view>
#include <vector>

#include "Platform/Freedesktop/DesktopShortcutsModule.h"
#include "Platform/Freedesktop/Shortcuts/DesktopReservedShortcuts.h"

namespace {

void ownNameAndStop(const char* name)
{
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus == nullptr)
        std::exit(1);
    constexpr int milliseconds = 5000;
    g_variant_unref(g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", name, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, milliseconds, nullptr, nullptr));
    raise(SIGSTOP);
}

long openDescriptors()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

void printShortcuts(int count, Platform::ReservedShortcuts& shortcuts)
{
    std::vector<Platform::SymbolicHotKey> found;
    auto quickest = std::chrono::steady_clock::duration::max();
    long afterTheFirst = 0;
    for (int i = 0; i < count; ++i) {
        const auto start = std::chrono::steady_clock::now();
        found = shortcuts.copySymbolicHotKeys();
        quickest = std::min(quickest, std::chrono::steady_clock::now() - start);
        afterTheFirst = i == 0 ? openDescriptors() : afterTheFirst;
    }
    for (const auto& hotKey : found)
        std::printf("%lld 0x%x\n", static_cast<long long>(hotKey.keyCode), hotKey.carbonModifiers);
    std::printf("milliseconds %lld\n", static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(quickest).count()));
    std::printf("descriptors %ld\n", openDescriptors() - afterTheFirst);
    std::fflush(stdout);
    while (std::getchar() != EOF) { }
}

}  // namespace

int main(int argumentCount, char** arguments)
{
    using namespace Platform::Freedesktop;
    if (argumentCount == 3 && std::string_view(arguments[1]) == "mute") {
        ownNameAndStop(arguments[2]);
        return EXIT_SUCCESS;
    }
    std::unique_ptr<Platform::ReservedShortcuts> shortcuts = std::make_unique<DesktopShortcutsModule>(DESKTOP_SHORTCUTS_MODULE);
    if (argumentCount > 2) {
        DesktopReservedShortcuts::Options options;
        options.patience = std::chrono::milliseconds(std::atoi(arguments[2]));
        shortcuts = std::make_unique<DesktopReservedShortcuts>(options);
    }
    printShortcuts(argumentCount > 1 ? std::atoi(arguments[1]) : 1, *shortcuts);
}
