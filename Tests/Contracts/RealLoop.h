// The program's main loop for the real implementations, and the application object that
// Qt wants first, one for the whole process.
#pragma once

#include <QCoreApplication>

#include "Platform/Qt/QtMainLoop.h"
#include "Support/LoopUntil.h"

namespace Contracts {

inline QCoreApplication& application()
{
    static int argumentCount = 1;
    static char name[] = "contracts_tests";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication instance(argumentCount, arguments);
    return instance;
}

class RealLoop {
public:
    Platform::QtMainLoop& loop() { return m_loop; }

private:
    QCoreApplication& m_application = application();
    TestSupport::DeferredDeletes m_deferredDeletes;
    Platform::QtMainLoop m_loop;
};

}  // namespace Contracts
