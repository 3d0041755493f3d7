#include "V1/application/DocumentStatePage.h"

#include "platform/pdf/PDFDocument.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace inkory
{

namespace
{

constexpr int textWidth = 420;

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
      m_passwordField(new QLineEdit(m_passwordRow)), m_unlockButton(new QPushButton(tr("Unlock"), m_passwordRow))
{
    QFont titleFont = font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    m_message->setObjectName(QStringLiteral("documentStateMessage"));
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_passwordField->setObjectName(QStringLiteral("passwordField"));
    m_passwordField->setEchoMode(QLineEdit::Password);
    m_passwordField->setPlaceholderText(tr("Password"));
    m_passwordField->setAccessibleName(tr("Password"));
    m_passwordField->setMinimumWidth(160);
    auto *row = new QHBoxLayout(m_passwordRow);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_passwordField);
    row->addWidget(m_unlockButton);
    connect(m_passwordField, &QLineEdit::returnPressed, this, &DocumentStatePage::enterPassword);
    connect(m_unlockButton, &QPushButton::clicked, this, &DocumentStatePage::enterPassword);

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
    column->addStretch(3);
}

void DocumentStatePage::showState(const PDFDocument &document, const QString &fileName)
{
    const bool isLocked = document.state() == PDFDocument::State::Locked;
    m_passwordRow->setVisible(isLocked);
    m_message->setText(document.state() == PDFDocument::State::Opening ? QString() : document.message());
    switch (document.state()) {
    case PDFDocument::State::Opening:
        m_title->setText(tr("Opening “%1”…").arg(fileName));
        break;
    case PDFDocument::State::Locked:
        m_title->setText(tr("“%1” is protected").arg(fileName));
        m_passwordField->clear();
        m_passwordField->setFocus();
        break;
    case PDFDocument::State::Failed:
        m_title->setText(tr("“%1” cannot be shown").arg(fileName));
        break;
    case PDFDocument::State::Open:
        break;
    }
}

void DocumentStatePage::enterPassword()
{
    const QString password = m_passwordField->text();
    m_passwordField->clear();
    Q_EMIT passwordEntered(password);
}

} // namespace inkory
