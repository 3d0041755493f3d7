#include "platform/pdf/PDFDocument.h"

#include "platform/core/Log.h"
#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/DocumentWriter.h"
#include "platform/pdf/EngineProcess.h"
#include "platform/pdf/OverlayRecorder.h"
#include "platform/pdf/PrintOperation.h"
#include "platform/pdf/ProblemSentences.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <utility>

namespace inkory
{

namespace
{

// How far the two libraries' page sizes may differ, in points: one of them rounds.
constexpr double sizeTolerance = 1.0;

// Runs work on a pool thread and then `done` with its result on the main thread, unless the receiver is gone by then.
template <class Work, class Done> void runInBackground(QObject *receiver, Work work, Done done)
{
    QThreadPool::globalInstance()->start([guard = QPointer<QObject>(receiver), work, done] {
        auto result = work();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard, done, result] {
                if (guard)
                    done(result);
            },
            Qt::QueuedConnection);
    });
}

} // namespace

PDFDocument::PDFDocument(QObject *parent) : QObject(parent) {}

PDFDocument::~PDFDocument()
{
    *m_surveyGivenUp = true;
    if (m_file)
        m_file->removePrivateCopy(); // a save that is still being written may hold on to the file
}

void PDFDocument::initWithURL(const QString &path)
{
    auto file = DocumentFile::open(path);
    if (!file) {
        fail(file.error().message);
        return;
    }
    m_file = *file;
    m_pageSource = makePageSource();
    openSource();
    runInBackground(
        this, [copied = m_file] { return copied->makePrivateCopy(); },
        [this](const Result<void> &copy) {
            if (!copy) {
                logLine(QStringLiteral("no private copy of the document: %1").arg(copy.error().message));
                m_noCopyReason = tr("This document can only be read: no working copy of it could be made. %1")
                                     .arg(copy.error().message);
            }
            m_copyIsDecided = true;
            if (m_state == State::Open)
                startSurvey();
        });
}

void PDFDocument::unlock(const QString &password)
{
    if (m_state != State::Locked)
        return;
    m_password = SecretBytes(password.toUtf8());
    openSource();
}

bool PDFDocument::canSave() const
{
    return m_state == State::Open && m_geometrySettled && m_readOnlyReason.isEmpty();
}

PDFPage *PDFDocument::pageAtIndex(int index) const
{
    return index >= 0 && index < pageCount() ? m_pages[static_cast<std::size_t>(index)].get() : nullptr;
}

int PDFDocument::indexForPage(const PDFPage *page) const
{
    return page && pageAtIndex(page->index()) == page ? page->index() : -1;
}

void PDFDocument::numberPages()
{
    for (std::size_t i = 0; i < m_pages.size(); ++i)
        m_pages[i]->m_index = static_cast<int>(i);
}

void PDFDocument::insertPage(std::unique_ptr<PDFPage> page, int index)
{
    m_pages.insert(m_pages.begin() + std::clamp(index, 0, pageCount()), std::move(page));
    numberPages();
    Q_EMIT layoutChanged();
}

void PDFDocument::exchangePages(int firstIndex, int secondIndex)
{
    if (!pageAtIndex(firstIndex) || !pageAtIndex(secondIndex) || firstIndex == secondIndex)
        return;
    std::swap(m_pages[static_cast<std::size_t>(firstIndex)], m_pages[static_cast<std::size_t>(secondIndex)]);
    pageAtIndex(firstIndex)->m_index = firstIndex;
    pageAtIndex(secondIndex)->m_index = secondIndex;
}

std::function<Result<QByteArray>()> PDFDocument::snapshotForWriting()
{
    if (!canSave() || !m_file->hasPrivateCopy()) {
        const QString reason = !m_readOnlyReason.isEmpty() ? m_readOnlyReason
                               : m_state == State::Open    ? tr("The document is still being opened.")
                                                           : tr("There is no document to save.");
        return [reason]() -> Result<QByteArray> { return Error{reason}; };
    }
    WriteRequest request;
    OverlayRecorder recorder;
    for (const auto &page : m_pages) {
        WritePage written{page->sourceIndex(), page->rotation(), {}, {}};
        if (pageHasOverlay(*page)) {
            const PageRect box = page->boundsForBox(DisplayBox::CropBox);
            written.overlayOrigin = {box.x, box.y};
            recorder.beginPage(*page);
            page->drawWithBox(DisplayBox::CropBox, recorder);
            written.pieces = recorder.endPage();
        }
        request.pages.push_back(written);
    }
    request.overlays = recorder.finish();
    request.images = recorder.images();
    return [file = m_file, password = m_password, request = std::move(request)] {
        return writeChangedDocument(*file, password, request);
    };
}

QByteArray PDFDocument::dataRepresentation()
{
    Result<QByteArray> bytes = snapshotForWriting()();
    if (!bytes) {
        logLine(QStringLiteral("no data representation: %1").arg(bytes.error().message));
        return {};
    }
    return *bytes;
}

std::unique_ptr<PDFPage> PDFDocument::makePage(const PageGeometry &geometry, int sourceIndex) const
{
    return std::make_unique<PDFPage>(geometry, sourceIndex);
}

