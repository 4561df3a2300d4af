// How the program ends, and that a test notices when it ends badly.
#include "EndToEnd/TarnwickProgram.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>

using namespace TestSupport;

namespace {

struct TarnwickProgramTest : testing::Test {
    Desktop desktop{WindowManagerKind::none};
    TarnwickProgram program{desktop};
};

TEST_F(TarnwickProgramTest, EndsWhenAskedTo)
{
    program.waitUntilReady();
    EXPECT_EQ(program.end(), "");
    EXPECT_FALSE(program.process().isRunning());
}

TEST_F(TarnwickProgramTest, SaysThatTheProgramDied)
{
    program.waitUntilReady();
    program.process().signal(SIGKILL);
    const auto trouble = program.end();
    EXPECT_TRUE(trouble.starts_with("tarnwick ends with status 137: ")) << trouble;
}

TEST_F(TarnwickProgramTest, SaysThatTheProgramReportedAFault)
{
    program.waitUntilReady();
    std::ofstream(desktop.home() / "tarnwick-home" / "errors", std::ios::app) << "WARNING: ThreadSanitizer: data race";
    program.process().kill();
    const auto trouble = program.end();
    EXPECT_TRUE(trouble.starts_with("tarnwick reports a fault: ")) << trouble;
    EXPECT_TRUE(trouble.ends_with("WARNING: ThreadSanitizer: data race")) << trouble;
}

}  // namespace
