#include "support/Helpers.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <csignal>

#include <unistd.h>

namespace inkory::test
{

namespace
{

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

std::vector<pid_t> helperProcesses()
{
    std::vector<pid_t> helpers;
    const QString tasks = QStringLiteral("/proc/self/task");
    for (const QString &task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QByteArray &child :
             contentOf(tasks + QLatin1Char('/') + task + QStringLiteral("/children")).split(' ')) {
            const QByteArray status = contentOf(QStringLiteral("/proc/%1/stat").arg(QString::fromLatin1(child)));
            if (status.contains("(inkory-engine)") && !status.contains(") Z "))
                helpers.push_back(child.toInt());
        }
    }
    std::sort(helpers.begin(), helpers.end());
    return helpers;
}

void signalHelpers(int signal)
{
    for (const pid_t helper : helperProcesses())
        ::kill(helper, signal);
}

} // namespace inkory::test
