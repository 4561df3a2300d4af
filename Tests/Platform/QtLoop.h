// The main loop of the program in a test. Qt wants its application object first, one for
// the whole process.
#pragma once

#include <QCoreApplication>
#include <QEventLoop>

#include "Platform/Qt/QtMainLoop.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

inline QCoreApplication& application()
{
    static int argumentCount = 1;
    static char name[] = "platform_tests";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication instance(argumentCount, arguments);
    return instance;
}

class QtLoop {
public:
    Platform::QtMainLoop& loop() { return m_loop; }

    template <typename Condition> bool runUntil(Condition&& condition)
    {
        return waitUntil([&] {
            QCoreApplication::processEvents();
            return condition();
        });
    }

private:
    QCoreApplication& m_application = application();
    Platform::QtMainLoop m_loop;
};

}  // namespace TestSupport
