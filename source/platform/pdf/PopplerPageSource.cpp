#include "platform/core/Log.h"
#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/PageSource.h"
#include "platform/pdf/Passwords.h"
#include "platform/pdf/QpdfStructure.h"
#include "platform/pdf/RenderQueue.h"

#include <QCoreApplication>
#include <QFile>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <thread>
#include <unordered_map>

#include <poppler-qt6.h>

namespace inkory
{

namespace
{

constexpr int maxPages = 100'000;
constexpr int maxRegionSide = 32'767;
constexpr qint64 maxRegionPixels = 64'000'000;
constexpr double maxScale = 1000;
constexpr int measuringDelayMilliseconds = 100;
constexpr double maxPageSide = 14'400;

constexpr int measuringPriority = static_cast<int>(DrawPriority::Ahead) + 1;

using OpenDone = std::function<void(const OpenOutcome &)>;
using MeasureDone = std::function<void(const std::vector<QSizeF> &)>;
using DrawDone = std::function<void(const Result<QImage> &)>;
using DocumentPtr = std::unique_ptr<Poppler::Document>;

QString text(const char *sentence)
{
    return QCoreApplication::translate("PageSource", sentence);
}

/// What all workers open. Never changed, so that workers may read it without a lock.
struct Origin
{
    std::shared_ptr<DocumentFile> file;
    QByteArray password;
};

DocumentPtr load(const DocumentFile &file, bool fromCopy, const QByteArray &password)
{
    return fromCopy ? Poppler::Document::loadFromData(file.bytes(), password, password)
                    : Poppler::Document::load(file.descriptorPath(), password, password);
}

QByteArray contentOf(const DocumentFile &file, qint64 maxSize)
{
    QFile content(file.descriptorPath());
    return content.open(QIODevice::ReadOnly) ? content.read(maxSize) : QByteArray();
}

bool looksLikePdf(const DocumentFile &file)
{
    return contentOf(file, 1024).contains("%PDF");
}

// Whether the library finds its way to the pages, or is kept out by a password.
bool isUsable(Poppler::Document &document)
{
    return document.isLocked() || (document.numPages() > 0 && document.page(0));
}

/// The drawing library's document of one worker, opened when it is first needed.
class WorkerDocument
{
public:
    /// None if the file cannot be opened; locked if the password does not fit.
    Poppler::Document *get(const std::shared_ptr<const Origin> &origin)
    {
        if (!origin)
            return nullptr;
        // A file without a private copy may change under the library's hands, so the copy is taken as soon as it
        // exists, but for the first page: it is shown from what is open already.
        const bool copyExists = origin->file->hasPrivateCopy();
        const bool changesToCopy = copyExists && !m_fromCopy && m_hasDrawn;
        if (m_origin != origin || changesToCopy)
            open(origin, copyExists);
        return m_document.get();
    }

    void noteDrawn() { m_hasDrawn = true; }

    void clear()
    {
        m_document.reset();
        m_repaired.clear();
        m_origin.reset();
    }

private:
    void open(const std::shared_ptr<const Origin> &origin, bool fromCopy)
    {
        clear();
        m_origin = origin;
        m_fromCopy = fromCopy;
        m_hasDrawn = false;
        for (const QByteArray &password : passwordCandidates(origin->password)) {
            m_document = load(*origin->file, fromCopy, password);
            if (!m_document || !m_document->isLocked())
                break;
        }
        if (!m_document || !isUsable(*m_document))
            repair();
        if (!m_document)
            return;
        m_document->setRenderHint(Poppler::Document::Antialiasing);
        m_document->setRenderHint(Poppler::Document::TextAntialiasing);
        m_document->setPaperColor(Qt::white);
    }

    // The writing library finds pages behind damage that this one does not see through.
    void repair()
    {
        const DocumentFile &file = *m_origin->file;
        if (!looksLikePdf(file))
            return;
        m_repaired = repairedDocument(m_fromCopy ? file.bytes() : contentOf(file, file.size()), m_origin->password);
        if (m_repaired.isEmpty())
            return;
        for (const QByteArray &password : passwordCandidates(m_origin->password)) {
            DocumentPtr document = Poppler::Document::loadFromData(m_repaired, password, password);
            if (document && !document->isLocked() && isUsable(*document))
                m_document = std::move(document);
        }
    }

