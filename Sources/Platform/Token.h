// A guard for whatever must be undone: it runs its action once, when it is
// released or destroyed. A class keeps its tokens as its last members, so that
// they end first.
#pragma once

#include <functional>
#include <utility>

namespace Platform {

class [[nodiscard]] Token {
public:
    Token() = default;
    explicit Token(std::function<void()> undo) : m_undo(std::move(undo)) { }
    Token(Token&& other) noexcept : m_undo(std::exchange(other.m_undo, nullptr)) { }
    Token& operator=(Token&& other) noexcept
    {
        if (this != &other) {
            release();
            m_undo = std::exchange(other.m_undo, nullptr);
        }
        return *this;
    }
    Token(const Token&) = delete;
    Token& operator=(const Token&) = delete;
    ~Token() { release(); }

    explicit operator bool() const { return m_undo != nullptr; }

    void release()
    {
        if (auto undo = std::exchange(m_undo, nullptr))
            undo();
    }

private:
    std::function<void()> m_undo;
};

}  // namespace Platform
