// How the menus, the tool bar and the status bar of a document window reach its document and its views.

#include "V1/application/PDFWindowController.h"

#include "V1/application/DocumentStatePage.h"
#include "V1/application/DocumentStatusBar.h"
#include "V1/application/NoticeStrip.h"
#include "V1/editing/KRPDFView.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRPDFDocument.h"
#include "platform/core/DisplayText.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/Document.h"
#include "platform/widgets/DocumentController.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/PlainToolTip.h"
#include "platform/widgets/SegmentedControl.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QFileInfo>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QToolButton>

using namespace inkory;

void PDFWindowController::onTriggered(const char *actionName, const std::function<void()> &command)
{
    if (auto *action = outlet<QAction>(*window(), QLatin1String(actionName)))
        connect(action, &QAction::triggered, this, command);
}

void PDFWindowController::connectFileActions()
{
    onTriggered("actionOpen", [this] {
        if (DocumentController *controller = DocumentController::sharedDocumentController())
            controller->openDocument(this);
    });
    onTriggered("actionQuit", [] {
        if (DocumentController *controller = DocumentController::sharedDocumentController())
            controller->terminate();
    });
    if (auto *menu = outlet<QMenu>(*window(), QStringLiteral("menuOpenRecent")))
        connect(menu, &QMenu::aboutToShow, this, &PDFWindowController::fillRecentMenu);
    onTriggered("actionAbout", [this] { showAbout(); });
    Document *owner = document();
    if (!owner)
        return;
    onTriggered("actionClose", [owner] { owner->close(); });
    onTriggered("actionSave", [this, owner] { owner->saveDocument(this); });
    onTriggered("actionSaveAs", [this, owner] { owner->saveDocumentAs(this); });
    connect(owner, &Document::savingChanged, this, [this](bool isSaving) {
        m_isSaving = isSaving;
        showGeometryState();
    });
    connect(owner, &Document::saved, this,
            [this] { m_statusBar->showInlineMessage(tr("Saved."), DocumentStatusBar::Stay::AWhile); });
}

void PDFWindowController::fillRecentMenu()
{
    auto *menu = window()->findChild<QMenu *>(QStringLiteral("menuOpenRecent"));
    DocumentController *controller = DocumentController::sharedDocumentController();
    menu->clear();
    menu->setToolTipsVisible(true);
    const QList<QUrl> urls = controller ? controller->recentDocumentURLs() : QList<QUrl>();
    for (const QUrl &url : urls) {
        QAction *item = menu->addAction(displayableInMenu(QFileInfo(url.toLocalFile()).fileName()));
        item->setToolTip(plainToolTip(displayable(url.toLocalFile())));
        connect(item, &QAction::triggered, this,
                [controller, url] { controller->openDocumentsReportingFailures({url}); });
    }
    menu->addSeparator();
    QAction *clear = menu->addAction(tr("Clear List"));
    clear->setEnabled(!urls.isEmpty());
    connect(clear, &QAction::triggered, this, [controller] { controller->clearRecentDocuments(); });
}

void PDFWindowController::connectEditActions()
{
    auto *deleteAction = outlet<QAction>(*window(), QStringLiteral("actionDelete"));
    connect(deleteAction, &QAction::triggered, m_pdfView, &KRPDFView::deleteSelectedStampView);
    const auto updateDelete = [this, deleteAction] {
        deleteAction->setEnabled(m_pdfView->selectedStampView() && !m_pdfView->isEditingText());
    };
    connect(m_pdfView, &KRPDFView::selectionChanged, this, updateDelete);
    connect(m_pdfView, &KRPDFView::editingTextChanged, this, updateDelete);
    updateDelete();
    onTriggered("actionUndo", [this] { undo(); });
    onTriggered("actionRedo", [this] { redo(); });
    if (document())
        connect(&document()->undoManager(), &UndoManager::changed, this, &PDFWindowController::updateUndoActions);
    connect(m_pdfView, &KRPDFView::editingTextChanged, this, &PDFWindowController::updateUndoActions);
    connect(m_pdfView, &KRPDFView::typingUndoChanged, this, &PDFWindowController::updateUndoActions);
    updateUndoActions();
}

