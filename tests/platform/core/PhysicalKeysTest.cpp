#include "platform/core/PhysicalKeys.h"

#include <QKeyEvent>

#include <gtest/gtest.h>

using namespace inkory;

namespace
{

PhysicalKey placeOf(int key, quint32 scanCode)
{
    return physicalKey(QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier, scanCode, 0, 0));
}

TEST(PhysicalKeys, AreThePlaceOnTheKeyboardWhateverTheLayout)
{
    EXPECT_EQ(placeOf(Qt::Key_K, 55), PhysicalKey::V); // a Dvorak layout's letters
    EXPECT_EQ(placeOf(Qt::Key_O, 39), PhysicalKey::S);
    EXPECT_EQ(placeOf(Qt::Key_Y, 28), PhysicalKey::T);
    EXPECT_EQ(placeOf(0x041C, 55), PhysicalKey::V); // Cyrillic Em
    EXPECT_EQ(placeOf(Qt::Key_V, 60), PhysicalKey::Unknown);
    EXPECT_EQ(placeOf(Qt::Key_V, 0), PhysicalKey::V);
    EXPECT_EQ(placeOf(Qt::Key_Enter, 104), PhysicalKey::Return);
    EXPECT_EQ(placeOf(Qt::Key_Escape, 9), PhysicalKey::Escape);
    EXPECT_EQ(placeOf(Qt::Key_Backspace, 22), PhysicalKey::Backspace);
    EXPECT_EQ(placeOf(Qt::Key_Delete, 119), PhysicalKey::ForwardDelete);
    EXPECT_EQ(placeOf(Qt::Key_Down, 88), PhysicalKey::Down); // on the keypad
}

TEST(PhysicalKeys, CapsLockIsAModifierToo)
{
    const auto pressed = [](Qt::KeyboardModifiers modifiers, quint32 native, const QString &text) {
        const QKeyEvent event(QEvent::KeyPress, Qt::Key_S, modifiers, 39, 0, native, text);
        return std::pair(capsLockIsOn(event), hasAnyModifier(event));
    };
    EXPECT_EQ(pressed(Qt::NoModifier, 0x10, u"s"_qs), std::pair(false, false)); // Num Lock
    EXPECT_EQ(pressed(Qt::NoModifier, 0x2, {}), std::pair(true, true));
    EXPECT_EQ(pressed(Qt::NoModifier, 0, u"S"_qs), std::pair(true, true));
    EXPECT_EQ(pressed(Qt::ShiftModifier, 0, u"S"_qs), std::pair(false, true));
    EXPECT_EQ(pressed(Qt::ControlModifier, 0, {}), std::pair(false, true));
}

} // namespace
