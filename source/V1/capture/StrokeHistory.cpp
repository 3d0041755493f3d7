#include "V1/capture/StrokeHistory.h"

#include <cstring>
#include <utility>

namespace inkory
{

namespace
{

// Pixels. Small enough that a thin line keeps little more than what it covers, large enough that there are few of them.
constexpr int squareSide = 64;
constexpr int bytesPerPixel = 4;

void copyPixels(const QImage &from, QImage &to, QPoint corner)
{
    const auto bytes = static_cast<std::size_t>(from.width()) * bytesPerPixel;
    for (int row = 0; row < from.height(); ++row)
        std::memcpy(to.scanLine(corner.y() + row) + qsizetype{corner.x()} * bytesPerPixel, from.constScanLine(row),
                    bytes);
}

} // namespace

void StrokeHistory::willPaint(const QImage &image, const QRect &area)
{
    const QRect covered = area & image.rect();
    if (covered.isEmpty())
        return;
    for (const Step &step : m_redoSteps)
        m_bytes -= bytesOf(step);
    m_redoSteps.clear();
    if (!m_isStepOpen)
        m_undoSteps.emplace_back();
    m_isStepOpen = true;
    Step &step = m_undoSteps.back();
    for (int y = covered.top() / squareSide; y <= covered.bottom() / squareSide; ++y) {
        for (int x = covered.left() / squareSide; x <= covered.right() / squareSide; ++x) {
            const QPoint corner(x * squareSide, y * squareSide);
            if (step.corners.contains(corner))
                continue;
            step.corners.insert(corner);
            const QRect square = QRect(corner, QSize(squareSide, squareSide)) & image.rect();
            step.squares.push_back({corner, image.copy(square)});
            m_bytes += step.squares.back().pixels.sizeInBytes();
        }
    }
    dropOldest();
}

QRect StrokeHistory::undo(QImage &image)
{
    m_isStepOpen = false;
    if (m_undoSteps.empty())
        return {};
    m_redoSteps.push_back(std::move(m_undoSteps.back()));
    m_undoSteps.pop_back();
    return swapPixels(m_redoSteps.back(), image);
}

QRect StrokeHistory::redo(QImage &image)
{
    m_isStepOpen = false;
    if (m_redoSteps.empty())
        return {};
    m_undoSteps.push_back(std::move(m_redoSteps.back()));
    m_redoSteps.pop_back();
    return swapPixels(m_undoSteps.back(), image);
}

void StrokeHistory::forgetAll()
{
    *this = StrokeHistory(m_limit);
}

QRect StrokeHistory::swapPixels(Step &step, QImage &image)
{
    QRect changed;
    for (Square &square : step.squares) {
        const QRect area(square.corner, square.pixels.size());
        const QImage current = image.copy(area);
        copyPixels(square.pixels, image, square.corner);
        square.pixels = current;
        changed |= area;
    }
    return changed;
}

qsizetype StrokeHistory::bytesOf(const Step &step)
{
    qsizetype bytes = 0;
    for (const Square &square : step.squares)
        bytes += square.pixels.sizeInBytes();
    return bytes;
}

void StrokeHistory::dropOldest()
{
    while (m_bytes > m_limit && m_undoSteps.size() > 1) {
        m_bytes -= bytesOf(m_undoSteps.front());
        m_undoSteps.pop_front();
    }
}

} // namespace inkory
