#include "V1/application/NoticeStrip.h"

#include "platform/widgets/NamedImages.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>

namespace inkory
{

NoticeStrip::NoticeStrip(QWidget *parent)
    : QFrame(parent), m_icon(new QLabel(this)), m_text(new QLabel(this)), m_closeButton(new QToolButton(this))
{
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase); // a pair of colours that every scheme has
    m_text->setForegroundRole(QPalette::ToolTipText);
    m_text->setObjectName(QStringLiteral("noticeText"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_closeButton->setObjectName(QStringLiteral("closeNoticeButton"));
    m_closeButton->setAutoRaise(true);
    m_closeButton->setToolTip(tr("Close this notice"));
    m_closeButton->setAccessibleName(tr("Close this notice"));
    m_closeButton->setFocusPolicy(Qt::StrongFocus);
    connect(m_closeButton, &QToolButton::clicked, this, [this] {
        Q_EMIT dismissed(); // first, so that the keyboard does not go to any other part of the window
        hide();
    });
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(10, 4, 6, 4);
    row->setSpacing(8);
    row->addWidget(m_icon);
    row->addWidget(m_text, 1);
    row->addWidget(m_closeButton);
    applyIcons();
    hide();
}

void NoticeStrip::showNotice(const QString &text)
{
    m_text->setText(text);
    show();
    QAccessibleEvent alert(m_text, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void NoticeStrip::changeEvent(QEvent *event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        applyIcons();
}

void NoticeStrip::applyIcons()
{
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    m_icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this).pixmap(size));
    m_closeButton->setIcon(iconNamed(QStringLiteral("close"), palette().color(QPalette::ToolTipText)));
    m_closeButton->setIconSize({size, size});
}

} // namespace inkory
