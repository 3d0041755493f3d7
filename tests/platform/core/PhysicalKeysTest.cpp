#include "platform/core/PhysicalKeys.h"

#include <QKeyEvent>

#include <gtest/gtest.h>

namespace inkory
{
namespace
{

struct KeyCase
{
    int key;
    quint32 scanCode;
    PhysicalKey expected;
};

class PhysicalKeyOfEvent : public ::testing::TestWithParam<KeyCase>
{
};

TEST_P(PhysicalKeyOfEvent, IsItsPlaceOnTheKeyboard)
{
    const KeyCase &each = GetParam();
    const QKeyEvent event(QEvent::KeyPress, each.key, Qt::NoModifier, each.scanCode, 0, 0);
    EXPECT_EQ(physicalKey(event), each.expected) << each.key << " " << each.scanCode;
}

INSTANTIATE_TEST_SUITE_P(Letters, PhysicalKeyOfEvent,
                         ::testing::Values(KeyCase{Qt::Key_K, 55, PhysicalKey::V}, // a Dvorak layout's letters
                                           KeyCase{Qt::Key_O, 39, PhysicalKey::S},
                                           KeyCase{Qt::Key_Y, 28, PhysicalKey::T},
                                           KeyCase{0x041C, 55, PhysicalKey::V}, // Cyrillic Em
                                           KeyCase{Qt::Key_V, 60, PhysicalKey::Unknown},
                                           KeyCase{Qt::Key_V, 0, PhysicalKey::V}, KeyCase{Qt::Key_S, 0, PhysicalKey::S},
                                           KeyCase{Qt::Key_T, 0, PhysicalKey::T},
                                           KeyCase{Qt::Key_A, 0, PhysicalKey::Unknown}));
INSTANTIATE_TEST_SUITE_P(Others, PhysicalKeyOfEvent,
                         ::testing::Values(KeyCase{Qt::Key_Return, 36, PhysicalKey::Return},
                                           KeyCase{Qt::Key_Enter, 104, PhysicalKey::Return},
                                           KeyCase{Qt::Key_Escape, 9, PhysicalKey::Escape},
                                           KeyCase{Qt::Key_Backspace, 22, PhysicalKey::Backspace},
                                           KeyCase{Qt::Key_Delete, 119, PhysicalKey::ForwardDelete},
                                           KeyCase{Qt::Key_Up, 111, PhysicalKey::Up},
                                           KeyCase{Qt::Key_Down, 88, PhysicalKey::Down}, // on the keypad
                                           KeyCase{Qt::Key_Left, 113, PhysicalKey::Left},
                                           KeyCase{Qt::Key_Right, 0, PhysicalKey::Right}));

struct ModifierCase
{
    Qt::KeyboardModifiers modifiers;
    quint32 nativeModifiers;
    const char *text;
    bool capsLock;
    bool anyModifier;
};

class ModifiersOfEvent : public ::testing::TestWithParam<ModifierCase>
{
};

TEST_P(ModifiersOfEvent, IncludeCapsLock)
{
    const ModifierCase &each = GetParam();
    const QKeyEvent event(QEvent::KeyPress, Qt::Key_S, each.modifiers, 39, 0, each.nativeModifiers,
                          QString::fromUtf8(each.text));
    EXPECT_EQ(capsLockIsOn(event), each.capsLock);
    EXPECT_EQ(hasAnyModifier(event), each.anyModifier);
}

INSTANTIATE_TEST_SUITE_P(All, ModifiersOfEvent,
                         ::testing::Values(ModifierCase{Qt::NoModifier, 0, "s", false, false},
                                           ModifierCase{Qt::NoModifier, 0x10, "s", false, false}, // Num Lock
                                           ModifierCase{Qt::NoModifier, 0x2, "S", true, true},
                                           ModifierCase{Qt::NoModifier, 0x2, "", true, true},
                                           ModifierCase{Qt::NoModifier, 0, "S", true, true},
                                           ModifierCase{Qt::ShiftModifier, 0, "S", false, true},
                                           ModifierCase{Qt::ControlModifier, 0, "", false, true},
                                           ModifierCase{Qt::AltModifier, 0, "s", false, true},
                                           ModifierCase{Qt::MetaModifier, 0, "s", false, true},
                                           ModifierCase{Qt::KeypadModifier, 0, "", false, true}));

} // namespace
} // namespace inkory
