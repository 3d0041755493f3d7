#pragma once

#include "platform/core/Image.h"

#include <QCache>
#include <QPixmap>
#include <QStyledItemDelegate>

#include <memory>

namespace inkory
{

/// Draws a row of the library as a card of paper with the signature on it, in every colour scheme: dark ink on a dark
/// ground could not be seen. Each image is scaled once; the results are kept up to a limit.
class SignatureListDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit SignatureListDelegate(QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    /// The image's size on a card, in device-independent pixels: aspect kept, never larger than its pixels.
    static QSizeF fittedSize(QSize pixels, QSizeF available);

private:
    struct Thumbnail
    {
        std::weak_ptr<const Image> image; // tells whether the address has been given to another image
        QPixmap pixmap;
    };

    QPixmap thumbnail(const ImagePtr &image, qreal pixelRatio) const;
    static void paintCard(QPainter &painter, const QStyleOptionViewItem &option);

    mutable QCache<const Image *, Thumbnail> m_thumbnails; // cost in kilobytes
};

} // namespace inkory
