// A panel's tray over D-Bus without the panel: the registry that programs look for
// (org.kde.StatusNotifierWatcher), which says that a host is there. It goes with the object,
// as a panel that ends.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Support/Desktop/BusConnection.h"
#include "Support/Desktop/StatusNotifierItem.h"

namespace TestSupport {

class StatusNotifierHost {
public:
    // Returns when programs can find it. Throws when another one is there.
    explicit StatusNotifierHost(const std::string& busAddress);
    ~StatusNotifierHost();
    StatusNotifierHost(const StatusNotifierHost&) = delete;
    StatusNotifierHost& operator=(const StatusNotifierHost&) = delete;

    // The icons there now, in the order in which they came; those of programs that ended
    // are gone.
    std::vector<StatusNotifierItem> items() const;
    // The first icon. Throws when none comes.
    StatusNotifierItem waitForItem() const;

    // How often a program has said that its menu changed.
    int menuChanges() const;

private:
    struct Registration {
        std::string sender;
        std::string path;
    };

    static void takeCall(GDBusConnection*, const gchar* sender, const gchar* path, const gchar* interface, const gchar* method, GVariant* parameters,
        GDBusMethodInvocation*, gpointer self);
    static GVariant* readProperty(
        GDBusConnection*, const gchar* sender, const gchar* path, const gchar* interface, const gchar* name, GError**, gpointer self);
    static void takeSignal(
        GDBusConnection*, const gchar* sender, const gchar* path, const gchar* interface, const gchar* name, GVariant* parameters, gpointer self);

    void publish();
    void registerItem(const std::string& sender, const std::string& serviceOrPath);
    void forget(const std::string& sender);

    mutable std::mutex m_mutex;  // guards the following two
    std::vector<Registration> m_registrations;
    int m_menuChanges = 0;
    std::shared_ptr<BusConnection> m_bus;
};

}  // namespace TestSupport
