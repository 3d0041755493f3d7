#pragma once

#include "platform/pdf/PrintPlacement.h"

#include <QFileDevice>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>

#include <memory>

namespace inkory
{

/// The PDF file that a print operation makes, one sheet after the other: what is sent to a printer, or kept. Used by
/// one thread at a time, whichever that is.
class PrintCanvas
{
public:
    /// The file is open for writing.
    PrintCanvas(std::shared_ptr<QFileDevice> output, const QString &title);
    ~PrintCanvas();

    /// False where the file cannot be written.
    bool beginSheet(const QPageLayout &sheet);
    /// Writes what is left; false where anything of the file could not be written.
    bool finish();

    /// In points of the sheet, origin at the upper left, y downward.
    QPainter &painter() { return m_painter; }

    /// Takes a while: for a worker thread. Keeps pictures as JPEG, everything else without loss.
    void paintBand(const QImage &band, const QRectF &target, PrintColors colors);

private:
    std::shared_ptr<QFileDevice> m_output;
    QPdfWriter m_writer;
    QPainter m_painter;
};

} // namespace inkory
