#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QSet>

#include <deque>
#include <vector>

namespace inkory
{

/// Undo and redo for an image that is painted into and is the only record of the drawing: each step keeps the former
/// pixels of the squares that it covered. Knows no widget. All rectangles are in the image's pixels.
class StrokeHistory
{
public:
    static constexpr qsizetype defaultLimit = 64LL * 1024 * 1024;

    /// Keeps at most this many bytes of pixels, and drops the oldest steps for it; the step in progress is kept whole.
    explicit StrokeHistory(qsizetype limit = defaultLimit) : m_limit(limit) {}

    /// Before the image is painted within the area: keeps what is there. Opens a step if none is open, and forgets
    /// what could be redone.
    void willPaint(const QImage &image, const QRect &area);
    /// What is painted from now on is another step.
    void endStep() { m_isStepOpen = false; }

    bool canUndo() const { return !m_undoSteps.empty(); }
    bool canRedo() const { return !m_redoSteps.empty(); }
    /// Put the pixels of the last step back and answer the area that changed; empty when there is no step. The image is
    /// the one that was painted; it may have grown since, to the right and downward.
    QRect undo(QImage &image);
    QRect redo(QImage &image);

    void forgetAll();

private:
    struct Square
    {
        QPoint corner;
        QImage pixels;
    };
    struct Step
    {
        std::vector<Square> squares;
        QSet<QPoint> corners;
    };

    static QRect swapPixels(Step &step, QImage &image);
    static qsizetype bytesOf(const Step &step);
    void dropOldest();

    qsizetype m_limit;
    qsizetype m_bytes = 0; // of all steps
    std::deque<Step> m_undoSteps;
    std::deque<Step> m_redoSteps;
    bool m_isStepOpen = false; // the last one of those that can be undone
};

} // namespace inkory
