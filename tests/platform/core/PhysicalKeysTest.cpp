#include "platform/core/PhysicalKeys.h"

#include <QKeyEvent>

#include <gtest/gtest.h>

using namespace inkory;

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
