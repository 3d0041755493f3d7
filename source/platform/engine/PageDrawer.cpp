#include "platform/engine/PageDrawer.h"

#include "platform/engine/Passwords.h"
#include "platform/engine/QpdfStructure.h"

#include <QBuffer>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

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

/// Whether a drawing is to be given up, and has been told so once.
struct Cancellation
{
    const std::function<bool()> &ask;
    bool isSeen = false;

    bool check() { return isSeen = isSeen || ask(); }
};

bool shouldAbort(const QVariant &payload)
{
    return payload.value<Cancellation *>()->check();
}

// The library throws when it runs out of memory on a hostile page, for instance.
template <class Value, class Function> Value guarded(const char *failure, Value failed, Function function)
{
    try {
        return function();
    } catch (const std::exception &exception) {
        logFailure(failure, exception);
        return failed;
    }
}

void copyRows(const QImage &from, QImage &to)
{
    const QImage pixels = from.convertToFormat(to.format());
    const auto rowBytes = static_cast<std::size_t>(to.width()) * sizeof(QRgb);
    for (int y = 0; y < to.height(); ++y)
        std::memcpy(to.scanLine(y), pixels.constScanLine(y), rowBytes);
}

} // namespace

struct PageDrawer::Parts
{
    OpenReply open(const QByteArray &bytes, const QByteArray &password, Repair repair);
    OpenReply openAsItIs(const QByteArray &bytes, const QByteArray &password);
    void close();
    QImage drawn(const DrawRequest &request, Cancellation &cancellation) const;

    // The library copies all of a document that it is given as bytes, but not of one that it reads from a device.
    QBuffer source;
    std::unique_ptr<Poppler::Document> document; // below what it reads from
};

void PageDrawer::Parts::close()
{
    document.reset();
    source.close();
    source.setData(QByteArray());
}

OpenReply PageDrawer::Parts::openAsItIs(const QByteArray &bytes, const QByteArray &password)
{
    close();
    source.setData(bytes);
    source.open(QIODevice::ReadOnly);
    for (const QByteArray &candidate : passwordCandidates(password)) {
        document = Poppler::Document::load(&source, candidate, candidate);
        if (!document || !document->isLocked())
            break;
    }
    if (!document)
        return refusal(OpenProblem::Damaged);
    if (document->isLocked())
        return refusal(isProtectionUnknown(bytes) ? OpenProblem::ProtectionUnknown : OpenProblem::PasswordNeeded);
    const int pageCount = document->numPages();
    if (pageCount <= 0)
        return refusal(OpenProblem::NoPages);
    if (pageCount > maxPageCount)
        return refusal(OpenProblem::TooManyPages);
    const auto firstPage = document->page(0);
    if (!firstPage)
        return refusal(OpenProblem::Damaged);
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    document->setPaperColor(Qt::white);
    const QSizeF size = firstPage->pageSizeF();
    return {OpenProblem::None, false, pageCount, {saneSide(size.width()), saneSide(size.height())}};
}

OpenReply PageDrawer::Parts::open(const QByteArray &bytes, const QByteArray &password, Repair repair)
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

QImage PageDrawer::Parts::drawn(const DrawRequest &request, Cancellation &cancellation) const
{
    const auto page = document && !cancellation.check() ? document->page(request.page) : nullptr;
    if (!page)
        return {};
    const double dotsPerInch = 72 * request.scale;
    const QRect region = request.region;
    const auto turn = static_cast<Poppler::Page::Rotation>(request.extraQuarterTurns & 3);
    return page->renderToImage(dotsPerInch, dotsPerInch, region.x(), region.y(), region.width(), region.height(), turn,
                               nullptr, nullptr, shouldAbort, QVariant::fromValue(&cancellation));
}

PageDrawer::PageDrawer() : m_parts(std::make_unique<Parts>())
{
    // The library would write every flaw of a file to standard error.
    Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, {});
}

PageDrawer::~PageDrawer() = default;

OpenReply PageDrawer::open(const QByteArray &document, const QByteArray &password, Repair repair)
{
    OpenReply reply = guarded("the document cannot be opened", refusal(OpenProblem::Damaged),
                              [&] { return m_parts->open(document, password, repair); });
    if (reply.problem == OpenProblem::PasswordNeeded && !password.isEmpty())
        reply.problem = OpenProblem::PasswordWrong;
    if (reply.problem != OpenProblem::None)
        m_parts->close();
    return reply;
}

std::vector<QSizeF> PageDrawer::measureAllPages()
{
    return guarded("the pages cannot be measured", std::vector<QSizeF>(), [this] {
        std::vector<QSizeF> sizes;
        const int count = m_parts->document ? m_parts->document->numPages() : 0;
        sizes.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            const auto page = m_parts->document->page(i);
            const QSizeF size = page ? page->pageSizeF() : QSizeF(0, 0);
            const bool isFinite = std::isfinite(size.width()) && std::isfinite(size.height());
            sizes.push_back(isFinite ? size : QSizeF(0, 0));
        }
        return sizes;
    });
}

bool PageDrawer::draw(const DrawRequest &request, QImage &target, const std::function<bool()> &isCancelled)
{
    if (!isDrawable(request) || target.size() != request.region.size() || target.format() != QImage::Format_RGB32)
        return false;
    return guarded("the page cannot be drawn", false, [&] {
        Cancellation cancellation{isCancelled};
        const QImage image = m_parts->drawn(request, cancellation);
        // A failed drawing is an image of one pixel.
        if (cancellation.check() || image.size() != target.size())
            return false;
        copyRows(image, target);
        return true;
    });
}

} // namespace inkory
