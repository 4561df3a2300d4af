#include "Platform/Token.h"

#include <gtest/gtest.h>

#include <utility>

namespace Platform {
namespace {

TEST(Token, UndoesOnceWhenItGoes)
{
    int undone = 0;
    {
        const Token token([&undone] { ++undone; });
        EXPECT_TRUE(token);
        EXPECT_EQ(undone, 0);
    }
    EXPECT_EQ(undone, 1);
}

TEST(Token, UndoesOnceWhenItIsReleased)
{
    int undone = 0;
    {
        Token token([&undone] { ++undone; });
        token.release();
        EXPECT_EQ(undone, 1);
        EXPECT_FALSE(token);
        token.release();
    }
    EXPECT_EQ(undone, 1);
}

TEST(Token, HandsItsDutyOnWhenItIsMoved)
{
    int undone = 0;
    {
        Token first([&undone] { ++undone; });
        const Token second(std::move(first));
        EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
        EXPECT_TRUE(second);
    }
    EXPECT_EQ(undone, 1);
}

TEST(Token, UndoesTheFormerWhenItIsAssigned)
{
    std::string order;
    Token token([&order] { order += "a"; });
    token = Token([&order] { order += "b"; });
    EXPECT_EQ(order, "a");
    token = Token();
    EXPECT_EQ(order, "ab");
}

TEST(Token, MayBeReleasedByItsOwnUndoing)
{
    int undone = 0;
    Token token;
    token = Token([&] {
        ++undone;
        token.release();
    });
    token.release();
    EXPECT_EQ(undone, 1);
}

TEST(Token, DoesNothingWhenEmpty)
{
    Token token;
    EXPECT_FALSE(token);
    token.release();
}

}  // namespace
}  // namespace Platform
