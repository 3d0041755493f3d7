#pragma once

#include "V1/application/PDFDocumentModel.h"
#include "platform/core/Image.h"
#include "platform/core/Result.h"

#include <QPointF>
#include <QString>

#include <functional>

// Steps that the probe's commands share.

/// Runs the event loop until the condition holds; answers whether it did in time.
bool waitUntil(const std::function<bool()> &condition, qint64 patienceMilliseconds = 120'000);

/// Opens the file as a document and waits until it is settled what can be done with it.
void openAndSettle(PDFDocumentModel &model, const QString &path, const QString &password);

/// Places the image on the page (from 0) with its centre at the point in the page's space, as the editing view does,
/// and saves to the path.
inkory::Result<void> stampAndSave(PDFDocumentModel &model, const inkory::ImagePtr &image, int pageIndex, QPointF centre,
                                  const QString &path);

/// A text as it is typed, in one font.
struct ProbeText
{
    QString text;
    QString family; // empty: the program's own choice
    double pointSize = 12;
};

/// Writes the text on the page (from 0), the left end of its first base line at the point in the page's space, through
/// the editing view's placement and its editor, and saves to the path.
inkory::Result<void> writeAndSave(PDFDocumentModel &model, const ProbeText &text, int pageIndex, QPointF baselineStart,
                                  const QString &path);