bool PDFDocument::pageHasOverlay(const PDFPage &) const
{
    return false;
}

std::unique_ptr<PrintOperation> PDFDocument::printOperationForPrintInfo(const PrintInfo &info, PageScaling scalingMode,
                                                                        AutoRotate autoRotate)
{
    PrintInfo changed = info;
    changed.scaling = scalingMode;
    changed.autoRotate = autoRotate;
    return std::make_unique<PrintOperation>(*this, changed);
}

void PDFDocument::openSource()
{
    m_state = State::Opening;
    m_pageSource->open(m_file, m_password, [this](const OpenOutcome &outcome) { sourceOpened(outcome); });
    Q_EMIT stateChanged();
}

void PDFDocument::sourceOpened(const OpenOutcome &outcome)
{
    switch (outcome.state) {
    case OpenOutcome::State::Failed:
        fail(outcome.message);
        return;
    case OpenOutcome::State::PasswordNeeded:
        m_state = State::Locked;
        m_message = outcome.message;
        m_password = {};
        Q_EMIT stateChanged();
        return;
    case OpenOutcome::State::Open:
        break;
    }
    makePages(outcome.pageCount, outcome.firstPageSize);
    m_wasRepaired = outcome.isRepaired;
    m_state = State::Open;
    m_message.clear();
    Q_EMIT stateChanged();
    if (m_copyIsDecided)
        startSurvey();
}

// Until the geometry of each page is known, all pages are laid out like the first one.
void PDFDocument::makePages(int count, QSizeF firstPageSize)
{
    PageGeometry assumed;
    if (!firstPageSize.isEmpty())
        assumed.mediaBox = {0, 0, firstPageSize.width(), firstPageSize.height()};
    assumed.cropBox = assumed.mediaBox;
    m_pages.clear();
    m_pages.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        m_pages.push_back(makePage(assumed, i));
    numberPages();
}

void PDFDocument::startSurvey()
{
    if (std::exchange(m_isSurveying, true))
        return; // the copy and the first page became ready in the same pass of the event loop
    m_pageSource->callAfterFirstPage([this] {
        runInBackground(
            this,
            [file = m_file, password = m_password, givenUp = m_surveyGivenUp] {
                return surveyDocument(*file, password, *givenUp);
            },
            [this](const SurveyOutcome &outcome) { finishSurvey(outcome); });
    });
}

void PDFDocument::finishSurvey(const SurveyOutcome &outcome)
{
    const FileStructure &structure = outcome.survey.structure;
    m_wasRepaired = m_wasRepaired || structure.isRepaired;
    QString reason = !m_noCopyReason.isEmpty() ? m_noCopyReason : outcome.failure;
    if (reason.isEmpty() && structure.pages.size() != m_pages.size())
        reason = sentenceFor(structure.problem);
    if (reason.isEmpty()) {
        compareStructures(outcome.survey);
        return;
    }
    layOutAsDrawn(outcome.survey.drawnSizes);
    settleGeometry(reason);
}

void PDFDocument::compareStructures(const Survey &survey)
{
    const std::vector<PageGeometry> &pages = survey.structure.pages;
    const std::vector<QSizeF> &drawnSizes = survey.drawnSizes;
    bool agree = pages.size() == m_pages.size() && drawnSizes.size() == m_pages.size();
    for (std::size_t i = 0; agree && i < m_pages.size(); ++i) {
        const QSizeF size = inkory::shownSize(pages[i].cropBox, pages[i].rotation);
        agree = std::abs(size.width() - drawnSizes[i].width()) <= sizeTolerance &&
                std::abs(size.height() - drawnSizes[i].height()) <= sizeTolerance;
    }
    if (!agree) {
        layOutAsDrawn(drawnSizes);
        settleGeometry(tr("This document can only be read: parts of it are damaged or contradict each other, so that a "
                          "signature could end up in the wrong place."));
        return;
    }
    for (const auto &page : m_pages)
        page->setGeometry(pages[static_cast<std::size_t>(page->sourceIndex())]);
    Q_EMIT layoutChanged();
    settleGeometry(sentenceFor(survey.structure.problem));
}

void PDFDocument::layOutAsDrawn(const std::vector<QSizeF> &drawnSizes)
{
    for (const auto &page : m_pages) {
        const auto source = static_cast<std::size_t>(page->sourceIndex());
        if (source >= drawnSizes.size() || drawnSizes[source].isEmpty())
            continue;
        const QSizeF size = drawnSizes[source].boundedTo(QSizeF(maxPageSide, maxPageSide)); // a file may say anything
        const PageRect box{0, 0, size.width(), size.height()};
        page->setGeometry({box, box, 0});
    }
    Q_EMIT layoutChanged();
}

void PDFDocument::settleGeometry(const QString &readOnlyReason)
{
    m_readOnlyReason = readOnlyReason;
    m_geometrySettled = true;
    EngineProcess::prepareSpare(); // so that a save, or a page whose helper dies, need not wait for one
    Q_EMIT geometrySettled();
}

void PDFDocument::fail(const QString &message)
{
    m_state = State::Failed;
    m_message = message;
    logLine(QStringLiteral("the document could not be opened: %1").arg(message));
    Q_EMIT stateChanged();
}

} // namespace inkory
