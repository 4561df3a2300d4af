#include "KeyboardShortcuts/HandlerTable.h"

#include <utility>

namespace KeyboardShortcuts {

HandlerTable::HandlerTable() : m_table(std::make_shared<Table>()) { }

HandlerTable::~HandlerTable() { clear(); }

void HandlerTable::add(const Name& name, Action action) { append(name, std::move(action)); }

Platform::Token HandlerTable::subscribe(const Name& name, Action action)
{
    auto handler = append(name, std::move(action));
    return Platform::Token([table = std::weak_ptr(m_table), name, handler = std::move(handler)] {
        handler->isRemoved = true;
        if (const auto living = table.lock())
            removeFrom(*living, name, handler);
    });
}

void HandlerTable::remove(const Name& name)
{
    const auto entry = m_table->find(name);
    if (entry == m_table->end())
        return;
    for (const auto& handler : entry->second)
        handler->isRemoved = true;
    m_table->erase(entry);
}

void HandlerTable::clear()
{
    for (const auto& name : names())
        remove(name);
}

std::vector<Name> HandlerTable::names() const
{
    std::vector<Name> result;
    for (const auto& [name, handlers] : *m_table)
        result.push_back(name);
    return result;
}

void HandlerTable::callMatching(const std::function<bool(const Name&)>& matches) const
{
    const auto table = *m_table;
    for (const auto& [name, handlers] : table) {
        if (!matches(name))
            continue;
        for (const auto& handler : handlers) {
            if (!handler->isRemoved)
                handler->action();
        }
    }
}

std::shared_ptr<HandlerTable::Handler> HandlerTable::append(const Name& name, Action action)
{
    auto handler = std::make_shared<Handler>(Handler{std::move(action)});
    (*m_table)[name].push_back(handler);
    return handler;
}

void HandlerTable::removeFrom(Table& table, const Name& name, const std::shared_ptr<Handler>& handler)
{
    const auto entry = table.find(name);
    if (entry == table.end())
        return;
    std::erase(entry->second, handler);
    if (entry->second.empty())
        table.erase(entry);
}

}  // namespace KeyboardShortcuts
