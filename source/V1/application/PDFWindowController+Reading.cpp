// What a person does with the text of the pages: copying, finding, following links and the outline, printing.

#include "V1/application/PDFWindowController.h"

#include "V1/application/DocumentStatusBar.h"
#include "V1/application/FindBar.h"
#include "V1/application/WebAddress.h"
#include "V1/editing/KRPDFView.h"
#include "V1/editing/PDFThumbnailView+PrintDocument.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRPDFDocument.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/OutlineView.h"
#include "platform/widgets/PDFThumbnailView.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QTabWidget>

using namespace inkory;

void PDFWindowController::connectReadingActions()
{
    onTriggered("actionPrint", [this] {
        m_pdfView->endTextEditing(); // what is typed is printed, too
        if (m_pdfThumbnailView->hasFocus())
            printDocument(*m_pdfThumbnailView);
        else
            m_pdfView->printDocument();
    });
    connect(m_pdfView, &PDFView::printedToFile, this, [this](const QString &displayableName) {
        m_statusBar->showInlineMessage(tr("Printed to “%1”.").arg(displayableName), DocumentStatusBar::Stay::AWhile);
    });
    onTriggered("actionCopy", [this] {
        if (m_pdfView->isEditingText())
            m_pdfView->textEditor()->copy();
        else
            m_pdfView->copySelection();
    });
    onTriggered("actionSelectAll", [this] {
        if (m_pdfView->isEditingText())
            m_pdfView->textEditor()->selectAll();
        else
            m_pdfView->selectAllText();
    });
    onTriggered("actionBack", [this] { m_pdfView->goBack(); });
    onTriggered("actionForward", [this] { m_pdfView->goForward(); });
    connect(m_pdfView, &PDFView::textSelectionChanged, this, &PDFWindowController::updateReadingCommands);
    connect(m_pdfView, &PDFView::selectionCopied, this, [this](bool isWhole) {
        if (!isWhole)
            m_statusBar->showInlineMessage(tr("A part is missing from what was copied: not all text could be read."),
                                           DocumentStatusBar::Stay::AWhile);
    });
    connect(m_pdfView, &PDFView::historyChanged, this, &PDFWindowController::updateReadingCommands);
    connect(m_pdfView, &KRPDFView::editingTextChanged, this, &PDFWindowController::updateReadingCommands);
    // After the press that it came from: the question runs an event loop of its own.
    connect(m_pdfView, &PDFView::addressActivated, this, &PDFWindowController::askToOpenAddress, Qt::QueuedConnection);
    m_pdfView->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_pdfView, &QWidget::customContextMenuRequested, this, &PDFWindowController::showContextMenu);
}

void PDFWindowController::updateReadingCommands()
{
    const bool isOpen = m_pdfDoc && m_pdfDoc->state() == PDFDocument::State::Open;
    const auto enable = [this](const char *name, bool enabled) {
        outlet<QAction>(*window(), QLatin1String(name))->setEnabled(enabled);
    };
    for (const char *name : {"actionPrint", "actionFind", "actionFindNext", "actionFindPrevious"})
        enable(name, isOpen);
    enable("actionSelectAll", isOpen);
    enable("actionCopy", m_pdfView->hasTextSelection() || m_pdfView->isEditingText());
    enable("actionBack", m_pdfView->canGoBack());
    enable("actionForward", m_pdfView->canGoForward());
}

void PDFWindowController::connectFindActions()
{
    onTriggered("actionFind", [this] {
        m_pdfView->endTextEditing(); // the search takes the keyboard, and scrolls
        m_findBar->open();
    });
    onTriggered("actionFindNext", [this] { m_findBar->findNext(); });
    onTriggered("actionFindPrevious", [this] { m_findBar->findPrevious(); });
    connect(m_findBar, &FindBar::dismissed, m_pdfView, qOverload<>(&QWidget::setFocus));
}

void PDFWindowController::connectOutline()
{
    m_outlineView->setPDFView(m_pdfView);
    connect(m_outlineView, &OutlineView::filled, this, [this] { m_sidePanel->addTab(m_outlineView, tr("Contents")); });
}

void PDFWindowController::showContextMenu(const QPoint &place)
{
    const QPoint inWindow = m_pdfView->mapTo(m_pdfView->window(), place);
    const ViewPoint point =
        m_pdfView->convertPointFromWindow({static_cast<double>(inWindow.x()), static_cast<double>(inWindow.y())});
    if (const auto stamp = m_pdfView->stampViewForPoint(point))
        m_pdfView->setSelectedStampView(stamp);
    auto *menu = new QMenu(m_pdfView);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (const QString address = m_pdfView->addressAt(point); !address.isEmpty())
        addAddressItems(*menu, address);
    menu->addAction(outlet<QAction>(*window(), QStringLiteral("actionCopy")));
    menu->addAction(outlet<QAction>(*window(), QStringLiteral("actionSelectAll")));
    if (m_pdfView->selectedStampView()) {
        menu->addSeparator();
        menu->addAction(outlet<QAction>(*window(), QStringLiteral("actionDelete")));
    }
    menu->popup(m_pdfView->mapToGlobal(place));
}

void PDFWindowController::addAddressItems(QMenu &menu, const QString &address)
{
    // Queued: the question runs an event loop of its own, and the menu goes first.
    connect(
        menu.addAction(tr("&Open Address…")), &QAction::triggered, this, [this, address] { askToOpenAddress(address); },
        Qt::QueuedConnection);
    connect(menu.addAction(tr("Copy A&ddress")), &QAction::triggered, this,
            [address] { QGuiApplication::clipboard()->setText(address); });
    menu.addSeparator();
}

void PDFWindowController::askToOpenAddress(const QString &address)
{
    if (openAddressIfAgreed(address, window()) == AddressOutcome::Failed)
        m_statusBar->showInlineMessage(tr("The address could not be opened."), DocumentStatusBar::Stay::AWhile);
}