    std::shared_ptr<const Origin> m_origin; // outlives the document, which reads its bytes
    bool m_fromCopy = false;
    bool m_hasDrawn = false;
    QByteArray m_repaired;
    DocumentPtr m_document;
};

OpenOutcome failure(const char *sentence)
{
    return {OpenOutcome::State::Failed, text(sentence), 0, {}};
}

OpenOutcome lockedOutcome(const Origin &origin)
{
    if (isProtectionUnknown(*origin.file))
        return failure("This document is protected in a way that is not supported.");
    return {OpenOutcome::State::PasswordNeeded,
            text(origin.password.isEmpty() ? "This document is protected by a password."
                                           : "That password is not right. Try again."),
            0,
            {}};
}

OpenOutcome openOutcome(const Origin &origin, Poppler::Document *document)
{
    constexpr const char *damaged = "This PDF document is damaged and cannot be shown.";
    const bool isEmpty = document && !document->isLocked() && document->numPages() <= 0;
    if ((!document || isEmpty) && !looksLikePdf(*origin.file))
        return failure("This file is not a PDF document.");
    if (!document)
        return failure(damaged);
    if (document->isLocked())
        return lockedOutcome(origin);
    if (isEmpty)
        return failure("This PDF document has no pages.");
    if (document->numPages() > maxPages)
        return failure("This PDF document has too many pages.");
    const auto firstPage = document->page(0);
    if (!firstPage)
        return failure(damaged);
    const QSizeF size = firstPage->pageSizeF();
    const auto sane = [](double side) { return std::isfinite(side) ? std::clamp(side, 1.0, maxPageSide) : 1.0; };
    return {OpenOutcome::State::Open, {}, document->numPages(), QSizeF(sane(size.width()), sane(size.height()))};
}

std::vector<QSizeF> pageSizes(Poppler::Document *document, const std::atomic<bool> &cancelled)
{
    std::vector<QSizeF> sizes;
    if (!document || document->isLocked())
        return sizes;
    const int count = std::clamp(document->numPages(), 0, maxPages);
    sizes.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count && !cancelled; ++i) {
        const auto page = document->page(i);
        const QSizeF size = page ? page->pageSizeF() : QSizeF(0, 0);
        const bool isFinite = std::isfinite(size.width()) && std::isfinite(size.height());
        sizes.push_back(isFinite ? size : QSizeF(0, 0));
    }
    return sizes;
}

bool shouldAbort(const QVariant &payload)
{
    return payload.value<const RenderQueue::Run *>()->cancelled;
}

bool isDrawable(const DrawRequest &request)
{
    const QSize size = request.region.size();
    return !request.region.isEmpty() && size.width() <= maxRegionSide && size.height() <= maxRegionSide &&
           qint64(size.width()) * size.height() <= maxRegionPixels && request.scale > 0 && request.scale <= maxScale;
}

Result<QImage> drawRegion(Poppler::Document *document, const DrawRequest &request, const RenderQueue::Run &run)
{
    const Error cannotDraw{text("This page cannot be drawn.")};
    if (!document || document->isLocked() || !isDrawable(request))
        return cannotDraw;
    const auto page = document->page(request.page);
    if (!page)
        return cannotDraw;
    const double dotsPerInch = 72 * request.scale;
    const auto turn = static_cast<Poppler::Page::Rotation>(request.extraQuarterTurns & 3);
    QImage image =
        page->renderToImage(dotsPerInch, dotsPerInch, request.region.x(), request.region.y(), request.region.width(),
                            request.region.height(), turn, nullptr, nullptr, shouldAbort, QVariant::fromValue(&run));
    // A failed drawing is an image of one pixel.
    if (image.size() != request.region.size())
        return cannotDraw;
    image.setDevicePixelRatio(1);
    return image;
}

// What the library throws (it runs out of memory on hostile pages) must not leave the thread.
template <class Value, class Function> Value guarded(Function function, Value failed)
{
    try {
        return function();
    } catch (const std::exception &exception) {
        logLine(QStringLiteral("the drawing library failed: %1").arg(QString::fromLocal8Bit(exception.what())));
        return failed;
    }
}

/// Carries answers from workers to the main thread as long as somebody waits for them there.
class Mailbox
{
public:
    /// Called on a worker; the function runs on the main thread, unless the mailbox is closed by then.
    template <class Function> void post(Function function)
    {
        const std::lock_guard lock(m_mutex);
        if (m_receiver)
            QMetaObject::invokeMethod(m_receiver.get(), std::move(function), Qt::QueuedConnection);
    }

    /// Main thread only.
    QObject *receiver() const { return m_receiver.get(); }
    void close()
    {
        const std::lock_guard lock(m_mutex);
        m_receiver.reset();
    }

private:
    std::mutex m_mutex;
    std::unique_ptr<QObject> m_receiver = std::make_unique<QObject>();
};

/// The threads of one page source and what they work on.
struct Workers
{
    std::array<WorkerDocument, 3> documents; // each touched by the worker with its index only
    Mailbox mailbox;
    RenderQueue queue{{{static_cast<int>(DrawPriority::Visible), static_cast<int>(DrawPriority::Ahead)},
                       {static_cast<int>(DrawPriority::Visible), static_cast<int>(DrawPriority::Visible)},
                       {measuringPriority, measuringPriority}}}; // last: its threads use the rest until they have ended
};

std::atomic<int> retiredWorkers = 0;

// One operator of a hostile page may take minutes, and nothing stops it: the threads are waited for elsewhere.
void retire(std::unique_ptr<Workers> workers)
{
    workers->mailbox.close();
    workers->queue.stop();
    if (!workers->queue.isBusy())
        return;
    ++retiredWorkers;
    std::thread([held = std::move(workers)]() mutable {
        held.reset();
        --retiredWorkers;
    }).detach();
}

class PopplerPageSource : public PageSource
{
public:
    PopplerPageSource();
    ~PopplerPageSource() override { retire(std::move(m_workers)); }

