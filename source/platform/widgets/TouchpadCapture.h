#pragma once

#include "platform/widgets/TouchpadSearch.h"

#include <QTimer>

#include <chrono>

namespace inkory
{

/// The fingers on the machine's touchpad. While it is captured, nobody else hears of them. It is taken when no finger
/// is on it, or the desktop would take one for lying there ever after. Given back also when it was silent for a minute:
/// by then whoever drew has left, or does not know how to get the pointer back.
class TouchpadCapture : public QObject, public TouchSource
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds longestSilence = std::chrono::seconds(60);

    /// What opens the touchpad, and how long it may be silent, can be replaced.
    explicit TouchpadCapture(std::function<Touchpad()> open = openTouchpad,
                             std::chrono::milliseconds silence = longestSilence);
    ~TouchpadCapture() override;

    bool beginCapture(TouchReceiver &receiver) override;
    void endCapture() override;
    bool isCaptured() const { return m_touchpad.reader != nullptr; }
    /// Whether there is a touchpad that this program may not read; known after beginCapture().
    bool isForbidden() const { return m_isForbidden; }

private:
    void take(const Touches &touches);
    bool grabIfFree();
    void lose();

    std::function<Touchpad()> m_open;
    Touchpad m_touchpad;
    TouchReceiver *m_receiver = nullptr; // not owned; while it is captured
    QTimer m_watchdog;
    bool m_isGrabbed = false;
    bool m_isForbidden = false;
};

} // namespace inkory
