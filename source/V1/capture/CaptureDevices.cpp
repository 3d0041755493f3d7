#include "V1/capture/CaptureDevices.h"

#include "platform/widgets/TouchpadSearch.h"

#include <QInputDevice>

#include <algorithm>

namespace inkory
{

namespace
{

std::function<Touchpad()> &opener()
{
    static std::function<Touchpad()> open = openTouchpad;
    return open;
}

} // namespace

CaptureDevices::CaptureDevices(QWidget &surface) : m_touchpad(opener()), m_pointer(surface) {}

void CaptureDevices::setTouchpadOpener(std::function<Touchpad()> open)
{
    opener() = open ? std::move(open) : openTouchpad;
}

bool CaptureDevices::isTrackpadModeUsable()
{
    const auto draws = [](const QInputDevice *device) {
        return device->type() == QInputDevice::DeviceType::TouchScreen ||
               device->type() == QInputDevice::DeviceType::Stylus;
    };
    const QList<const QInputDevice *> devices = QInputDevice::devices();
    return RelativePointerCapture::isOffered() || std::any_of(devices.begin(), devices.end(), draws) ||
           !touchpadNames(QStringLiteral("/sys/class/input")).isEmpty();
}

CaptureDevices::Held CaptureDevices::held() const
{
    if (m_touchpad.isCaptured())
        return Held::Touchpad;
    return m_pointer.isCaptured() ? Held::Pointer : Held::Nothing;
}

bool CaptureDevices::beginCapture(TouchReceiver &receiver)
{
    m_receiver = &receiver;
    if (held() == Held::Nothing && !m_touchpad.beginCapture(receiver) && !m_pointer.beginCapture(receiver))
        m_receiver = nullptr;
    m_wasInVain = !m_receiver;
    Q_EMIT changed();
    return !m_wasInVain;
}

void CaptureDevices::endCapture()
{
    m_receiver = nullptr;
    suspend();
    Q_EMIT changed();
}

void CaptureDevices::suspend()
{
    m_touchpad.endCapture();
    m_pointer.endCapture();
}

void CaptureDevices::resume()
{
    TouchReceiver *receiver = m_receiver;
    if (!receiver || held() != Held::Nothing)
        return;
    // A pointer that is elsewhere came back to click there.
    if (!m_touchpad.beginCapture(*receiver) && !(m_pointer.isPointerThere() && m_pointer.beginCapture(*receiver)))
        receiver->touchSourceLost();
    Q_EMIT changed();
}

} // namespace inkory
