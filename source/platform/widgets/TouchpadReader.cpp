#include "platform/widgets/TouchpadReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace inkory
{

namespace
{

constexpr std::size_t eventsAtOnce = 64;

double fraction(int value, const TouchpadReader::AxisRange &range)
{
    const double length = double(range.maximum) - range.minimum;
    return length > 0 ? std::clamp((double(value) - range.minimum) / length, 0.0, 1.0) : 0.0;
}

/// One value of each slot, as the kernel has them.
template <std::size_t count> struct SlotValues
{
    __u32 code = 0;
    std::array<__s32, count> values{};

    bool read(int descriptor, __u32 wanted)
    {
        code = wanted;
        return ::ioctl(descriptor, EVIOCGMTSLOTS(sizeof(*this)), this) >= 0;
    }
};

} // namespace

TouchpadReader::TouchpadReader(int descriptor, Surface surface)
    : m_notifier(descriptor, QSocketNotifier::Read), m_surface(surface)
{
    (void)m_file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle);
    connect(&m_notifier, &QSocketNotifier::activated, this, &TouchpadReader::readAvailable);
    readKernelState(); // fingers may be there already
}

bool TouchpadReader::hasFingers() const
{
    return std::any_of(m_slots.begin(), m_slots.end(), [](const Slot &slot) { return slot.identity >= 0; });
}

void TouchpadReader::readAvailable()
{
    std::array<char, eventsAtOnce * sizeof(input_event)>
        buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    const ssize_t count = ::read(descriptor(), buffer.data(), buffer.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return; // the notifier tells when there is more
    if (count <= 0) {
        m_notifier.setEnabled(false);
        Q_EMIT lost();
        return;
    }
    Q_EMIT heard();
    m_rest.append(buffer.data(), static_cast<qsizetype>(count));
    const QByteArray bytes = std::exchange(m_rest, {});
    qsizetype at = 0;
    for (input_event event; at + qsizetype(sizeof event) <= bytes.size(); at += qsizetype(sizeof event)) {
        std::memcpy(&event, bytes.constData() + at, sizeof event);
        take(event);
    }
    m_rest = bytes.mid(at);
}

void TouchpadReader::take(const input_event &event)
{
    if (event.type == EV_SYN && event.code == SYN_DROPPED) {
        m_isIncomplete = true;
    } else if (event.type == EV_SYN && event.code == SYN_REPORT) {
        if (std::exchange(m_isIncomplete, false))
            readKernelState();
        finishReport();
    } else if (event.type == EV_ABS && !m_isIncomplete) {
        takePlace(event.code, event.value);
    }
}

void TouchpadReader::takePlace(int code, int value)
{
    if (code == ABS_MT_SLOT)
        m_slot = value >= 0 ? static_cast<std::size_t>(value) : slotCount;
    if (m_slot >= slotCount)
        return;
    Slot &slot = m_slots.at(m_slot);
    switch (code) {
    case ABS_MT_TRACKING_ID:
        setIdentity(slot, value);
        break;
    case ABS_MT_POSITION_X:
        slot.x = value;
        slot.isMoved = true;
        break;
    case ABS_MT_POSITION_Y:
        slot.y = value;
        slot.isMoved = true;
        break;
    default:
        break;
    }
}

void TouchpadReader::setIdentity(Slot &slot, int identity)
{
    if (slot.identity >= 0 && slot.isTold)
        m_ended.push_back(touchOf(slot, TouchPhase::Ended));
    slot.identity = std::max(identity, -1);
    slot.isTold = false;
}

void TouchpadReader::finishReport()
{
    Touches touches = std::exchange(m_ended, {});
    bool isNews = !touches.empty();
    for (Slot &slot : m_slots) {
        const bool isMoved = std::exchange(slot.isMoved, false);
        if (slot.identity < 0)
            continue;
        isNews = isNews || isMoved || !slot.isTold;
        const TouchPhase phase = isMoved ? TouchPhase::Moved : TouchPhase::Stationary;
        touches.push_back(touchOf(slot, slot.isTold ? phase : TouchPhase::Began));
        slot.isTold = true;
    }
    if (isNews)
        Q_EMIT touched(touches);
}

/// Where the kernel does not say what the fingers do now, they count as lifted.
void TouchpadReader::readKernelState()
{
    SlotValues<slotCount> identities;
    SlotValues<slotCount> x;
    SlotValues<slotCount> y;
    input_absinfo current{};
    const bool isKnown = identities.read(descriptor(), ABS_MT_TRACKING_ID) && x.read(descriptor(), ABS_MT_POSITION_X) &&
                         y.read(descriptor(), ABS_MT_POSITION_Y) &&
                         ::ioctl(descriptor(), EVIOCGABS(ABS_MT_SLOT), &current) >= 0;
    const int lastSlot = isKnown ? current.maximum : -1; // the kernel leaves the others as they were: 0
    for (std::size_t i = 0; i < slotCount; ++i) {
        Slot &slot = m_slots.at(i);
        const int identity = static_cast<int>(i) <= lastSlot ? identities.values.at(i) : -1;
        if (identity != slot.identity)
            setIdentity(slot, identity);
        if (static_cast<int>(i) <= lastSlot) {
            slot.isMoved = true;
            slot.x = x.values.at(i);
            slot.y = y.values.at(i);
        }
    }
    m_slot = isKnown ? static_cast<std::size_t>(std::max(current.value, 0)) : m_slot;
}

Touch TouchpadReader::touchOf(const Slot &slot, TouchPhase phase) const
{
    return {slot.identity, phase, QPointF(fraction(slot.x, m_surface.x), 1 - fraction(slot.y, m_surface.y))};
}

} // namespace inkory
