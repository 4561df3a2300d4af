// A program's place on a session bus: calls that wait for their answers, and the thread
// in which it answers to others.
#pragma once

#include <functional>
#include <string>
#include <thread>

#include "Platform/Freedesktop/Shortcuts/GLibPointer.h"

namespace TestSupport {

class BusConnection {
public:
    // Throws when no bus answers at that address.
    explicit BusConnection(const std::string& address);
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    GDBusConnection* get() const { return m_connection.get(); }
    // Runs it in the thread in which what it registers will be answered; returns when it is
    // done.
    void run(const std::function<void()>&) const;
    // The bus sees the program end; calls throw from now on.
    void end();

    struct Object {
        std::string service;
        std::string path;
        std::string interface;
    };

    // Takes a floating `parameters` (null: none). Throws with the bus's words when the call fails.
    Platform::Freedesktop::VariantPointer call(const Object&, const std::string& method, GVariant* parameters = nullptr) const;
    // Throws when the object has no such property.
    Platform::Freedesktop::VariantPointer property(const Object&, const std::string& name) const;

private:
    GMainContext* const m_context;
    GMainLoop* const m_loop;
    Platform::Freedesktop::ObjectPointer<GDBusConnection> m_connection;
    std::jthread m_thread;
};

}  // namespace TestSupport
