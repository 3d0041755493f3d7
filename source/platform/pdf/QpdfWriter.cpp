#include "platform/core/Log.h"
#include "platform/pdf/DocumentWriter.h"
#include "platform/pdf/OverlayForms.h"
#include "platform/pdf/PageStamping.h"
#include "platform/pdf/PageTree.h"
#include "platform/pdf/QpdfStructure.h"

#include <QCoreApplication>

#include <exception>

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFWriter.hh>

namespace inkory
{

namespace
{

QString text(const char *sentence)
{
    return QCoreApplication::translate("DocumentWriter", sentence);
}

/// Collects what is written in one QByteArray.
class BytesPipeline : public Pipeline
{
public:
    BytesPipeline() : Pipeline("bytes", nullptr) {}

    void write(const unsigned char *data, std::size_t size) override
    {
        bytes.append(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    }
    void finish() override {}

    QByteArray bytes;
};

// The sentence for what the library threw while a file was read.
QString readingFailure(const std::exception &exception)
{
    const auto *qpdfException = dynamic_cast<const QPDFExc *>(&exception);
    const qpdf_error_code_e code = qpdfException ? qpdfException->getErrorCode() : qpdf_e_damaged_pdf;
    if (code == qpdf_e_password || code == qpdf_e_unsupported)
        return text("This document is protected in a way that is not supported: it can be read but not changed.");
    return text("This document is damaged: it can be read but not changed.");
}

void logFailure(const char *action, const std::exception &exception)
{
    logLine(QStringLiteral("%1: %2").arg(QString::fromLatin1(action), QString::fromLocal8Bit(exception.what())));
}

bool isComplete(const WriteRequest &request, std::size_t pageCount, int overlayCount)
{
    std::vector<bool> seen(pageCount, false);
    for (const WritePage &page : request.pages) {
        const auto source = static_cast<std::size_t>(page.sourcePage);
        if (page.sourcePage < 0 || source >= pageCount || seen[source] || page.overlayPage >= overlayCount)
            return false;
        seen[source] = true;
    }
    return request.pages.size() == pageCount;
}

void applyRequest(QPDF &document, const WriteRequest &request, const std::vector<QpdfPage> &pages, OverlayForms &forms)
{
    bool isReordered = false;
    std::vector<QPDFObjectHandle> order;
    for (std::size_t i = 0; i < request.pages.size(); ++i) {
        const WritePage &written = request.pages[i];
        const QpdfPage &page = pages[static_cast<std::size_t>(written.sourcePage)];
        order.push_back(*page.object);
        isReordered = isReordered || static_cast<std::size_t>(written.sourcePage) != i;
        if (normalizedRotation(written.rotation) != page.geometry.rotation) {
            page.object->replaceKey("/Rotate", QPDFObjectHandle::newInteger(normalizedRotation(written.rotation)));
        }
        if (written.overlayPage >= 0)
            stampPage(document, page, forms.form(written.overlayPage), written.overlayOrigin);
    }
    if (isReordered)
        setPages(document, order);
}

QByteArray serialize(QPDF &document, bool hasOverlays, qsizetype expectedSize)
{
    BytesPipeline output;
    output.bytes.reserve(expectedSize);
    QPDFWriter writer(document);
    writer.setOutputPipeline(&output);
    writer.setStreamDataMode(qpdf_s_preserve);
    writer.setObjectStreamMode(qpdf_o_preserve);
    if (hasOverlays)
        writer.setMinimumPDFVersion("1.4"); // soft masks and opacity
    writer.write();
    return output.bytes;
}

class QpdfWriter : public DocumentWriter
{
public:
    FileStructure readStructure(const QByteArray &file, const QByteArray &password) override;
    Result<QByteArray> write(const WriteRequest &request) override;

private:
    static Result<QByteArray> build(const WriteRequest &request);
};

FileStructure QpdfWriter::readStructure(const QByteArray &file, const QByteArray &password)
{
    FileStructure structure;
    try {
        const QpdfFile opened = openWithQpdf(file, password);
        const std::vector<QpdfPage> pages = readPages(*opened.document);
        structure.pages.reserve(pages.size());
        for (const QpdfPage &page : pages)
            structure.pages.push_back(page.geometry);
        structure.cannotWriteReason = changeRefusal(*opened.document);
    } catch (const std::exception &exception) {
        logFailure("the document's structure cannot be read", exception);
        structure.cannotWriteReason = readingFailure(exception);
    }
    return structure;
}

Result<QByteArray> QpdfWriter::build(const WriteRequest &request)
{
    const QpdfFile opened = openWithQpdf(request.original, request.password);
    QPDF &document = *opened.document;
    if (const QString refusal = changeRefusal(document); !refusal.isEmpty())
        return Error{refusal};
    const std::vector<QpdfPage> pages = readPages(document);
    OverlayForms forms(document, request.overlays, request.images);
    if (!isComplete(request, pages.size(), forms.pageCount())) {
        logLine(QStringLiteral("asked to write pages that the document does not have"));
        return Error{text("The changed document could not be built.")};
    }
    applyRequest(document, request, pages, forms);
    return serialize(document, forms.pageCount() > 0, request.original.size() + request.overlays.size());
}

Result<QByteArray> QpdfWriter::write(const WriteRequest &request)
{
    const Error cannotBuild{text("The changed document could not be built.")};
    try {
        Result<QByteArray> built = build(request);
        if (!built)
            return built;
        const FileStructure written = readStructure(*built, request.password);
        if (written.cannotWriteReason.isEmpty() && written.pages.size() == request.pages.size())
            return built;
        logLine(QStringLiteral("the written document reads back with %1 of %2 pages")
                    .arg(QString::number(written.pages.size()), QString::number(request.pages.size())));
    } catch (const std::exception &exception) {
        logFailure("the document cannot be written", exception);
    }
    return cannotBuild;
}

} // namespace

std::unique_ptr<DocumentWriter> makeDocumentWriter()
{
    return std::make_unique<QpdfWriter>();
}

} // namespace inkory
