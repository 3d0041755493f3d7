#include "V1/capture/CaptureColorWell.h"

#include "platform/widgets/ColorPanel.h"
#include "platform/widgets/FontManager.h"

#include <QPainter>
#include <QStyleOptionButton>
#include <QStyleOptionFocusRect>

namespace inkory
{

namespace
{

constexpr int margin = 5; // of the colour within the button

} // namespace

CaptureColorWell::CaptureColorWell(QWidget *parent) : QAbstractButton(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QAbstractButton::clicked, this, &CaptureColorWell::openPanel);
}

CaptureColorWell::~CaptureColorWell()
{
    disconnect(m_panel);
}

void CaptureColorWell::setColor(const QColor &color)
{
    m_color = color;
    if (m_panel)
        ColorPanel::sharedColorPanel().setColor(color);
    update();
}

void CaptureColorWell::openPanel()
{
    ColorPanel &panel = ColorPanel::sharedColorPanel();
    if (!m_panel) {
        m_textColor = sharedFontManager().selectedColor().value_or(Qt::black);
        disconnect(&panel, &ColorPanel::colorChanged, nullptr, nullptr);
        m_panel = connect(&panel, &ColorPanel::colorChanged, this, &CaptureColorWell::takeColor);
        panel.setColor(m_color);
    }
    panel.orderFront(this, {mapToGlobal(QPoint()), size()});
}

void CaptureColorWell::closePanel()
{
    ColorPanel::closeShared();
    if (!m_panel)
        return;
    disconnect(m_panel);
    m_panel = {};
    ColorPanel::sharedColorPanel().setColor(m_textColor);
}

void CaptureColorWell::takeColor(const QColor &color)
{
    m_color = color;
    update();
    Q_EMIT colorPicked(color);
}

QSize CaptureColorWell::sizeHint() const
{
    return {46, 30};
}

void CaptureColorWell::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QStyleOptionButton option;
    option.initFrom(this);
    option.state |= isDown() ? QStyle::State_Sunken : QStyle::State_Raised;
    style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);
    if (hasFocus()) { // below the color: some styles tint what they frame
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        focus.rect = rect().adjusted(2, 2, -2, -2);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
    }
    const QRect inner = rect().adjusted(margin, margin, -margin, -margin);
    painter.setOpacity(isEnabled() ? 1 : 0.3);
    painter.fillRect(inner, Qt::white); // below colours that are not opaque
    painter.fillRect(inner, m_color);
    QColor edge = palette().color(QPalette::ButtonText);
    edge.setAlphaF(0.35F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(edge, 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(QRectF(inner).adjusted(0.5, 0.5, -0.5, -0.5)); // sharp at every whole density
}

} // namespace inkory
