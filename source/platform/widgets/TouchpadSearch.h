#pragma once

#include "platform/widgets/TouchpadReader.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace inkory
{

/// A touchpad that was opened, or why there is none.
struct Touchpad
{
    enum class State { Open, None, NotAllowed };

    State state = State::None;
    /// Only when Open.
    std::unique_ptr<TouchpadReader> reader;
    /// Takes the device away from everybody else, or gives it back; whether that worked. Only while the reader lives.
    std::function<bool(bool grabbed)> setGrabbed;
};

/// The names ("event5") of the touchpads among the input devices that are described in this folder, as in
/// /sys/class/input, which everybody may read.
QStringList touchpadNames(const QString &describedIn);

/// Opens the first touchpad of the machine that may be opened.
Touchpad openTouchpad();

} // namespace inkory
