#include "V1/application/PDFDocumentModel.h"

#include "V1/application/PDFWindowController.h"
#include "V1/editing/KRPDFView.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/DocumentController.h"

namespace
{

constexpr int recentDelayMilliseconds = 300;

} // namespace

PDFDocumentModel::PDFDocumentModel(QObject *parent) : Document(parent)
{
    connect(this, &Document::saved, this, &PDFDocumentModel::noteAsRecent);
    m_recentTimer.setSingleShot(true);
    m_recentTimer.setInterval(recentDelayMilliseconds);
    connect(&m_recentTimer, &QTimer::timeout, this, &PDFDocumentModel::noteAsRecent);
}

PDFDocumentModel::~PDFDocumentModel()
{
    if (m_recentTimer.isActive())
        noteAsRecent(); // closed before its time
    // Windows and undo steps refer to the pages.
    destroyWindowControllers();
    undoManager().removeAllSteps();
}

inkory::Document::FileKind PDFDocumentModel::fileKind() const
{
    return {tr("PDF documents"), QStringLiteral("pdf"), QStringLiteral("application/pdf")};
}

void PDFDocumentModel::makeWindowControllers()
{
    auto controller = std::make_unique<PDFWindowController>(QStringLiteral("PDFDocumentWindow"));
    m_pdfWindowController = controller.get();
    addWindowController(std::move(controller));
    m_pdfWindowController->setPdfDoc(m_pdfDoc.get());
}

inkory::Result<void> PDFDocumentModel::readFromURL(const QUrl &url, const QString &)
{
    m_pdfDoc = std::make_unique<KRPDFDocument>();
    // Not before the first page is drawn: writing the list competes with it for processor and disk.
    connect(m_pdfDoc.get(), &KRPDFDocument::stateChanged, &m_recentTimer, qOverload<>(&QTimer::start));
    m_pdfDoc->initWithURL(url.toLocalFile());
    return {};
}

void PDFDocumentModel::noteAsRecent()
{
    auto *controller = inkory::DocumentController::sharedDocumentController();
    if (controller && m_pdfDoc && m_pdfDoc->state() == KRPDFDocument::State::Open && !fileUrl().isEmpty())
        controller->noteNewRecentDocumentURL(fileUrl());
}

inkory::Result<QByteArray> PDFDocumentModel::dataOfType(const QString &)
{
    const QByteArray bytes = m_pdfDoc ? m_pdfDoc->dataRepresentation() : QByteArray();
    if (bytes.isEmpty())
        return inkory::Error{tr("The document could not be saved.")};
    return bytes;
}

std::function<inkory::Result<QByteArray>()> PDFDocumentModel::snapshotForWriting()
{
    return m_pdfDoc ? m_pdfDoc->snapshotForWriting() : Document::snapshotForWriting();
}

QString PDFDocumentModel::reasonNotToSave() const
{
    if (!m_pdfDoc)
        return tr("The document could not be saved.");
    switch (m_pdfDoc->state()) {
    case KRPDFDocument::State::Opening:
        return tr("The document is still being opened.");
    case KRPDFDocument::State::Locked:
    case KRPDFDocument::State::Failed:
        return m_pdfDoc->message();
    case KRPDFDocument::State::Open:
        break;
    }
    if (!m_pdfDoc->isGeometrySettled())
        return tr("The document is still being checked. Try again in a moment.");
    return m_pdfDoc->canSave() ? QString() : m_pdfDoc->readOnlyReason();
}

void PDFDocumentModel::commitEditing()
{
    if (m_pdfWindowController && m_pdfWindowController->pdfView())
        m_pdfWindowController->pdfView()->endTextEditing();
}

void PDFDocumentModel::saveDocument(QObject *sender)
{
    if (showReasonNotToSave())
        return;
    inkory::Alert alert;
    alert.messageText = tr("Save the document?");
    alert.informativeText = tr("This will permanently modify the document.");
    alert.buttons = {tr("OK"), tr("Cancel")};
    if (alert.runModal(windowForSheets()) == 1)
        Document::saveDocument(sender);
}
