#include "Platform/Qt/Tray/KeySequence.h"

#include <QList>
#include <QString>
#include <optional>

namespace Platform {
namespace {

struct NamedKey {
    char16_t character;
    Qt::Key key;
};

// The characters by which menus name keys that type none.
constexpr NamedKey namedKeys[] = {
    {0x03, Qt::Key_Enter},
    {0x08, Qt::Key_Backspace},
    {0x09, Qt::Key_Tab},
    {0x0D, Qt::Key_Return},
    {0x1B, Qt::Key_Escape},
    {0xF700, Qt::Key_Up},
    {0xF701, Qt::Key_Down},
    {0xF702, Qt::Key_Left},
    {0xF703, Qt::Key_Right},
    {0xF728, Qt::Key_Delete},
    {0xF729, Qt::Key_Home},
    {0xF72B, Qt::Key_End},
    {0xF72C, Qt::Key_PageUp},
    {0xF72D, Qt::Key_PageDown},
    {0xF739, Qt::Key_Clear},
    {0xF746, Qt::Key_Help},
};
constexpr char16_t firstFunctionKey = 0xF704;
constexpr char16_t lastFunctionKey = 0xF726;  // F35
constexpr char16_t firstPrivate = 0xF700;
constexpr char16_t lastPrivate = 0xF8FF;

std::optional<int> keyOf(const QString& text)
{
    const auto characters = text.toUpper().toUcs4();
    if (characters.size() != 1)
        return std::nullopt;
    const auto character = characters.front();
    for (const auto& named : namedKeys) {
        if (named.character == character)
            return named.key;
    }
    if (character >= firstFunctionKey && character <= lastFunctionKey)
        return Qt::Key_F1 + static_cast<int>(character - firstFunctionKey);
    if (character < 0x20 || (character >= firstPrivate && character <= lastPrivate))
        return std::nullopt;
    return static_cast<int>(character);
}

}  // namespace

QKeySequence keySequenceOf(const KeyEquivalent& keyEquivalent)
{
    const auto key = keyOf(QString::fromStdString(keyEquivalent.text));
    if (!key)
        return {};
    const auto bit = [&](std::uint32_t flag, Qt::KeyboardModifier modifier) { return (keyEquivalent.modifierMask & flag) != 0 ? int(modifier) : 0; };
    return QKeySequence(*key | bit(ModifierFlag::command, Qt::MetaModifier) | bit(ModifierFlag::option, Qt::AltModifier) |
        bit(ModifierFlag::control, Qt::ControlModifier) | bit(ModifierFlag::shift, Qt::ShiftModifier));
}

}  // namespace Platform
