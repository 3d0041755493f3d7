#pragma once

class QKeyEvent;

namespace inkory
{

/// The keys that act by their place on the keyboard, whatever letter the layout gives them. QKeyEvent::key() names the
/// letter; the place is in the native scan code (evdev code + 8, on X11 and on Wayland).
enum class PhysicalKey {
    Unknown,
    V,
    S,
    T,
    Return,
    Escape,
    Backspace,
    ForwardDelete,
    Up,
    Down,
    Left,
    Right,
};

/// Events without a scan code (synthetic ones) are judged by their key(). Keypad Enter is Return; the keypad's arrows
/// are arrows.
PhysicalKey physicalKey(const QKeyEvent &event);

/// Whether Caps Lock was on: no standard modifier tells, so the native modifiers are asked, and failing those an
/// upper-case text without Shift.
bool capsLockIsOn(const QKeyEvent &event);

/// Whether any of Caps Lock, Shift, Control, Alt, Meta or the keypad flag was set.
bool hasAnyModifier(const QKeyEvent &event);

} // namespace inkory
