#include "V1/application/DocumentStatePage.h"

#include "platform/pdf/PDFDocument.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace inkory
{

namespace
{

constexpr int textWidth = 420;
// After this the person is told that it takes long, and offered to give up.
constexpr std::chrono::milliseconds openingPatience(1000);

QLabel *plainLabel(QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText); // file names are not markup
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignHCenter);
    label->setMaximumWidth(textWidth);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // the window may be narrower
    return label;
}

} // namespace

DocumentStatePage::DocumentStatePage(QWidget *parent)
    : QWidget(parent), m_title(plainLabel(this)), m_message(plainLabel(this)), m_passwordRow(new QWidget(this)),
      m_passwordField(new QLineEdit(m_passwordRow)), m_unlockButton(new QPushButton(tr("Unlock"), m_passwordRow)),
      m_cancelButton(new QPushButton(tr("Cancel"), this))
{
    QFont titleFont = font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    m_title->setObjectName(QStringLiteral("documentStateTitle"));
    m_message->setObjectName(QStringLiteral("documentStateMessage"));
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_cancelButton->setObjectName(QStringLiteral("cancelOpeningButton"));
    m_cancelButton->setAutoDefault(true); // Return presses it
    m_patience.setSingleShot(true);
    m_patience.setInterval(openingPatience);
    connect(m_cancelButton, &QPushButton::clicked, this, &DocumentStatePage::openingCancelled);
    connect(&m_patience, &QTimer::timeout, this, &DocumentStatePage::sayThatItTakesLong);
    makePasswordRow();
    arrange();
}

void DocumentStatePage::makePasswordRow()
{
    m_passwordField->setObjectName(QStringLiteral("passwordField"));
    m_passwordField->setEchoMode(QLineEdit::Password); // which also switches copying and undoing off
    m_passwordField->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhHiddenText | Qt::ImhNoPredictiveText |
                                         Qt::ImhNoAutoUppercase);
    m_passwordField->setMinimumWidth(160);
    auto *label = new QLabel(tr("Pass&word:"), m_passwordRow);
    label->setBuddy(m_passwordField);
    auto *row = new QHBoxLayout(m_passwordRow);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(label);
    row->addWidget(m_passwordField);
    row->addWidget(m_unlockButton);
    connect(m_passwordField, &QLineEdit::returnPressed, this, &DocumentStatePage::enterPassword);
    connect(m_unlockButton, &QPushButton::clicked, this, &DocumentStatePage::enterPassword);
}

void DocumentStatePage::arrange()
{
    auto *column = new QVBoxLayout(this);
    column->setSpacing(12);
    column->addStretch(2);
    for (QLabel *label : {m_title, m_message}) {
        auto *line = new QHBoxLayout;
        line->addStretch(1);
        line->addWidget(label, 1000);
        line->addStretch(1);
        column->addLayout(line);
    }
    column->addWidget(m_passwordRow, 0, Qt::AlignHCenter);
    column->addWidget(m_cancelButton, 0, Qt::AlignHCenter);
    column->addStretch(3);
}

void DocumentStatePage::showState(const PDFDocument &document, const QString &documentName)
{
    m_documentName = documentName;
    const bool isLocked = document.state() == PDFDocument::State::Locked;
    m_patience.stop();
    m_cancelButton->hide();
    m_passwordRow->setVisible(isLocked);
    switch (document.state()) {
    case PDFDocument::State::Opening:
        m_titleText = tr("Opening “%1”…");
        m_patience.start();
        break;
    case PDFDocument::State::Locked:
        m_titleText = tr("Enter the password of “%1”");
        m_passwordField->setAccessibleDescription(document.message());
        m_passwordField->setFocus();
        break;
    case PDFDocument::State::Failed:
        m_titleText = tr("“%1” cannot be shown");
        break;
    case PDFDocument::State::Open:
        break;
    }
    showTitle();
    showMessage(document.state() == PDFDocument::State::Opening ? QString() : document.message());
}

void DocumentStatePage::sayThatItTakesLong()
{
    m_cancelButton->show();
    showMessage(tr("This takes longer than usual. You can wait, or cancel and open another document."));
}

void DocumentStatePage::showMessage(const QString &message)
{
    m_message->setText(message);
    if (message.isEmpty())
        return;
    QAccessibleEvent alert(m_message, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

// A label wraps between words only: a long name would be cut at both ends.
void DocumentStatePage::showTitle()
{
    if (m_titleText.isEmpty())
        return;
    const QFontMetrics metrics = m_title->fontMetrics();
    const QMargins margins = layout()->contentsMargins();
    const int room = std::min(textWidth, width() - margins.left() - margins.right()) -
                     metrics.horizontalAdvance(QStringLiteral("“”…"));
    m_title->setText(m_titleText.arg(metrics.elidedText(m_documentName, Qt::ElideMiddle, room)));
}

void DocumentStatePage::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    showTitle();
}

// The field is emptied by setting a text, which also empties its history; clear() would add to it.
void DocumentStatePage::enterPassword()
{
    QString password = m_passwordField->text();
    m_passwordField->setText(QString());
    Q_EMIT passwordEntered(password);
    password.fill(u'\0'); // overwrites what the field held, unless somebody has kept it
}

} // namespace inkory
