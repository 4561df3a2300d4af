#include "Platform/Qt/QtFont.h"

#include <QGuiApplication>
#include <cmath>

namespace Platform {

// Font sizes of Qt are whole pixels, or points of an inch; a size in our points is the
// pixel size at scale 1, and the painter's own scale does the rest.
QFont qtFontOf(const Font& font)
{
    QFont result = QGuiApplication::font();
    result.setPixelSize(static_cast<int>(std::lround(font.size)));
    result.setWeight(font.weight == FontWeight::medium ? QFont::Medium : QFont::Normal);
    // Coloured fringes would be wrong over whatever lies beneath.
    result.setStyleStrategy(QFont::NoSubpixelAntialias);
    return result;
}

}  // namespace Platform
