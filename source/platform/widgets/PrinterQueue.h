#pragma once

#include "platform/pdf/PrintInfo.h"

#include <QString>
#include <QStringList>

namespace inkory
{

/// The program that hands files to the print system, with its full path; empty where it is not installed. Qt can print
/// to a printer itself, but then what was cancelled is printed as far as it went, and a refusal stays unknown.
QString printerQueueProgram();

/// Its arguments for sending this PDF file to the printer of the information.
QStringList printerQueueArguments(const PrintInfo &info, const QString &title, const QString &file);

} // namespace inkory
