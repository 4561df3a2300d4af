// A tray icon's menu as the panel sees it (com.canonical.dbusmenu): the panel draws it
// and tells the program what a person chose.
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Support/Desktop/BusConnection.h"

namespace TestSupport {

struct TrayMenuEntry {
    int id = 0;
    std::string label;     // "---" for a separator
    std::string shortcut;  // as the panel writes it: "Super+Alt+X"; "" for none
    bool isEnabled = true;
    bool isVisible = true;

    bool operator==(const TrayMenuEntry&) const = default;
};

std::ostream& operator<<(std::ostream&, const TrayMenuEntry&);

class TrayMenu {
public:
    TrayMenu(std::shared_ptr<BusConnection>, const std::string& service, const std::string& path);

    // What it says now, as one reading of the whole menu.
    std::vector<TrayMenuEntry> entries() const;
    // The same, each entry's properties asked for anew.
    std::vector<TrayMenuEntry> entriesAskedForOneByOne() const;
    // The labels of the entries that a person sees.
    std::vector<std::string> labels() const;
    // The hint beside that entry. Throws when there is none of that label.
    std::string shortcutOf(const std::string& label) const;

    // What a panel sends when it opens and closes the menu.
    void open() const;
    void close() const;
    // A person chooses the entry. Throws when there is none of that label.
    void click(const std::string& label) const;

private:
    TrayMenuEntry entryOf(const std::string& label) const;
    void sendEvent(int id, const char* what) const;

    std::shared_ptr<BusConnection> m_bus;
    const BusConnection::Object m_object;
};

}  // namespace TestSupport
