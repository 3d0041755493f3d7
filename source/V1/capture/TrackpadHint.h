#pragma once

#include <QImage>
#include <QRectF>
#include <QString>

class QPainter;

namespace inkory
{

/// What is written over the pad in trackpad mode: how to start drawing, or, during capture, how to stop. White with a
/// soft black shadow. Kept as an image, because the shadow takes longer than a frame may.
class TrackpadHint
{
public:
    static QString text(bool isCapturing);

    /// In the middle of the pad, or near its lower edge during capture. The painter is the pad's.
    void paint(QPainter &painter, const QRectF &pad, bool isCapturing);

private:
    QImage m_image; // null until it is painted
    bool m_isCapturing = false;
};

} // namespace inkory
