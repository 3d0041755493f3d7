#include "platform/widgets/TouchpadCapture.h"

#include "platform/core/Log.h"

namespace inkory
{

TouchpadCapture::TouchpadCapture(std::function<Touchpad()> open, std::chrono::milliseconds silence)
    : m_open(std::move(open))
{
    m_watchdog.setSingleShot(true);
    m_watchdog.setInterval(silence);
    connect(&m_watchdog, &QTimer::timeout, this, &TouchpadCapture::lose);
}

TouchpadCapture::~TouchpadCapture()
{
    endCapture();
}

bool TouchpadCapture::beginCapture(TouchReceiver &receiver)
{
    if (isCaptured())
        return false;
    m_touchpad = m_open();
    m_isForbidden = m_touchpad.state == Touchpad::State::NotAllowed;
    if (!isCaptured())
        return false;
    m_receiver = &receiver;
    TouchpadReader *reader = m_touchpad.reader.get();
    connect(reader, &TouchpadReader::heard, &m_watchdog, qOverload<>(&QTimer::start));
    connect(reader, &TouchpadReader::touched, this, &TouchpadCapture::take);
    connect(reader, &TouchpadReader::lost, this, &TouchpadCapture::lose);
    m_watchdog.start();
    if (!grabIfFree())
        endCapture();
    return isCaptured();
}

void TouchpadCapture::endCapture()
{
    m_watchdog.stop();
    if (m_isGrabbed && !m_touchpad.setGrabbed(false))
        logLine(QStringLiteral("the touchpad was not given back; closing it does"));
    m_isGrabbed = false;
    m_touchpad.setGrabbed = {};
    if (m_touchpad.reader) {
        m_touchpad.reader->disconnect();
        m_touchpad.reader.release()->deleteLater(); // it may be the one that is just telling something
    }
}

void TouchpadCapture::take(const Touches &touches)
{
    if (m_isGrabbed)
        m_receiver->touchesChanged(touches);
    else if (!grabIfFree())
        lose();
}

/// False where another program has it.
bool TouchpadCapture::grabIfFree()
{
    m_isGrabbed = !m_touchpad.reader->hasFingers() && m_touchpad.setGrabbed(true);
    return m_isGrabbed || m_touchpad.reader->hasFingers();
}

void TouchpadCapture::lose()
{
    endCapture();
    m_receiver->touchSourceLost();
}

} // namespace inkory
