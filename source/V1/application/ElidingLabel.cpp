#include "V1/application/ElidingLabel.h"

#include <QPainter>
#include <QStyle>

namespace inkory
{

ElidingLabel::ElidingLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void ElidingLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect place = contentsRect();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, place.width());
    style()->drawItemText(&painter, place, QStyle::visualAlignment(layoutDirection(), alignment()), palette(),
                          isEnabled(), shown, foregroundRole());
}

} // namespace inkory
