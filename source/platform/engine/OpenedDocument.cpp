#include "platform/engine/OpenedDocument.h"

#include "platform/engine/LibraryCalls.h"
#include "platform/engine/Passwords.h"
#include "platform/engine/QpdfStructure.h"

#include <algorithm>
#include <cmath>

#include <poppler-qt6.h>

namespace inkory
{

namespace
{

bool looksLikePdf(const QByteArray &document)
{
    constexpr qsizetype headerArea = 1024;
    return document.left(headerArea).contains("%PDF");
}

OpenReply refusal(OpenProblem problem)
{
    OpenReply reply;
    reply.problem = problem;
    return reply;
}

double saneSide(double side)
{
    return std::isfinite(side) ? std::clamp(side, 1.0, maxPageSide) : 1.0;
}

} // namespace

OpenedDocument::OpenedDocument()
{
    // The library would write every flaw of a file to standard error.
    Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, {});
}

OpenedDocument::~OpenedDocument() = default;

void OpenedDocument::close()
{
    m_library.reset();
    m_source.close();
    m_source.setData(QByteArray());
}

OpenReply OpenedDocument::openAsItIs(const QByteArray &bytes, const QByteArray &password)
{
    close();
    m_source.setData(bytes);
    m_source.open(QIODevice::ReadOnly);
    for (const QByteArray &candidate : passwordCandidates(password)) {
        m_library = Poppler::Document::load(&m_source, candidate, candidate);
        if (!m_library || !m_library->isLocked())
            break;
    }
    if (!m_library)
        return refusal(OpenProblem::Damaged);
    if (m_library->isLocked())
        return refusal(isProtectionUnknown(bytes) ? OpenProblem::ProtectionUnknown : OpenProblem::PasswordNeeded);
    const int pageCount = m_library->numPages();
    if (pageCount <= 0)
        return refusal(OpenProblem::NoPages);
    if (pageCount > maxPageCount)
        return refusal(OpenProblem::TooManyPages);
    const auto firstPage = m_library->page(0);
    if (!firstPage)
        return refusal(OpenProblem::Damaged);
    m_library->setRenderHint(Poppler::Document::Antialiasing);
    m_library->setRenderHint(Poppler::Document::TextAntialiasing);
    m_library->setPaperColor(Qt::white);
    const QSizeF size = firstPage->pageSizeF();
    return {OpenProblem::None, false, pageCount, {saneSide(size.width()), saneSide(size.height())}};
}

OpenReply OpenedDocument::openOrRepair(const QByteArray &bytes, const QByteArray &password, Repair repair)
{
    OpenReply reply = repair == Repair::First ? refusal(OpenProblem::Damaged) : openAsItIs(bytes, password);
    if (reply.problem != OpenProblem::Damaged && reply.problem != OpenProblem::NoPages)
        return reply;
    if (repair == Repair::IfNeeded && !looksLikePdf(bytes))
        return refusal(OpenProblem::NotPdf);
    // The writing library finds pages behind damage that this one does not see through.
    const RepairedDocument repaired = repairedDocument(bytes, password);
    if (repaired.problem != OpenProblem::None)
        return reply.problem == OpenProblem::Damaged ? refusal(repaired.problem) : reply;
    OpenReply replyToRepaired = openAsItIs(repaired.bytes, password);
    replyToRepaired.isRepaired = true;
    return replyToRepaired.problem == OpenProblem::None ? replyToRepaired : reply;
}

OpenReply OpenedDocument::open(const QByteArray &bytes, const QByteArray &password, Repair repair)
{
    OpenReply reply = guarded("the document cannot be opened", refusal(OpenProblem::Damaged),
                              [&] { return openOrRepair(bytes, password, repair); });
    if (reply.problem == OpenProblem::PasswordNeeded && !password.isEmpty())
        reply.problem = OpenProblem::PasswordWrong;
    if (reply.problem != OpenProblem::None)
        close();
    return reply;
}

} // namespace inkory
