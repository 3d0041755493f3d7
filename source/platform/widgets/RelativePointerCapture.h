#pragma once

#include "platform/widgets/TouchSource.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

class QMouseEvent;

namespace inkory
{

/// The ordinary pointer as if it were a finger, for devices that tell no more than how far they moved: mice, and
/// touchpads that this program may not read. The pointer is kept on the widget and shows where the finger is, with the
/// widget's own cursor. A finger is down while a button is held; a click keeps it down until the next one, as holding a
/// touchpad's button while drawing is tiresome. Needs a desktop that lets programs move the pointer.
class RelativePointerCapture : public QObject, public TouchSource
{
    Q_OBJECT

public:
    /// For drawing on this widget. Not owned; nothing can be captured once it is gone.
    explicit RelativePointerCapture(QWidget &surface) : m_surface(&surface) {}
    ~RelativePointerCapture() override;

    /// Whether this desktop lets a program hold the pointer.
    static bool isOffered();
    /// Whether the pointer is on the widget.
    bool isPointerThere() const;

    bool startsWithClickOf(QInputDevice::DeviceType) const override { return true; }
    /// The widget must be shown.
    bool beginCapture(TouchReceiver &receiver) override;
    void endCapture() override;
    bool isCaptured() const { return m_receiver != nullptr; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void press(const QMouseEvent &event);
    void move(const QMouseEvent &event);
    void release();
    void tell(TouchPhase phase);

    QPointer<QWidget> m_surface;
    TouchReceiver *m_receiver = nullptr; // not owned; while the pointer is captured
    QPointF m_position;                  // on the widget, from its upper left corner
    QPointF m_pressed;
    bool m_isDown = false;
    bool m_endsWithRelease = false;
    std::int64_t m_identity = 0;
};

} // namespace inkory
