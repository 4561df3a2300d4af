// The program as Qt runs it. Needs a QCoreApplication.
#pragma once

#include <QCoreApplication>

#include "Platform/Application.h"

namespace Platform {

class QtApplication final : public Application {
public:
    void terminate() override { QCoreApplication::quit(); }
};

}  // namespace Platform
