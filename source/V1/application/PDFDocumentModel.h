#pragma once

#include "V1/stamps/KRPDFDocument.h"
#include "platform/widgets/Document.h"

#include <QTimer>

#include <memory>

class PDFWindowController;

/// One open PDF file: holds the stamped PDF document, shows it in one window, and saves it, after a confirmation, with
/// every stamp drawn into its page for good. Owned by the document controller.
class PDFDocumentModel : public inkory::Document
{
    Q_OBJECT

public:
    explicit PDFDocumentModel(QObject *parent = nullptr);
    ~PDFDocumentModel() override;

    /// None before the document was read.
    KRPDFDocument *pdfDoc() const { return m_pdfDoc.get(); }
    /// None before makeWindowControllers().
    PDFWindowController *pdfWindowController() const { return m_pdfWindowController; }

    FileKind fileKind() const override;
    void makeWindowControllers() override;

    /// Starts reading; succeeds always. What is wrong with a file is the state of pdfDoc().
    inkory::Result<void> readFromURL(const QUrl &url, const QString &typeName) override;
    inkory::Result<QByteArray> dataOfType(const QString &typeName) override;
    std::function<inkory::Result<QByteArray>()> snapshotForWriting() override;
    QString reasonNotToSave() const override;
    /// Ends the editing of a text.
    void commitEditing() override;

    /// Asks first, because saving cannot be taken back: stamps become part of their pages.
    void saveDocument(QObject *sender) override;

private:
    void noteAsRecent();

    QTimer m_recentTimer;

    std::unique_ptr<KRPDFDocument> m_pdfDoc;
    PDFWindowController *m_pdfWindowController = nullptr; // owned by the list of window controllers
};
