#pragma once

#include "V1/application/InterfaceRegistration.h"
#include "V1/application/KRDocumentController.h"
#include "V1/application/PDFDocumentModel.h"
#include "V1/application/PDFWindowController.h"
#include "V1/editing/KRPDFView.h"
#include "platform/core/UserDefaults.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/ModalSession.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QApplication>
#include <QTimer>

namespace inkory::test
{

/// A folder that is also the person's home, and a person who answers questions. Without answers it is the first button.
class ApplicationFixture : public ::testing::Test
{
protected:
    ApplicationFixture()
    {
        qputenv("XDG_DATA_HOME", folder.path().toLocal8Bit());
        UserDefaults::setStandardFilePath(folder.filePath(QStringLiteral("settings.json")));
        registerApplicationInterfaceDescriptions();
        Alert::setResponder([this](const Alert &alert) {
            questions.append(QStringList({alert.messageText, alert.informativeText}) + alert.buttons);
            return answers.isEmpty() ? 1 : answers.takeFirst();
        });
    }
    ~ApplicationFixture() override
    {
        Alert::setResponder({});
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    QUrl urlOf(const char *name) const { return QUrl::fromLocalFile(folder.filePath(QString::fromUtf8(name))); }
    QUrl makeFile(const char *name, const QByteArray &bytes = textPages({"one"}))
    {
        return QUrl::fromLocalFile(writeFile(folder.path(), QString::fromUtf8(name), bytes));
    }
    static QList<Document *> documents() { return DocumentController::sharedDocumentController()->documents(); }
    static PDFDocumentModel &open(const QUrl &url)
    {
        auto *controller = DocumentController::sharedDocumentController();
        controller->openDocumentWithContentsOfURL(url, DocumentController::Display::Yes);
        return static_cast<PDFDocumentModel &>(*documents().last());
    }

    QTemporaryDir folder;
    /// The message, the informative text and the buttons of each.
    QList<QStringList> questions;
    QList<int> answers;
};

/// The same with a controller that opens documents, as the program has one while it runs.
class OpenedDocumentFixture : public ApplicationFixture
{
protected:
    OpenedDocumentFixture()
    {
        documentController.setDocumentFactory([] { return std::make_unique<PDFDocumentModel>(); });
    }

    KRDocumentController documentController;
};

/// The window of an open document.
class DocumentWindowFixture : public OpenedDocumentFixture
{
protected:
    explicit DocumentWindowFixture(const QByteArray &bytes = textPages({"one"}))
        : document(open(makeFile("a.pdf", bytes)))
    {
        EXPECT_TRUE(QTest::qWaitFor([this] { return document.pdfDoc()->isGeometrySettled(); }));
    }

    template <class T> T &part(const char *name) const { return *window.findChild<T *>(QLatin1String(name)); }

    PDFDocumentModel &document;
    PDFWindowController &controller = *document.pdfWindowController();
    QWidget &window = *controller.window();
    KRPDFView &view = *controller.pdfView();
};

} // namespace inkory::test
