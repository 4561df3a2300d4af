// The running program of a test. Lines: "application.terminate".
#pragma once

#include "Platform/Application.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeApplication : public Platform::Application {
public:
    explicit FakeApplication(CallLog& log) : m_log(log) { }

    void terminate() override { m_log.add("application.terminate"); }

private:
    CallLog& m_log;
};

}  // namespace TestSupport
