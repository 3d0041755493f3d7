#include "platform/widgets/TouchpadSearch.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <linux/input.h>
#include <optional>
#include <sys/ioctl.h>
#include <unistd.h>

namespace inkory
{

namespace
{

/// Whether a bit is set in a file of hexadecimal words, the highest word first.
bool hasBit(const QString &path, unsigned bit)
{
    constexpr unsigned bitsPerWord = 8 * sizeof(long);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QList<QByteArray> words = file.readAll().simplified().split(' ');
    const qsizetype word = words.size() - 1 - static_cast<qsizetype>(bit / bitsPerWord);
    return word >= 0 && ((words.at(word).toULongLong(nullptr, 16) >> (bit % bitsPerWord)) & 1U) != 0;
}

bool isTouchpad(const QString &description)
{
    const QString properties = description + QStringLiteral("/device/properties");
    const QString axes = description + QStringLiteral("/device/capabilities/abs");
    return hasBit(properties, INPUT_PROP_POINTER) && !hasBit(properties, INPUT_PROP_DIRECT) &&
           hasBit(axes, ABS_MT_SLOT) && hasBit(axes, ABS_MT_TRACKING_ID) && hasBit(axes, ABS_MT_POSITION_X) &&
           hasBit(axes, ABS_MT_POSITION_Y);
}

std::optional<TouchpadReader::AxisRange> rangeOf(int descriptor, unsigned axis)
{
    input_absinfo info{};
    if (::ioctl(descriptor, EVIOCGABS(axis), &info) < 0 || info.maximum <= info.minimum)
        return std::nullopt;
    return TouchpadReader::AxisRange{info.minimum, info.maximum};
}

Touchpad openDevice(const QString &path)
{
    Touchpad touchpad;
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        if (errno == EACCES || errno == EPERM)
            touchpad.state = Touchpad::State::NotAllowed;
        return touchpad;
    }
    const auto x = rangeOf(descriptor, ABS_MT_POSITION_X);
    const auto y = rangeOf(descriptor, ABS_MT_POSITION_Y);
    if (!x || !y) {
        ::close(descriptor);
        return touchpad;
    }
    touchpad.state = Touchpad::State::Open;
    touchpad.reader = std::make_unique<TouchpadReader>(descriptor, TouchpadReader::Surface{*x, *y});
    touchpad.setGrabbed = [descriptor](bool grabbed) { return ::ioctl(descriptor, EVIOCGRAB, grabbed ? 1 : 0) == 0; };
    return touchpad;
}

} // namespace

QStringList touchpadNames(const QString &describedIn)
{
    QStringList names;
    const QStringList devices =
        QDir(describedIn).entryList({QStringLiteral("event*")}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &name : devices) {
        if (isTouchpad(describedIn + QLatin1Char('/') + name))
            names.append(name);
    }
    const auto isBefore = [](const QString &a, const QString &b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b; // by their numbers: 5 comes before 10
    };
    std::sort(names.begin(), names.end(), isBefore);
    return names;
}

Touchpad openTouchpad()
{
    Touchpad outcome;
    const QStringList names = touchpadNames(QStringLiteral("/sys/class/input"));
    for (const QString &name : names) {
        Touchpad touchpad = openDevice(QStringLiteral("/dev/input/") + name);
        if (touchpad.state == Touchpad::State::Open)
            return touchpad;
        if (touchpad.state == Touchpad::State::NotAllowed)
            outcome.state = touchpad.state;
    }
    return outcome;
}

} // namespace inkory
