#include "Platform/NotificationCenter.h"

#include <utility>
#include <vector>

namespace Platform {

struct NotificationCenter::Observer {
    std::string name;
    std::function<void(const Notification&)> callback;
    bool isRemoved = false;
};

NotificationCenter::NotificationCenter() : m_observers(std::make_shared<std::list<std::shared_ptr<Observer>>>()) { }

NotificationCenter::~NotificationCenter() = default;

Token NotificationCenter::addObserver(std::string name, std::function<void(const Notification&)> callback)
{
    auto observer = std::make_shared<Observer>(Observer{std::move(name), std::move(callback)});
    m_observers->push_back(observer);
    return Token([observers = std::weak_ptr(m_observers), observer] {
        observer->isRemoved = true;
        if (auto list = observers.lock())
            list->remove(observer);
    });
}

void NotificationCenter::post(std::string_view name, const std::any& userInfo)
{
    std::vector<std::shared_ptr<Observer>> receivers;
    for (const auto& observer : *m_observers) {
        if (observer->name == name)
            receivers.push_back(observer);
    }
    for (const auto& observer : receivers) {
        if (!observer->isRemoved)
            observer->callback(Notification{name, userInfo});
    }
}

}  // namespace Platform
