#pragma once

#include "platform/widgets/TouchSource.h"

#include <QByteArray>
#include <QFile>
#include <QObject>
#include <QSocketNotifier>

#include <array>

struct input_event;

namespace inkory
{

/// Reads where the fingers on a touchpad are from its event device, which speaks the kernel's multitouch protocol with
/// slots. The desktop tells programs of a pointer only.
class TouchpadReader : public QObject
{
    Q_OBJECT

public:
    /// What the device reports at its edges.
    struct AxisRange
    {
        int minimum = 0;
        int maximum = 0;
    };
    struct Surface
    {
        AxisRange x; // to the right
        AxisRange y; // downward
    };

    /// Takes the descriptor over and closes it in the end. It must be open for reading without blocking.
    TouchpadReader(int descriptor, Surface surface);

    bool hasFingers() const;
    int descriptor() const { return m_file.handle(); }

Q_SIGNALS:
    /// The device said something, whatever it was.
    void heard();
    /// A report of the device in which anything changed.
    void touched(const inkory::Touches &touches);
    /// Nothing more will come: the device is gone.
    void lost();

private:
    /// What the device last said of one finger. The place outlives the finger: the kernel passes over what is the same
    /// for the next one in the slot.
    struct Slot
    {
        int identity = -1; // no finger
        int x = 0;
        int y = 0;
        bool isTold = false; // that it began
        bool isMoved = false;
    };
    static constexpr std::size_t slotCount = 32;

    void readAvailable();
    void take(const input_event &event);
    void takePlace(int code, int value);
    void setIdentity(Slot &slot, int identity);
    void finishReport();
    void readKernelState();
    Touch touchOf(const Slot &slot, TouchPhase phase) const;

    QFile m_file;
    QSocketNotifier m_notifier;
    Surface m_surface;
    QByteArray m_rest; // of an event that came in part
    std::array<Slot, slotCount> m_slots;
    std::size_t m_slot = 0; // that the next values belong to; one that is not there takes none
    Touches m_ended;
    bool m_isIncomplete = false; // events were lost since the last report
};

} // namespace inkory
