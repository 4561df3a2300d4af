#include "KeyboardShortcuts/HandlerTable.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace KeyboardShortcuts {
namespace {

const Name crosshair("crosshair");
const Name loupe("loupe");

void call(const HandlerTable& table, const Name& name)
{
    table.callMatching([&](const Name& candidate) { return candidate == name; });
}

class HandlerTableTest : public testing::Test {
protected:
    HandlerTable::Action append(char letter)
    {
        return [this, letter] { m_calls += letter; };
    }

    std::string m_calls;
    HandlerTable m_table;
};

TEST_F(HandlerTableTest, CallsTheActionsOfANameInTheirOrder)
{
    m_table.add(crosshair, append('a'));
    m_table.add(loupe, append('x'));
    m_table.add(crosshair, append('b'));
    call(m_table, crosshair);
    EXPECT_EQ(m_calls, "ab");
}

TEST_F(HandlerTableTest, KeepsTheSameActionTwice)
{
    const auto action = append('a');
    m_table.add(crosshair, action);
    m_table.add(crosshair, action);
    call(m_table, crosshair);
    EXPECT_EQ(m_calls, "aa");
}

TEST_F(HandlerTableTest, ForgetsTheActionsOfOneNameOrOfAll)
{
    m_table.add(crosshair, append('a'));
    m_table.add(loupe, append('b'));
    m_table.remove(crosshair);
    call(m_table, crosshair);
    call(m_table, loupe);
    EXPECT_EQ(m_calls, "b");
    EXPECT_EQ(m_table.names(), std::vector<Name>{loupe});
    m_table.clear();
    call(m_table, loupe);
    EXPECT_EQ(m_calls, "b");
    EXPECT_TRUE(m_table.names().empty());
}

TEST_F(HandlerTableTest, EndsASubscriptionWithItsToken)
{
    auto first = m_table.subscribe(crosshair, append('a'));
    auto second = m_table.subscribe(crosshair, append('b'));
    first.release();
    call(m_table, crosshair);
    EXPECT_EQ(m_calls, "b");
    second.release();
    EXPECT_TRUE(m_table.names().empty());
}

TEST_F(HandlerTableTest, LetsTokensOutliveTheNameAndTheTable)
{
    auto table = std::make_unique<HandlerTable>();
    auto removed = table->subscribe(crosshair, append('a'));
    auto kept = table->subscribe(loupe, append('b'));
    table->remove(crosshair);
    removed.release();
    table.reset();
    kept.release();
    EXPECT_EQ(m_calls, "");
}

TEST_F(HandlerTableTest, DoesNotCallAnActionThatAnEarlierOneRemoved)
{
    m_table.add(crosshair, [this] { m_table.remove(crosshair); });
    m_table.add(crosshair, append('b'));
    call(m_table, crosshair);
    EXPECT_EQ(m_calls, "");
}

TEST_F(HandlerTableTest, DoesNotCallASubscriptionThatAnEarlierActionEnded)
{
    Platform::Token token;
    m_table.add(crosshair, [&] { token.release(); });
    token = m_table.subscribe(crosshair, append('b'));
    call(m_table, crosshair);
    EXPECT_EQ(m_calls, "");
}

TEST_F(HandlerTableTest, CallsAnActionAddedMeanwhileAtTheNextCallOnly)
{
    m_table.add(crosshair, [this] {
        for (int i = 0; i < 100; ++i)
            m_table.add(Name("other" + std::to_string(i)), [] {});
        m_table.add(crosshair, append('n'));
    });
    call(m_table, crosshair);
    EXPECT_EQ(m_calls, "");
    call(m_table, crosshair);
    EXPECT_EQ(m_calls, "n");
}

}  // namespace
}  // namespace KeyboardShortcuts
