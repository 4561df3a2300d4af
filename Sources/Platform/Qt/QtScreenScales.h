// Device pixels per point of each screen, as Qt derives them from the desktop's settings
// (it follows XSETTINGS and Xft.dpi live). Needs a QGuiApplication. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace Platform {

class QtScreenScales {
public:
    QtScreenScales();
    ~QtScreenScales();

    // 1 for a screen that Qt does not know.
    double scaleOfScreen(const std::string& name) const;

    // Called when screens or their scales may have changed.
    void setChangedHandler(std::function<void()>);

private:
    struct Connections;

    const std::unique_ptr<Connections> m_connections;
};

}  // namespace Platform
