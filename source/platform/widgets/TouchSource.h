#pragma once

#include <QInputDevice>
#include <QPointF>

#include <cstdint>
#include <vector>

namespace inkory
{

/// What became of a finger since the last report. The values are bits, so that several make a mask.
enum class TouchPhase : std::uint8_t { Began = 1, Moved = 2, Stationary = 4, Ended = 8, Cancelled = 16 };

/// One finger, or a pen, on a surface.
struct Touch
{
    /// The same for one contact, from its beginning to its end; may be used again afterwards.
    std::int64_t identity = 0;
    TouchPhase phase = TouchPhase::Began;
    /// On the surface: (0, 0) is its lower left, (1, 1) its upper right.
    QPointF normalizedPosition;
};

/// Every touch of a surface at one moment, in the surface's own order: those that are down, and those that have just
/// ended or been cancelled.
using Touches = std::vector<Touch>;

/// Takes touches.
class TouchReceiver
{
public:
    virtual ~TouchReceiver() = default;

    /// To be called once for each report of the device, with none left out: each becomes a piece of the line.
    virtual void touchesChanged(const Touches &touches) = 0;
    /// The source has ended by itself (the device is gone, the pointer was taken away) and sends nothing more.
    virtual void touchSourceLost() = 0;
};

/// A surface beside the screen whose touches can be had: a touchpad that is read directly, or a pointer that is held
/// fast and whose motion stands for a finger. Capturing keeps it from moving the pointer.
class TouchSource
{
public:
    virtual ~TouchSource() = default;

    /// Whether a click with such a device starts capture. Window systems often tell of every click that a mouse made
    /// it, so that a source has to take those, too.
    virtual bool startsWithClickOf(QInputDevice::DeviceType device) const
    {
        return device == QInputDevice::DeviceType::TouchPad;
    }
    /// From now on touches go to the receiver, which lives until endCapture(). False if that is impossible.
    virtual bool beginCapture(TouchReceiver &receiver) = 0;
    /// Gives the pointer back, visible. Does nothing when there is no capture.
    virtual void endCapture() = 0;
};

} // namespace inkory
