// Actions by name, in the order in which they were added. Actions may change the table
// while it calls them: one that was removed is not called any more, one that was added
// first gets the next call.
#pragma once

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "KeyboardShortcuts/Name.h"
#include "Platform/Token.h"

namespace KeyboardShortcuts {

class HandlerTable {
public:
    using Action = std::function<void()>;

    HandlerTable();
    ~HandlerTable();
    HandlerTable(const HandlerTable&) = delete;
    HandlerTable& operator=(const HandlerTable&) = delete;

    void add(const Name&, Action);
    // The action goes when the token does; the token may outlive the table.
    Platform::Token subscribe(const Name&, Action);
    void remove(const Name&);
    void clear();

    // Those with at least one action.
    std::vector<Name> names() const;

    // Asks for each name in turn, just before its actions are called.
    void callMatching(const std::function<bool(const Name&)>& matches) const;

private:
    struct Handler {
        Action action;
        bool isRemoved = false;
    };
    using Handlers = std::vector<std::shared_ptr<Handler>>;
    using Table = std::unordered_map<Name, Handlers>;

    std::shared_ptr<Handler> append(const Name&, Action);
    static void removeFrom(Table&, const Name&, const std::shared_ptr<Handler>&);

    std::shared_ptr<Table> m_table;
};

}  // namespace KeyboardShortcuts
