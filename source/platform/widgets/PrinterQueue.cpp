#include "platform/widgets/PrinterQueue.h"

#include <QStandardPaths>

namespace inkory
{

namespace
{

QString sidesOption(PrintSides sides)
{
    switch (sides) {
    case PrintSides::OneSided:
        return QStringLiteral("sides=one-sided");
    case PrintSides::LongEdge:
        return QStringLiteral("sides=two-sided-long-edge");
    case PrintSides::ShortEdge:
        return QStringLiteral("sides=two-sided-short-edge");
    case PrintSides::AsPrinterSays:
        break;
    }
    return {};
}

} // namespace

QString printerQueueProgram()
{
    return QStandardPaths::findExecutable(QStringLiteral("lp"));
}

QStringList printerQueueArguments(const PrintInfo &info, const QString &title, const QString &file)
{
    QStringList options{QStringLiteral("media=") + info.pageLayout.pageSize().key(),
                        QStringLiteral("print-scaling=none"), // pages stand on the paper as they are to stand
                        info.isCollated ? QStringLiteral("Collate=True") : QStringLiteral("Collate=False")};
    if (info.sides != PrintSides::AsPrinterSays)
        options.append(sidesOption(info.sides));
    if (info.colors == PrintColors::Gray)
        options.append(QStringLiteral("print-color-mode=monochrome"));
    for (qsizetype i = 0; i + 1 < info.jobOptions.size(); i += 2)
        options.append(info.jobOptions.at(i) + QLatin1Char('=') + info.jobOptions.at(i + 1));
    QStringList arguments{QStringLiteral("-d"), info.printerName,
                          QStringLiteral("-t"), title,
                          QStringLiteral("-n"), QString::number(info.copies)};
    for (const QString &option : options)
        arguments << QStringLiteral("-o") << option;
    return arguments << QStringLiteral("--") << file;
}

} // namespace inkory
