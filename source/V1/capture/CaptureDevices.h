#pragma once

#include "platform/widgets/RelativePointerCapture.h"
#include "platform/widgets/TouchpadCapture.h"

namespace inkory
{

/// What a click in trackpad mode captures: the touchpad, where the machine has one that may be read, otherwise the
/// pointer. Touch screens and pens need no capture. Owned by the signature window's controller.
class CaptureDevices : public QObject, public TouchSource
{
    Q_OBJECT

public:
    enum class Held { Nothing, Touchpad, Pointer };

    /// For drawing on this widget.
    explicit CaptureDevices(QWidget &surface);

    /// For tests: what opens the touchpad instead, for objects that are made while it is set.
    static void setTouchpadOpener(std::function<Touchpad()> open);

    /// Whether there is anything with which trackpad mode could be used: a touch screen, a pen, a touchpad (readable or
    /// not: the window says how to make it so), or a desktop that lets the pointer be held.
    static bool isTrackpadModeUsable();

    Held held() const;
    /// Whether the last capture found nothing to hold.
    bool wasInVain() const { return m_wasInVain; }
    /// Whether the last capture met a touchpad that this program may not read.
    bool isTouchpadForbidden() const { return m_touchpad.isForbidden(); }

    /// Of any pointing device: window systems seldom tell a touchpad's clicks from a mouse's.
    bool startsWithClickOf(QInputDevice::DeviceType) const override { return true; }
    bool beginCapture(TouchReceiver &receiver) override;
    void endCapture() override;

    /// Gives the pointer back while another window has the keyboard, as Escape would not reach this one; and takes it
    /// again.
    void suspend();
    void resume();

Q_SIGNALS:
    /// A capture was begun, in vain perhaps, or ended.
    void changed();

private:
    TouchpadCapture m_touchpad;
    RelativePointerCapture m_pointer;
    TouchReceiver *m_receiver = nullptr; // not owned; from beginCapture() to endCapture()
    bool m_wasInVain = false;
};

} // namespace inkory
