// The commands for a text that is being edited where it stands.

#include "V1/application/PDFWindowController.h"

#include "V1/application/DocumentStatusBar.h"
#include "V1/application/NoticeStrip.h"
#include "V1/editing/KRPDFView.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRPDFDocument.h"
#include "platform/core/DisplayText.h"
#include "platform/widgets/InterfaceDescriptions.h"

#include <QAbstractButton>
#include <QAction>
#include <QMenu>

using namespace inkory;

void PDFWindowController::connectTextActions()
{
    onTriggered("actionBold", [this] { m_pdfView->textEditor()->toggleBold(); });
    onTriggered("actionItalic", [this] { m_pdfView->textEditor()->toggleItalic(); });
    onTriggered("actionUnderline", [this] { m_pdfView->textEditor()->toggleUnderline(); });
    onTriggered("actionFonts", [this] { m_pdfView->textFontButton()->click(); });
    onTriggered("actionColors", [this] { m_pdfView->textColorButton()->click(); });
    connect(m_pdfView->textBGColorButton()->menu(), &QMenu::triggered, m_pdfView,
            [this](const QAction *entry) { m_pdfView->bgColorSelectedAction(*entry); });
    connect(m_pdfView, &KRPDFView::editingTextChanged, this, &PDFWindowController::updateTextCommands);
    connect(m_pdfView, &KRPDFView::fontReplaced, this, [this](const QString &chosen, const QString &used) {
        m_noticeStrip->showNotice(tr("The font “%1” must not be stored in documents. “%2” is used instead.")
                                      .arg(displayable(chosen), displayable(used)));
    });
    connect(m_pdfView, &KRPDFView::textRefused, this,
            [this](const QString &reason) { m_statusBar->showInlineMessage(reason, DocumentStatusBar::Stay::AWhile); });
    updateTextCommands();
}

void PDFWindowController::updateTextCommands()
{
    for (const char *name : {"actionBold", "actionItalic", "actionUnderline", "actionFonts", "actionColors"})
        outlet<QAction>(*window(), QLatin1String(name))->setEnabled(m_pdfView->isEditingText());
}
