// What text is drawn and measured with. Needs a QGuiApplication.
#pragma once

#include <QFont>

#include "Platform/ShapePainter.h"

namespace Platform {

QFont qtFontOf(const Font&);

}  // namespace Platform
