#include "Platform/Freedesktop/DesktopShortcutsModule.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

namespace Platform::Freedesktop {

DesktopShortcutsModule::DesktopShortcutsModule(std::string file, CurrentKeys currentKeys)
    : m_file(std::move(file)), m_currentKeys(std::move(currentKeys))
{
}

std::vector<SymbolicHotKey> DesktopShortcutsModule::copySymbolicHotKeys()
{
    loadIfNeeded();
    return m_shortcuts != nullptr ? m_shortcuts->copySymbolicHotKeys() : std::vector<SymbolicHotKey>();
}

void DesktopShortcutsModule::loadIfNeeded()
{
    if (std::exchange(m_hasTried, true))
        return;
    // GLib's types cannot be unloaded.
    auto* const module = dlopen(m_file.c_str(), RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    auto* const make = module != nullptr ? dlsym(module, "tarnwickMakeReservedShortcuts") : nullptr;
    if (make != nullptr)
        m_shortcuts.reset(reinterpret_cast<decltype(&tarnwickMakeReservedShortcuts)>(make)(m_currentKeys));
    else
        std::fprintf(stderr, "tarnwick: the desktop's own shortcuts are not known: %s\n", dlerror());
}

}  // namespace Platform::Freedesktop
