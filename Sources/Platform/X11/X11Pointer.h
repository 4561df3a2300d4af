// The pointer and its picture on X11.
#pragma once

#include "Platform/Pointer.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/SharedMonitorLayout.h"

namespace Platform::X11 {

class X11Pointer final : public Pointer {
public:
    X11Pointer(Connection& connection, const SharedMonitorLayout& layout) : m_connection(connection), m_layout(layout) { }

    // The top-left corner of the hot spot's device pixel.
    std::optional<Point> location() override;

private:
    Connection& m_connection;
    const SharedMonitorLayout& m_layout;
};

// XFIXES counts hides by client and gives the cursor back when the client goes.
class X11Cursor final : public Cursor {
public:
    explicit X11Cursor(Connection& connection);

    void hide() override;
    void show() override;

private:
    Connection& m_connection;
    bool m_hasXfixes;
};

}  // namespace Platform::X11
