#include "Platform/Qt/QtScreenScales.h"

#include <QGuiApplication>
#include <QScreen>

namespace Platform {

struct QtScreenScales::Connections : QObject {
    Connections()
    {
        connect(qApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
            follow(screen);
            tell();
        });
        connect(qApp, &QGuiApplication::screenRemoved, this, [this] { tell(); });
        const auto screens = QGuiApplication::screens();
        for (auto* screen : screens)
            follow(screen);
    }

    void follow(QScreen* screen)
    {
        connect(screen, &QScreen::logicalDotsPerInchChanged, this, [this] { tell(); });
        connect(screen, &QScreen::geometryChanged, this, [this] { tell(); });
    }

    void tell() const
    {
        if (changed)
            changed();
    }

    std::function<void()> changed;
};

QtScreenScales::QtScreenScales() : m_connections(std::make_unique<Connections>()) { }

QtScreenScales::~QtScreenScales() = default;

double QtScreenScales::scaleOfScreen(const std::string& name) const
{
    const auto screens = QGuiApplication::screens();
    for (const auto* screen : screens) {
        if (screen->name().toStdString() == name)
            return screen->devicePixelRatio();
    }
    return 1;
}

void QtScreenScales::setChangedHandler(std::function<void()> changed) { m_connections->changed = std::move(changed); }

}  // namespace Platform