    void open(std::shared_ptr<DocumentFile> file, const QByteArray &password, OpenDone done) override;
    void measureAllPages(MeasureDone done) override;
    DrawToken draw(const DrawRequest &request, DrawPriority priority, DrawDone done) override;
    void cancel(DrawToken token) override;

private:
    void startMeasuring();

    template <class Done> struct Pending
    {
        RenderQueue::JobId id = 0;
        Done done;
    };
    template <class Done, class Outcome>
    void answer(Pending<Done> &pending, RenderQueue::JobId id, const Outcome &outcome);

    RenderQueue &queue() { return m_workers->queue; }

    std::shared_ptr<const Origin> m_origin;
    Pending<OpenDone> m_opening;
    Pending<MeasureDone> m_measuring;
    std::unordered_map<DrawToken, DrawDone> m_drawing;
    bool m_measuringWaits = false;
    bool m_hasShownPage = false;
    std::unique_ptr<Workers> m_workers = std::make_unique<Workers>();
};

PopplerPageSource::PopplerPageSource()
{
    // The library would write every flaw of a file to standard error.
    static const bool silenced = [] {
        Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, {});
        return true;
    }();
    Q_UNUSED(silenced)
}

// Takes the callback out first: it may open again, or destroy this source.
template <class Done, class Outcome>
void PopplerPageSource::answer(Pending<Done> &pending, RenderQueue::JobId id, const Outcome &outcome)
{
    if (pending.id != id)
        return;
    const Done done = std::exchange(pending, {}).done;
    done(outcome);
}

void PopplerPageSource::open(std::shared_ptr<DocumentFile> file, const QByteArray &password, OpenDone done)
{
    queue().cancel(m_opening.id);
    m_origin = std::make_shared<const Origin>(Origin{std::move(file), password});
    m_opening.done = std::move(done);
    m_opening.id =
        queue().add(static_cast<int>(DrawPriority::Visible), [this, workers = m_workers.get(),
                                                              origin = m_origin](const RenderQueue::Run &run) {
            WorkerDocument &document = workers->documents[static_cast<std::size_t>(run.worker)];
            const OpenOutcome outcome = guarded([&] { return openOutcome(*origin, document.get(origin)); },
                                                failure("This PDF document is damaged and cannot be shown."));
            workers->mailbox.post([this, id = run.id, outcome] { answer(m_opening, id, outcome); });
        });
}

// Measuring reads every page: it waits until the first page is drawn, or for a moment in case nobody wants to see one.
void PopplerPageSource::measureAllPages(MeasureDone done)
{
    queue().cancel(m_measuring.id);
    m_measuring = {0, std::move(done)};
    m_measuringWaits = true;
    if (m_hasShownPage)
        startMeasuring();
    else
        QTimer::singleShot(measuringDelayMilliseconds, m_workers->mailbox.receiver(), [this] { startMeasuring(); });
}

void PopplerPageSource::startMeasuring()
{
    m_hasShownPage = true;
    if (!std::exchange(m_measuringWaits, false))
        return;
    m_measuring.id = queue().add(
        measuringPriority, [this, workers = m_workers.get(), origin = m_origin](const RenderQueue::Run &run) {
            WorkerDocument &document = workers->documents[static_cast<std::size_t>(run.worker)];
            const auto sizes =
                guarded([&] { return pageSizes(document.get(origin), run.cancelled); }, std::vector<QSizeF>());
            document.clear(); // nothing else is done on this worker, and the library keeps every page that it has seen
            workers->mailbox.post([this, id = run.id, sizes] { answer(m_measuring, id, sizes); });
        });
}

DrawToken PopplerPageSource::draw(const DrawRequest &request, DrawPriority priority, DrawDone done)
{
    const DrawToken token = queue().add(static_cast<int>(priority), [this, workers = m_workers.get(), request,
                                                                     origin = m_origin](const RenderQueue::Run &run) {
        WorkerDocument &document = workers->documents[static_cast<std::size_t>(run.worker)];
        const auto image = guarded([&] { return drawRegion(document.get(origin), request, run); },
                                   Result<QImage>(Error{text("This page cannot be drawn.")}));
        document.noteDrawn();
        if (run.cancelled)
            return;
        workers->mailbox.post([this, id = run.id, image] {
            startMeasuring();
            auto pending = m_drawing.extract(id);
            if (!pending.empty())
                pending.mapped()(image);
        });
    });
    // The answer cannot come before this function has returned to the event loop.
    m_drawing.emplace(token, std::move(done));
    return token;
}

void PopplerPageSource::cancel(DrawToken token)
{
    if (m_drawing.erase(token) > 0)
        queue().cancel(token);
}

} // namespace

std::unique_ptr<PageSource> makePageSource()
{
    return std::make_unique<PopplerPageSource>();
}

bool pageSourcesAreBusy()
{
    return retiredWorkers > 0;
}

} // namespace inkory