// While a text is edited, its typing has a history of its own.
void PDFWindowController::undo()
{
    if (m_pdfView->isEditingText())
        m_pdfView->textEditor()->undo();
    else if (document())
        document()->undoManager().undo();
}

void PDFWindowController::redo()
{
    if (m_pdfView->isEditingText())
        m_pdfView->textEditor()->redo();
    else if (document())
        document()->undoManager().redo();
}

void PDFWindowController::updateUndoActions()
{
    const UndoManager *undoManager = document() ? &document()->undoManager() : nullptr;
    const bool isTyping = m_pdfView->isEditingText();
    const auto show = [this](const char *actionName, bool enabled, const QString &text) {
        auto *action = window()->findChild<QAction *>(QLatin1String(actionName));
        action->setEnabled(enabled);
        action->setText(text.trimmed());
        action->setToolTip(text.trimmed().replace(QLatin1String("&&"), QLatin1String("&")));
    };
    const auto name = [&](const QString &ofDocument) { return isTyping ? tr("Typing") : ofDocument; };
    show("actionUndo", isTyping ? m_pdfView->textEditor()->canUndo() : undoManager && undoManager->canUndo(),
         tr("Undo %1").arg(name(undoManager ? undoManager->undoActionName() : QString())));
    show("actionRedo", isTyping ? m_pdfView->textEditor()->canRedo() : undoManager && undoManager->canRedo(),
         tr("Redo %1").arg(name(undoManager ? undoManager->redoActionName() : QString())));
}

void PDFWindowController::connectViewActions()
{
    auto *sidePanel = outlet<QAction>(*window(), QStringLiteral("actionSidePanel"));
    connect(sidePanel, &QAction::toggled, this, &PDFWindowController::showSidePanel);
    onTriggered("actionZoomIn", [this] { m_pdfView->zoomIn(); });
    onTriggered("actionZoomOut", [this] { m_pdfView->zoomOut(); });
    onTriggered("actionZoomActual", [this] { m_pdfView->zoomActualSize(); });
    onTriggered("actionFitPage", [this] { m_pdfView->fitPageSize(); });
    onTriggered("actionFitWidth", [this] { m_pdfView->fitPageWidth(); });
    onTriggered("actionPreviousPage", [this] { m_pdfView->goToPage(m_pdfView->currentPageIndex() - 1); });
    onTriggered("actionNextPage", [this] { m_pdfView->goToPage(m_pdfView->currentPageIndex() + 1); });
    onTriggered("actionGoToPage", [this] { m_statusBar->focusPageField(); });
    onTriggered("actionRotateLeft", [this] { m_pdfView->rotateCurrentPageCounterClockwise(); });
    onTriggered("actionRotateRight", [this] { m_pdfView->rotateCurrentPageClockwise(); });
    onTriggered("actionFlip", [this] { m_pdfView->flipDocument(); });
    for (const char *tool : {"actionSelectTool", "actionSignatureTool", "actionTextTool"}) {
        const auto *item = outlet<QAction>(*window(), QLatin1String(tool));
        onTriggered(tool, [this, item] { switchTool(item); });
    }
}

void PDFWindowController::connectControls()
{
    connect(m_toolSelectionControl, &SegmentedControl::activated, this, &PDFWindowController::switchTool);
    connect(m_imageStampToolbarImageView, &QToolButton::clicked, this,
            [this] { setCurrentToolType(ToolTypeImageStamp); });
    for (const char *name : {"zoomOutControl", "zoomControl"})
        connect(outlet<SegmentedControl>(*window(), QLatin1String(name)), &SegmentedControl::activated, this,
                &PDFWindowController::zoom);
    connect(outlet<SegmentedControl>(*window(), QStringLiteral("rotateControl")), &SegmentedControl::activated, this,
            &PDFWindowController::rotate);
    for (const int percent : {50, 75, 100, 125, 150, 200, 400, 800})
        m_zoomFactorField->addItem(tr("%1 %").arg(percent));
    connect(m_zoomFactorField->lineEdit(), &QLineEdit::returnPressed, this, &PDFWindowController::enterZoomFactor);
    connect(m_zoomFactorField, &QComboBox::activated, this, &PDFWindowController::enterZoomFactor);
    connect(m_pdfView, &PDFView::scaleFactorChanged, this, &PDFWindowController::showZoomFactor);
    connect(m_statePage, &DocumentStatePage::passwordEntered, this, [this](const QString &password) {
        if (m_pdfDoc)
            m_pdfDoc->unlock(password);
    });
    connect(m_statePage, &DocumentStatePage::openingCancelled, this, [this] {
        if (document())
            document()->closeUnasked(); // it has nothing yet that could be lost
    });
    connect(m_noticeStrip, &NoticeStrip::dismissed, m_pdfView, qOverload<>(&QWidget::setFocus));
}

