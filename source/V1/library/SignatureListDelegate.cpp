#include "V1/library/SignatureListDelegate.h"

#include "V1/library/SignatureListModel.h"

#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace inkory
{

namespace
{

constexpr QSizeF thumbnailSize(320, 110);
constexpr int cardPadding = 10;
constexpr int rowMargin = 6;
constexpr int rowWidth = 320 + 2 * (cardPadding + rowMargin);
constexpr int rowHeight = 110 + 2 * cardPadding + rowMargin;
constexpr qreal cornerRadius = 6;
constexpr qreal selectedEdge = 3;
constexpr int cacheKilobytes = 32 * 1024;

const QColor paperColor(0xfd, 0xfc, 0xf8);
const QColor paperEdgeColor(0xc4, 0xc2, 0xbc);
const QColor hoveredEdgeColor(0x80, 0x7e, 0x78);

} // namespace

SignatureListDelegate::SignatureListDelegate(QObject *parent)
    : QStyledItemDelegate(parent), m_thumbnails(cacheKilobytes)
{
}

QSize SignatureListDelegate::sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const
{
    return {rowWidth, rowHeight};
}

QSizeF SignatureListDelegate::fittedSize(QSize pixels, QSizeF available)
{
    if (pixels.isEmpty())
        return {0, 0};
    const qreal scale = std::min({1.0, available.width() / pixels.width(), available.height() / pixels.height()});
    return QSizeF(pixels) * scale;
}

QPixmap SignatureListDelegate::thumbnail(const ImagePtr &image, qreal pixelRatio) const
{
    const Thumbnail *known = m_thumbnails.object(image.get());
    if (known && known->image.lock() == image && known->pixmap.devicePixelRatio() == pixelRatio)
        return known->pixmap;

    const QSizeF size = fittedSize(image->pixels().size(), thumbnailSize) * pixelRatio;
    const QSize deviceSize(std::max(1, qRound(size.width())), std::max(1, qRound(size.height())));
    QPixmap pixmap =
        QPixmap::fromImage(image->pixels().scaled(deviceSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(pixelRatio);
    const int kilobytes = 1 + deviceSize.width() * deviceSize.height() * 4 / 1024;
    m_thumbnails.insert(image.get(), new Thumbnail{image, pixmap}, kilobytes); // the cache owns it
    return pixmap;
}

void SignatureListDelegate::paintCard(QPainter &painter, const QStyleOptionViewItem &option)
{
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const bool hovered = option.state.testFlag(QStyle::State_MouseOver);
    const qreal edge = selected ? selectedEdge : 1;
    QColor edgeColor = hovered ? hoveredEdgeColor : paperEdgeColor;
    if (selected)
        edgeColor = option.palette.color(
            option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
    const QRectF card = QRectF(option.rect).adjusted(rowMargin, rowMargin / 2.0, -rowMargin, -rowMargin / 2.0);
    const qreal inset = edge / 2; // or half of the edge would lie outside
    painter.setPen(QPen(edgeColor, edge));
    painter.setBrush(paperColor);
    painter.drawRoundedRect(card.adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
}

void SignatureListDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintCard(*painter, option);
    if (const auto image = index.data(SignatureListModel::ImageRole).value<ImagePtr>()) {
        const qreal pixelRatio = painter->device()->devicePixelRatioF();
        const QPixmap pixmap = thumbnail(image, pixelRatio);
        const QPointF corner =
            QRectF(option.rect).center() -
            QPointF(pixmap.deviceIndependentSize().width(), pixmap.deviceIndependentSize().height()) / 2;
        // On whole device pixels, or the scaled image would be blurred again.
        painter->drawPixmap(
            QPointF(std::round(corner.x() * pixelRatio), std::round(corner.y() * pixelRatio)) / pixelRatio, pixmap);
    }
    painter->restore();
}

} // namespace inkory
