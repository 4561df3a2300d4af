#include "Platform/Freedesktop/DesktopShortcutsModule.h"
#include "Platform/Freedesktop/Shortcuts/DesktopReservedShortcuts.h"

extern "C" __attribute__((visibility("default"))) Platform::ReservedShortcuts* tarnwickMakeReservedShortcuts(
    const Platform::Freedesktop::CurrentKeys& currentKeys)
{
    using Platform::Freedesktop::DesktopReservedShortcuts;
    return std::make_unique<DesktopReservedShortcuts>(DesktopReservedShortcuts::Options{.currentKeys = currentKeys}).release();
}
