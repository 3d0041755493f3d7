#include "platform/engine/QpdfWriter.h"

#include "platform/core/Log.h"
#include "platform/engine/OverlayForms.h"
#include "platform/engine/PageStamping.h"
#include "platform/engine/PageTree.h"
#include "platform/engine/QpdfStructure.h"

#include <algorithm>
#include <exception>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace inkory
{

namespace
{

bool isComplete(const WriteRequest &request, std::size_t pageCount, int overlayCount)
{
    std::vector<bool> used(static_cast<std::size_t>(overlayCount), false);
    const auto isThere = [&used](const OverlayPiece &piece) {
        const auto overlay = static_cast<std::size_t>(piece.overlayPage);
        const bool isNew = piece.overlayPage >= 0 && overlay < used.size() && !used[overlay];
        if (isNew)
            used[overlay] = true;
        return isNew;
    };
    std::vector<bool> seen(pageCount, false);
    for (const WritePage &page : request.pages) {
        const auto source = static_cast<std::size_t>(page.sourcePage);
        if (page.sourcePage < 0 || source >= pageCount || seen[source] ||
            !std::all_of(page.pieces.begin(), page.pieces.end(), isThere))
            return false;
        seen[source] = true;
    }
    return request.pages.size() == pageCount;
}

void applyRequest(QPDF &document, const WriteRequest &request, const std::vector<QpdfPage> &pages, OverlayForms &forms)
{
    bool isReordered = false;
    std::vector<QpdfPage> order;
    for (std::size_t i = 0; i < request.pages.size(); ++i) {
        const WritePage &written = request.pages[i];
        const QpdfPage &page = pages[static_cast<std::size_t>(written.sourcePage)];
        order.push_back(page);
        isReordered = isReordered || static_cast<std::size_t>(written.sourcePage) != i;
        if (normalizedRotation(written.rotation) != page.geometry.rotation) {
            page.object->replaceKey("/Rotate", QPDFObjectHandle::newInteger(normalizedRotation(written.rotation)));
        }
        if (!written.pieces.empty())
            stampPage(document, page, forms.makeForm(written.pieces), written.overlayOrigin);
    }
    if (isReordered)
        setPages(document, order);
}

WrittenDocument build(const QByteArray &original, const QByteArray &password, const WriteRequest &request)
{
    const QpdfFile opened = openWithQpdf(original, password);
    QPDF &document = *opened.document;
    if (forbidsChanges(document))
        return {WriteProblem::ChangesForbidden, {}};
    const std::vector<QpdfPage> pages = readPages(document);
    OverlayForms forms(document, request.overlays, request.images);
    if (!isComplete(request, pages.size(), forms.pageCount())) {
        logLine(QStringLiteral("asked to write pages that the document does not have"));
        return {};
    }
    applyRequest(document, request, pages, forms);
    const char *minimumVersion = forms.pageCount() > 0 ? "1.4" : ""; // for soft masks and opacity
    return {WriteProblem::None, writtenBytes(document, original.size() + request.overlays.size(), minimumVersion)};
}

} // namespace

FileStructure readStructure(const QByteArray &document, const QByteArray &password)
{
    FileStructure structure;
    try {
        const QpdfFile opened = openWithQpdf(document, password);
        const std::vector<QpdfPage> pages = readPages(*opened.document);
        structure.pages.reserve(pages.size());
        for (const QpdfPage &page : pages)
            structure.pages.push_back(page.geometry);
        structure.isRepaired = isRepaired(*opened.document);
        if (forbidsChanges(*opened.document))
            structure.problem = WriteProblem::ChangesForbidden;
    } catch (const std::exception &exception) {
        logFailure("the document's structure cannot be read", exception);
        const bool isDamaged = readingProblem(exception) == OpenProblem::Damaged;
        structure.problem = isDamaged ? WriteProblem::Damaged : WriteProblem::ProtectionUnknown;
    }
    return structure;
}

WrittenDocument writeDocument(const QByteArray &document, const QByteArray &password, const WriteRequest &request)
{
    try {
        WrittenDocument written = build(document, password, request);
        if (written.problem != WriteProblem::None)
            return written;
        const FileStructure structure = readStructure(written.bytes, password);
        if (structure.problem == WriteProblem::None && structure.pages.size() == request.pages.size())
            return written;
        logLine(QStringLiteral("the written document reads back with %1 of %2 pages")
                    .arg(QString::number(structure.pages.size()), QString::number(request.pages.size())));
    } catch (const std::exception &exception) {
        logFailure("the document cannot be written", exception);
    }
    return {};
}

} // namespace inkory
