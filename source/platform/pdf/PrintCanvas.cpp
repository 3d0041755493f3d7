#include "platform/pdf/PrintCanvas.h"

#include <QGuiApplication>

#include <bitset>
#include <utility>

namespace inkory
{

namespace
{

// Text and drawings have fewer colours than this, also with their softened edges; of 32,768 that are told apart.
constexpr std::size_t mostColorsOfDrawing = 1'500;
constexpr int rowStep = 3;

// Whether the band is a picture rather than text and drawings, which suffer from JPEG and are smaller without it.
bool isPicture(const QImage &band)
{
    std::bitset<1U << 15U> seen;
    for (int y = 0; y < band.height(); y += rowStep) {
        const auto *row = reinterpret_cast<const QRgb *>(band.constScanLine(y));
        for (int x = 0; x < band.width(); ++x) {
            const QRgb c = row[x];
            seen.set(((c >> 9U) & 0x7c00U) | ((c >> 6U) & 0x3e0U) | ((c >> 3U) & 0x1fU));
        }
    }
    return seen.count() > mostColorsOfDrawing;
}

bool isGray(const QImage &band)
{
    for (int y = 0; y < band.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(band.constScanLine(y));
        for (int x = 0; x < band.width(); ++x) {
            if (!qIsGray(row[x]))
                return false;
        }
    }
    return true;
}

} // namespace

PrintCanvas::PrintCanvas(std::shared_ptr<QFileDevice> output, const QString &title)
    : m_output(std::move(output)), m_writer(m_output.get())
{
    m_writer.setResolution(72); // one painter unit is one point
    m_writer.setPageMargins(QMarginsF());
    m_writer.setTitle(title);
    m_writer.setCreator(QGuiApplication::applicationDisplayName());
}

PrintCanvas::~PrintCanvas() = default;

bool PrintCanvas::beginSheet(const QPageLayout &sheet)
{
    m_writer.setPageLayout(sheet);
    const bool begun = m_painter.isActive() ? m_writer.newPage() : m_painter.begin(&m_writer);
    return begun && m_output->error() == QFileDevice::NoError;
}

bool PrintCanvas::finish()
{
    if (m_painter.isActive())
        m_painter.end();
    return m_output->flush() && m_output->error() == QFileDevice::NoError;
}

void PrintCanvas::paintBand(const QImage &band, const QRectF &target, PrintColors colors)
{
    m_painter.setRenderHint(QPainter::LosslessImageRendering, !isPicture(band));
    const bool gray = colors == PrintColors::Gray || isGray(band);
    m_painter.drawImage(target, gray ? band.convertToFormat(QImage::Format_Grayscale8) : band);
}

} // namespace inkory
