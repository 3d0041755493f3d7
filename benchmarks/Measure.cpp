#include "Measure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace inkory::bench
{

namespace
{

bool allLimitsHeld = true;

const char *verdict(bool holds)
{
    allLimitsHeld = allLimitsHeld && holds;
    return holds ? "ok" : "TOO MUCH";
}

} // namespace

void prepareEnvironment(const QString &home)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
        qputenv(name, home.toLocal8Bit());
}

double millisecondsOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double computingMillisecondsOf(const std::function<void()> &work)
{
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    const double start = now();
    work();
    return now() - start;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Pair measureInTurn(int rounds, const std::function<void()> &measured, const std::function<void()> &floor,
                   const std::function<void()> &cleanUp)
{
    std::vector<double> measuredTimes;
    std::vector<double> floorTimes;
    for (int i = 0; i < rounds; ++i) {
        floorTimes.push_back(millisecondsOf(floor));
        measuredTimes.push_back(millisecondsOf(measured));
        if (cleanUp)
            cleanUp();
    }
    return {median(measuredTimes), median(floorTimes)};
}

void reportRatio(const QString &name, const Pair &pair, double limit)
{
    const double ratio = pair.measured / pair.floor;
    std::printf("%-58s %9.2f ms  floor %9.2f ms  ratio %5.2f  (at most %.2f) %s\n", qPrintable(name), pair.measured,
                pair.floor, ratio, limit, verdict(ratio <= limit));
    std::fflush(stdout);
}

void reportNumber(const QString &name, double value, const QString &unit, double limit)
{
    std::printf("%-58s %9.2f %s  (at most %.2f) %s\n", qPrintable(name), value, qPrintable(unit), limit,
                verdict(value <= limit));
    std::fflush(stdout);
}

void reportTimes(const QString &name, std::vector<double> times, double medianLimit, double lastLimit)
{
    std::sort(times.begin(), times.end());
    reportNumber(name + QStringLiteral(", median"), median(times), QStringLiteral("ms"), medianLimit);
    reportNumber(name + QStringLiteral(", 99th percentile"), times[times.size() * 99 / 100], QStringLiteral("ms"),
                 lastLimit);
}

int exitStatus()
{
    return allLimitsHeld ? 0 : 1;
}

void runUntil(const std::function<bool()> &condition)
{
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

QString writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QByteArray textPages(int count, int furtherLines)
{
    QByteArray file = "%PDF-1.7\n";
    std::vector<qsizetype> offsets;
    const auto add = [&](const QByteArray &body) {
        offsets.push_back(file.size());
        file += QByteArray::number(static_cast<qlonglong>(offsets.size())) + " 0 obj\n" + body + "\nendobj\n";
    };
    add("<< /Type /Catalog /Pages 2 0 R >>");
    QByteArray kids;
    for (int i = 0; i < count; ++i)
        kids += QByteArray::number(4 + 2 * i) + " 0 R ";
    add("<< /Type /Pages /Count " + QByteArray::number(count) + " /Kids [ " + kids + "] >>");
    add("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>");
    for (int i = 0; i < count; ++i) {
        const QByteArray content = "BT /F1 12 Tf 14 TL 72 700 Td (Page " + QByteArray::number(i + 1) + ") Tj" +
                                   QByteArray(" T* (All parties agree to what this line says, and to nothing else.) Tj")
                                       .repeated(furtherLines) +
                                   " ET";
        add("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Resources << /Font << /F1 3 0 R >> >> /Contents " +
            QByteArray::number(5 + 2 * i) + " 0 R >>");
        add("<< /Length " + QByteArray::number(content.size()) + " >>\nstream\n" + content + "\nendstream");
    }
    const qsizetype table = file.size();
    file += "xref\n0 " + QByteArray::number(static_cast<qlonglong>(offsets.size() + 1)) + "\n0000000000 65535 f \n";
    for (const qsizetype offset : offsets)
        file += QByteArray::number(static_cast<qlonglong>(offset)).rightJustified(10, '0') + " 00000 n \n";
    return file + "trailer\n<< /Size " + QByteArray::number(static_cast<qlonglong>(offsets.size() + 1)) +
           " /Root 1 0 R >>\nstartxref\n" + QByteArray::number(static_cast<qlonglong>(table)) + "\n%%EOF\n";
}

} // namespace inkory::bench
