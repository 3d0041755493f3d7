#pragma once

#include <QRectF>
#include <QString>

class QPainter;

namespace inkory
{

/// What is written over the pad in trackpad mode: how to start drawing, or, during capture, how to stop.
class TrackpadHint
{
public:
    explicit TrackpadHint(bool isCapturing) : m_isCapturing(isCapturing) {}

    QString text() const;
    /// White with a soft black shadow; in the middle of the pad, or near its lower edge during capture. The painter is
    /// the pad's.
    void paint(QPainter &painter, const QRectF &pad) const;

private:
    bool m_isCapturing;
};

} // namespace inkory
