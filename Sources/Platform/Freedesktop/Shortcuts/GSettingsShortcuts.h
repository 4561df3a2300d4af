// The shortcuts of desktops that keep them in GSettings. Schemas that are not installed
// are passed over.
#pragma once

#include <span>

#include "Platform/Freedesktop/Shortcuts/ShortcutSource.h"

namespace Platform::Freedesktop {

// Where a desktop keeps the shortcuts that the user has made: a schema used at one path
// per shortcut.
struct CustomShortcuts {
    const char* schema;
    const char* listSchema;  // its key `listKey` holds the paths, or their last parts; null: the
    const char* listKey;     // last parts are custom0, custom1, ... and nothing lists them
    const char* parentPath;
};

struct SettingsSchemas {
    std::span<const char* const> schemas;  // every key that holds a text or texts is a shortcut
    CustomShortcuts custom;
};

extern const SettingsSchemas gnomeSchemas;
extern const SettingsSchemas cinnamonSchemas;
extern const SettingsSchemas mateSchemas;

class GSettingsShortcuts : public ShortcutSource {
public:
    explicit GSettingsShortcuts(const SettingsSchemas& schemas) : m_schemas(schemas) { }

    std::vector<Accelerator> accelerators(Deadline) override;

private:
    const SettingsSchemas& m_schemas;
};

}  // namespace Platform::Freedesktop
