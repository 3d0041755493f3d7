#pragma once

#include "platform/widgets/ScrolledPages.h"

#include <QEvent>
#include <QPointF>
#include <QScroller>

#include <array>
#include <optional>
#include <vector>

class QTouchEvent;

namespace inkory
{

/// Fingers on the pages of a view: one scrolls them, and they glide on; a tap is a click; one that starts on what the
/// view claims drags that, as a mouse would; two zoom. Owned by the view, whose viewport takes touch events. Positions
/// are in the viewport.
class TouchInput
{
public:
    explicit TouchInput(ScrolledPages &view) : m_view(view) {}

    /// An event of the viewport. Whether it was a finger's, or one of the gliding, and is done with.
    bool handle(QEvent *event);
    /// Ends the gliding.
    void stop();

private:
    enum class Mode { None, Scroll, Drag, Pinch };
    struct Finger
    {
        int id = -1;
        QPointF at;
    };
    using Fingers = std::vector<Finger>; // that are down
    struct Pinch
    {
        std::array<int, 2> fingers{};
        double distance = 0;         // between the fingers when they began
        double factor = 1;           // the view's zoom factor then
        ScrolledPages::Place middle; // what was between the fingers then
    };

    static Fingers fingersOf(const QTouchEvent &event);
    static const Finger *fingerWithId(const Fingers &fingers, int id);
    bool begin(const QTouchEvent &event);
    void move(const QTouchEvent &event);
    void lift(const QTouchEvent &event);
    void cancel();
    void startScrolling(const Finger &finger, qint64 milliseconds);
    void moveOne(const Fingers &fingers, const QTouchEvent &event);
    void startPinch(const Finger &one, const Finger &other);
    void pinch(const Fingers &fingers);
    QPointF placeOfLifted(const QTouchEvent &event) const;
    bool belongsToChild(const QPointF &finger) const;
    QPointF tapTarget();
    void sendMouse(QEvent::Type type, const QPointF &position) const;
    QScroller &scroller();

    ScrolledPages &m_view;
    Mode m_mode = Mode::None;
    bool m_mayTap = false;
    int m_finger = 0; // the one that scrolls or drags
    QPointF m_last;   // where it is
    std::optional<Pinch> m_pinch;
    QScroller *m_scroller = nullptr; // owned by the viewport; made for the first finger
};

} // namespace inkory
