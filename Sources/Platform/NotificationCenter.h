// Synchronous notifications by name on the posting thread. Main thread only.
#pragma once

#include <any>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/Token.h"

namespace Platform {

struct Notification {
    std::string_view name;
    const std::any& userInfo;  // what it holds is documented with the name
};

class NotificationCenter {
public:
    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    // Observers are called in the order of registration. One may be added or removed
    // while a notification is delivered: a removed one is not called any more, an added
    // one first gets the next notification. Tokens may outlive the centre.
    Token addObserver(std::string name, std::function<void(const Notification&)>);
    void post(std::string_view name, const std::any& userInfo = {});

private:
    struct Observer;
    std::shared_ptr<std::list<std::shared_ptr<Observer>>> m_observers;
};

}  // namespace Platform
