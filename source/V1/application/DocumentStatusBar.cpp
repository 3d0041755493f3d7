#include "V1/application/DocumentStatusBar.h"

#include "V1/application/ElidingLabel.h"
#include "platform/widgets/PlainToolTip.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

namespace inkory
{

namespace
{

constexpr int messageMilliseconds = 5000;

} // namespace

DocumentStatusBar::DocumentStatusBar(QWidget *parent)
    : QStatusBar(parent), m_message(new ElidingLabel(this)), m_pageRow(new QWidget(this)),
      m_pageField(new QSpinBox(m_pageRow)), m_pageCount(new QLabel(m_pageRow))
{
    m_message->setObjectName(QStringLiteral("inlineMessage"));
    m_message->setContentsMargins(6, 0, 6, 0);
    m_pageField->setObjectName(QStringLiteral("pageField"));
    m_pageField->setButtonSymbols(QAbstractSpinBox::NoButtons);
    m_pageField->setAlignment(Qt::AlignRight);
    m_pageField->setKeyboardTracking(false);
    m_pageField->setAccessibleName(tr("Page number"));
    m_pageField->setFocusPolicy(Qt::StrongFocus);

    auto *row = new QHBoxLayout(m_pageRow);
    row->setContentsMargins(0, 0, 6, 0);
    row->addWidget(new QLabel(tr("page"), m_pageRow));
    row->addWidget(m_pageField);
    row->addWidget(m_pageCount);
    addWidget(m_message, 1);
    addPermanentWidget(m_pageRow);
    m_pageRow->hide();

    m_messageTimer.setSingleShot(true);
    connect(&m_messageTimer, &QTimer::timeout, this, [this] {
        m_message->setText(m_lastingMessage);
        m_message->setToolTip(plainToolTip(m_lastingMessage));
    });
    connect(m_pageField, &QSpinBox::valueChanged, this, &DocumentStatusBar::pageEntered);
    // Not editingFinished(): that also comes when the person goes to another field.
    connect(m_pageField->findChild<QLineEdit *>(), &QLineEdit::returnPressed, this, &DocumentStatusBar::pageFieldLeft);
}

void DocumentStatusBar::showInlineMessage(const QString &text, Stay stay)
{
    m_messageTimer.stop();
    if (stay == Stay::UntilReplaced)
        m_lastingMessage = text;
    else if (!text.isEmpty())
        m_messageTimer.start(messageMilliseconds);
    const QString shown = text.isEmpty() ? m_lastingMessage : text;
    m_message->setText(shown);
    m_message->setToolTip(plainToolTip(shown)); // the whole text, should the label be too narrow
}

QString DocumentStatusBar::inlineMessage() const
{
    return m_message->text();
}

void DocumentStatusBar::showPage(int page, int pageCount)
{
    const QSignalBlocker blocker(m_pageField);
    m_pageField->setRange(1, qMax(1, pageCount));
    m_pageField->setValue(page);
    m_pageCount->setText(tr("of %1").arg(pageCount));
    m_pageRow->setVisible(pageCount > 0);
}

void DocumentStatusBar::focusPageField()
{
    m_pageField->setFocus(Qt::ShortcutFocusReason);
    m_pageField->selectAll();
}

} // namespace inkory