void PDFWindowController::connectStatusBar()
{
    connect(m_statusBar, &DocumentStatusBar::pageEntered, this, [this](int page) { m_pdfView->goToPage(page - 1); });
    connect(m_statusBar, &DocumentStatusBar::pageFieldLeft, m_pdfView, qOverload<>(&QWidget::setFocus));
    connect(m_pdfView, &PDFView::currentPageChanged, this, &PDFWindowController::showCurrentPage);
    connect(m_pdfView, &KRPDFView::placementRefused, this, [this] {
        const QString reason = m_pdfDoc->readOnlyReason();
        m_statusBar->showInlineMessage(reason.isEmpty() ? tr("The document is still being read. Try again in a moment.")
                                                        : reason,
                                       DocumentStatusBar::Stay::AWhile);
    });
}

void PDFWindowController::showZoomFactor()
{
    m_zoomFactorField->setEditText(tr("%1 %").arg(qRound(m_pdfView->scaleFactor() * 100)));
}

void PDFWindowController::enterZoomFactor()
{
    const QString digits = m_zoomFactorField->currentText().remove(QLatin1Char('%')).trimmed();
    bool isNumber = false;
    const double percent = QLocale().toDouble(digits, &isNumber);
    if (isNumber && percent > 0)
        m_pdfView->setScaleFactor(percent / 100);
    showZoomFactor();
    m_pdfView->setFocus();
}

void PDFWindowController::showCurrentPage()
{
    m_statusBar->showPage(m_pdfView->currentPageIndex() + 1, m_pdfDoc ? m_pdfDoc->pageCount() : 0);
}

void PDFWindowController::updatePageCommands()
{
    const bool isOpen = m_pdfDoc && m_pdfDoc->state() == PDFDocument::State::Open;
    for (const char *name : {"actionZoomIn", "actionZoomOut", "actionZoomActual", "actionFitPage", "actionFitWidth",
                             "actionPreviousPage", "actionNextPage", "actionGoToPage"})
        outlet<QAction>(*window(), QLatin1String(name))->setEnabled(isOpen);
    for (const char *name : {"zoomOutControl", "zoomControl"})
        outlet<SegmentedControl>(*window(), QLatin1String(name))->setEnabled(isOpen);
    m_zoomFactorField->setEnabled(isOpen);
    const bool canChange = m_pdfDoc && m_pdfDoc->canSave();
    for (const char *name : {"actionRotateLeft", "actionRotateRight", "actionFlip"})
        outlet<QAction>(*window(), QLatin1String(name))->setEnabled(canChange);
    outlet<SegmentedControl>(*window(), QStringLiteral("rotateControl"))->setEnabled(canChange);
    for (const char *name : {"actionSave", "actionSaveAs"})
        outlet<QAction>(*window(), QLatin1String(name))->setEnabled(canChange);
    for (const char *name : {"actionSelectTool", "actionSignatureTool", "actionTextTool"})
        outlet<QAction>(*window(), QLatin1String(name))->setEnabled(offersTools());
    m_toolSelectionControl->setEnabled(offersTools());
}

void PDFWindowController::showAbout()
{
    Alert about;
    about.style = Alert::Style::Informational;
    about.messageText = tr("Inkory %1").arg(QCoreApplication::applicationVersion());
    about.informativeText = tr("Puts signatures on PDF documents.\nFree software under the GNU General Public "
                               "License, version 3 or later.");
    about.runModal(window());
}
