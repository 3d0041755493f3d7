#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

namespace inkory::bench
{

/// Before the application object is made: offscreen unless another platform is asked for, and with the folder as home,
/// so that nobody's settings are read or changed.
void prepareEnvironment(const QString &home);

/// Milliseconds that the work takes.
double millisecondsOf(const std::function<void()> &work);

/// The computing time of this thread that the work takes: frames wait for nothing, and whatever else the machine does
/// is left out.
double computingMillisecondsOf(const std::function<void()> &work);

double median(std::vector<double> values);

/// Runs both in turn, `rounds` times each, so that whatever else the machine does hits both; the medians in
/// milliseconds.
struct Pair
{
    double measured = 0;
    double floor = 0;
};
Pair measureInTurn(int rounds, const std::function<void()> &measured, const std::function<void()> &floor,
                   const std::function<void()> &cleanUp = {});

/// Prints one line and notes whether the limit holds: measured / floor against the largest ratio allowed.
void reportRatio(const QString &name, const Pair &pair, double limit);
/// The same for a plain number against the largest one allowed.
void reportNumber(const QString &name, double value, const QString &unit, double limit);
/// The same for the median and the 99th percentile of times in milliseconds.
void reportTimes(const QString &name, std::vector<double> times, double medianLimit, double lastLimit);
/// 0 if every limit held, 1 otherwise.
int exitStatus();

/// Runs the event loop until the condition holds.
void runUntil(const std::function<bool()> &condition);

/// Writes a file and answers its path; where that is impossible, the benchmark ends.
QString writeFile(const QString &path, const QByteArray &bytes);

/// A healthy PDF of this many US letter pages with a line of text each, and further ones.
QByteArray textPages(int count, int furtherLines = 0);

} // namespace inkory::bench
