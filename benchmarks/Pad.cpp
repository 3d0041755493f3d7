// bench_pad: the signature pad, 1200 x 400 points at a density of 2. Times are computing times of the GUI thread.

#include "Measure.h"

#include "V1/capture/PadImage.h"
#include "V1/capture/SignaturePadBackgroundView.h"
#include "V1/capture/SignaturePadView.h"
#include "V1/capture/SignatureTrimming.h"

#include <QApplication>
#include <QFile>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QWindow>

#include <cmath>

using namespace inkory;
using namespace inkory::bench;

namespace
{

constexpr QSize padSize(1200, 400);
constexpr int eventCount = 1'500;  // a second and a half of writing
constexpr int eventsPerFrame = 16; // 1,000 a second, 60 frames a second

// Large letters over three quarters of the pad, with about 3 points from event to event.
QPointF handAt(int i)
{
    const double way = i * 0.02;
    return {600 + 440 * std::sin(way * 0.13), 200 + 140 * std::sin(way * 1.7)};
}

void sendMouse(QWidget &pad, QEvent::Type type, QPointF position)
{
    const QPointF at = pad.mapTo(pad.window(), position);
    const bool isMove = type == QEvent::MouseMove;
    QMouseEvent event(type, at, at, pad.mapToGlobal(position), isMove ? Qt::NoButton : Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(pad.window()->windowHandle(), &event);
}

void drawing(SignaturePadView &pad, const QString &name, std::uint64_t thickness)
{
    pad.setThickness(thickness);
    sendMouse(pad, QEvent::MouseButtonPress, handAt(0));
    std::vector<double> segments;
    double frames = 0;
    for (int i = 1; i < eventCount; ++i) {
        segments.push_back(computingMillisecondsOf([&] { sendMouse(pad, QEvent::MouseMove, handAt(i)); }));
        if (i % eventsPerFrame == 0)
            frames += computingMillisecondsOf([] { QCoreApplication::processEvents(); });
    }
    sendMouse(pad, QEvent::MouseButtonRelease, handAt(eventCount));
    double total = frames;
    for (const double segment : segments)
        total += segment;
    reportTimes(name + QStringLiteral(", one segment"), segments, 0.1, 1);
    reportNumber(name + QStringLiteral(", GUI thread at 1,000 events a second"), total / eventCount * 100,
                 QStringLiteral("%"), 10);
}

void saving(const SignaturePadView &pad, const QString &path)
{
    std::vector<double> times;
    for (int i = 0; i < 20; ++i) {
        times.push_back(computingMillisecondsOf([&] {
            QFile file(path);
            const QByteArray bytes = trimmedSignature(pad.image())->pngBytes().value();
            if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
                qFatal("cannot write %s", qPrintable(path));
        }));
    }
    reportNumber(QStringLiteral("trimming and saving"), median(times), QStringLiteral("ms"), 60);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    prepareEnvironment(folder.path());
    qputenv("QT_SCALE_FACTOR", "2");
    QCoreApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    const QApplication application(argc, argv);

    SignaturePadBackgroundView background;
    background.resize(padSize);
    SignaturePadView pad(&background);
    pad.resize(padSize);
    pad.awakeFromNib();
    pad.setColor(Qt::black);
    pad.setImage(emptyPadImage(padSize, 2));
    background.show();
    runUntil([&] { return background.windowHandle()->isExposed(); });

    drawing(pad, QStringLiteral("pen of 5"), 5);
    saving(pad, folder.filePath(QStringLiteral("signature.png")));
    pad.setSelectedSignatureDrawTool(SignatureDrawToolEraser);
    drawing(pad, QStringLiteral("eraser of 20"), 20);
    std::vector<double> steps;
    for (int i = 0; i < 20; ++i)
        steps.push_back(computingMillisecondsOf([&] { i % 2 ? pad.redo() : pad.undo(); }));
    reportNumber(QStringLiteral("undo or redo of that"), median(steps), QStringLiteral("ms"), 16);

    pad.setSignatureDrawingMode(SignatureDrawingModeTrackpad);
    std::vector<double> frames;
    for (int i = 0; i < 100; ++i)
        frames.push_back(computingMillisecondsOf([&] { pad.repaint(); }));
    reportTimes(QStringLiteral("frame of the whole pad with its hint"), frames, 8, 16);
    return exitStatus();
}
