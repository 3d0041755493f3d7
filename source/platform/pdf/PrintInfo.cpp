#include "platform/pdf/PrintInfo.h"

#include <QLocale>

namespace inkory
{

namespace
{

QPageSize localPageSize()
{
    const bool isMetric = QLocale().measurementSystem() == QLocale::MetricSystem;
    return QPageSize(isMetric ? QPageSize::A4 : QPageSize::Letter);
}

} // namespace

// The pages have margins of their own; a printer adds the ones that it needs.
PrintInfo::PrintInfo() : pageLayout(localPageSize(), QPageLayout::Portrait, QMarginsF()) {}

PrintInfo &sharedPrintInfo()
{
    static PrintInfo shared;
    return shared;
}

} // namespace inkory
