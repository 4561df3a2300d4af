// A connection to the session bus, for a few questions with a deadline.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "Platform/Freedesktop/Shortcuts/GLibPointer.h"
#include "Platform/Freedesktop/Shortcuts/ShortcutSource.h"

namespace Platform::Freedesktop {

// Who is asked.
struct BusObject {
    const char* service;
    std::string path;
    const char* interface;
};

class SessionBus {
public:
    // DBUS_SESSION_BUS_ADDRESS, else $XDG_RUNTIME_DIR/bus; empty where there is neither.
    static std::string address();

    // A private connection, closed with the object. Nothing where no bus answers in time.
    // Never starts a bus.
    static std::optional<SessionBus> connect(Deadline);

    // Likewise the one that GLib's own parts share in this process. Made by them, it would
    // end the program together with the bus; made here first, it does not, and stays as
    // long as the process. Of the main thread only.
    static std::optional<SessionBus> share(Deadline);

    // Takes a floating `parameters` (null: none). Null when the service does not run (it
    // is not started), does not answer in time, or answers with another type.
    VariantPointer call(const BusObject&, const char* method, GVariant* parameters, const char* replyType, Deadline) const;

private:
    explicit SessionBus(ObjectPointer<GDBusConnection> connection) : m_connection(std::move(connection)) { }

    ObjectPointer<GDBusConnection> m_connection;
};

}  // namespace Platform::Freedesktop
