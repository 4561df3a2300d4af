// A tray icon as the panel sees it over D-Bus (org.kde.StatusNotifierItem).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Support/Desktop/BusConnection.h"
#include "Support/Desktop/TrayMenu.h"

namespace TestSupport {

class StatusNotifierItem {
public:
    StatusNotifierItem(std::shared_ptr<BusConnection>, const std::string& service, const std::string& path);

    // What a screen reader says.
    std::string title() const { return text("Title"); }
    std::string status() const { return text("Status"); }
    std::string category() const { return text("Category"); }
    std::string identifier() const { return text("Id"); }
    std::string toolTip() const;
    // True when the panel shall open the menu on a plain click, too.
    bool isMenu() const;
    // An icon by name, or pictures; of each picture the number of pixels that are not
    // transparent (opaqueness over a half).
    std::string iconName() const { return text("IconName"); }
    struct Picture {
        int width = 0;
        int height = 0;
        long visiblePixels = 0;
    };
    std::vector<Picture> pictures() const;

    // Throws when it has none.
    TrayMenu menu() const;

    // What a panel sends for a left click, a middle click, and for a right click where it
    // does not open the menu itself.
    void activate() const { send("Activate"); }
    void secondaryActivate() const { send("SecondaryActivate"); }
    void contextMenu() const { send("ContextMenu"); }

private:
    std::string text(const char* property) const;
    void send(const char* click) const;

    std::shared_ptr<BusConnection> m_bus;
    const BusConnection::Object m_object;
};

}  // namespace TestSupport
