#include "platform/core/PhysicalKeys.h"

#include <QKeyEvent>

namespace inkory
{

namespace
{

// evdev's KEY_S, KEY_T and KEY_V, plus 8.
constexpr quint32 scanCodeOfT = 28;
constexpr quint32 scanCodeOfS = 39;
constexpr quint32 scanCodeOfV = 55;

// The Lock bit of an X11 modifier mask; Wayland's keymaps put Caps Lock at the same place.
constexpr quint32 nativeCapsLock = 0x2;

PhysicalKey letterByScanCode(quint32 scanCode)
{
    switch (scanCode) {
    case scanCodeOfV:
        return PhysicalKey::V;
    case scanCodeOfS:
        return PhysicalKey::S;
    case scanCodeOfT:
        return PhysicalKey::T;
    default:
        return PhysicalKey::Unknown;
    }
}

PhysicalKey letterByKey(int key)
{
    switch (key) {
    case Qt::Key_V:
        return PhysicalKey::V;
    case Qt::Key_S:
        return PhysicalKey::S;
    case Qt::Key_T:
        return PhysicalKey::T;
    default:
        return PhysicalKey::Unknown;
    }
}

} // namespace

PhysicalKey physicalKey(const QKeyEvent &event)
{
    // What is no letter has the same key() in every layout, and key() also knows the second meaning of the keypad's
    // keys.
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return PhysicalKey::Return;
    case Qt::Key_Escape:
        return PhysicalKey::Escape;
    case Qt::Key_Backspace:
        return PhysicalKey::Backspace;
    case Qt::Key_Delete:
        return PhysicalKey::ForwardDelete;
    case Qt::Key_Up:
        return PhysicalKey::Up;
    case Qt::Key_Down:
        return PhysicalKey::Down;
    case Qt::Key_Left:
        return PhysicalKey::Left;
    case Qt::Key_Right:
        return PhysicalKey::Right;
    default:
        return event.nativeScanCode() == 0 ? letterByKey(event.key()) : letterByScanCode(event.nativeScanCode());
    }
}

bool capsLockIsOn(const QKeyEvent &event)
{
    if (event.nativeModifiers() & nativeCapsLock)
        return true;
    const QString text = event.text();
    return text.size() == 1 && text.front().isUpper() && !event.modifiers().testFlag(Qt::ShiftModifier);
}

bool hasAnyModifier(const QKeyEvent &event)
{
    constexpr Qt::KeyboardModifiers counted =
        Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier | Qt::KeypadModifier;
    return (event.modifiers() & counted) != Qt::NoModifier || capsLockIsOn(event);
}

} // namespace inkory
