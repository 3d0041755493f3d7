#include "platform/core/Log.h"
#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/DrawingHelper.h"
#include "platform/pdf/ImageBufferPool.h"
#include "platform/pdf/PageSource.h"
#include "platform/pdf/ProblemSentences.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace inkory
{

namespace
{

// A job that was given up and does not end within this time loses its helper as soon as a visible page needs one.
constexpr int graceMilliseconds = 10;
// Only when visible pages have been waiting for this long is a second process worth starting.
constexpr int secondHelperDelayMilliseconds = 30;
constexpr int firstPagePatienceMilliseconds = 100;
// Helpers without the document open it once nothing has been asked for during this time.
constexpr int quietMilliseconds = 150;
// A thumbnail can wait longer for a job to be given up.
constexpr int thumbnailGraceMilliseconds = 1'000;
// What the person waits for a document at most, both attempts together.
constexpr qint64 openingMilliseconds = 10'000;
constexpr qint64 leastPatience = 1'000;
// A helper may also die of something else than its page (somebody kills it), so that a page gets a second one.
constexpr int mostAttempts = 2;

using Ending = DrawingHelper::Ending;
using DrawDone = std::function<void(const Result<QImage> &)>;
using OpenDone = std::function<void(const OpenOutcome &)>;

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(PageSource)
};

Error cannotDraw()
{
    return {Text::tr("This page cannot be drawn.")};
}

OpenOutcome failure(const QString &sentence)
{
    return {OpenOutcome::State::Failed, sentence, false, 0, {}};
}

OpenOutcome outcomeFor(Ending ending, const OpenReply &reply)
{
    if (ending == Ending::NotStarted)
        return failure(
            Text::tr("The part of Inkory that reads PDF documents could not be started. Installing Inkory again may "
                     "help."));
    if (ending == Ending::Overran)
        return failure(
            Text::tr("Opening this PDF document takes too long: it is damaged, or made to be slow. Ask its sender "
                     "for another copy."));
    const OpenProblem problem = ending == Ending::Answered ? reply.problem : OpenProblem::Damaged;
    const bool asks = problem == OpenProblem::PasswordNeeded || problem == OpenProblem::PasswordWrong;
    const auto state = problem == OpenProblem::None ? OpenOutcome::State::Open
                       : asks                       ? OpenOutcome::State::PasswordNeeded
                                                    : OpenOutcome::State::Failed;
    return {state, sentenceFor(problem), reply.isRepaired, reply.pageCount, reply.firstPageSize};
}

class EnginePageSource : public PageSource
{
public:
    EnginePageSource();
    void open(std::shared_ptr<DocumentFile> file, const SecretBytes &password, OpenDone done) override;
    void callAfterFirstPage(std::function<void()> done) override;
    DrawToken draw(const DrawRequest &request, DrawPriority priority, DrawDone done) override;
    DrawToken readText(int, DrawPriority, std::function<void(const Result<PageText> &)> done) override
    {
        return refuse<PageText>(std::move(done));
    }
    DrawToken readLinks(int, DrawPriority, std::function<void(const Result<std::vector<PageLink>> &)> done) override
    {
        return refuse<std::vector<PageLink>>(std::move(done));
    }
    DrawToken readOutline(std::function<void(const Result<std::vector<OutlineItem>> &)> done) override
    {
        return refuse<std::vector<OutlineItem>>(std::move(done));
    }
    DrawToken find(const FindRequest &, std::function<void(const Result<FindReply> &)> done) override
    {
        return refuse<FindReply>(std::move(done));
    }
    template <class Value> DrawToken refuse(std::function<void(const Result<Value> &)> done)
    {
        QTimer::singleShot(0, &m_context, [done = std::move(done)] { done(cannotDraw()); });
        return ++m_lastToken;
    }
    void cancel(DrawToken token) override;

private:
    using Key = std::pair<DrawPriority, DrawToken>; // the order of drawing
    struct Request
    {
        DrawRequest wanted;
        DrawDone done;
        int attempts = 0;
    };
    struct Running
    {
        Key key;
        std::optional<Request> request; // none once nobody wants it
    };
    /// The first serves everything, the second visible pages only.
    static constexpr std::size_t helperCount = 2;

    void startOpening();
    void finishOpening(Ending ending, const OpenReply &reply);
    void dispatchLater(int milliseconds);
    void dispatch();
    std::optional<std::size_t> helperFor(DrawPriority priority);
    bool freeHelper(std::size_t index, DrawPriority priority);
    void openWhereIdle();
    void startDrawing(std::size_t index);
    void finishDrawing(std::size_t index, Ending ending, const QImage &image);
    void noteFirstPage();

    QObject m_context; // nothing that was planned happens once it is gone
    DrawingOrigin m_origin;
    OpenDone m_opening;
    int m_openingAttempts = 0;
    QElapsedTimer m_openingSince;
    ImageBufferPool m_buffers;
    std::array<DrawingHelper, helperCount> m_helpers{DrawingHelper(m_buffers), DrawingHelper(m_buffers)};
    std::array<Running, helperCount> m_running;
    std::map<Key, Request> m_waiting;
    QElapsedTimer m_visibleWaits; // since when the second helper would be of use
    QTimer m_quiet;               // from the last page drawn until the helpers are made ready for the next
    DrawToken m_lastToken = 0;
    bool m_hasShownPage = false;
    std::vector<std::function<void()>> m_afterFirstPage;
};

EnginePageSource::EnginePageSource()
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(quietMilliseconds);
    QObject::connect(&m_quiet, &QTimer::timeout, &m_context, [this] { openWhereIdle(); });
}

void EnginePageSource::open(std::shared_ptr<DocumentFile> file, const SecretBytes &password, OpenDone done)
{
    for (std::size_t i = 0; i < helperCount; ++i) {
        if (m_helpers[i].isBusy())
            m_helpers[i].stop();
        if (m_running[i].request)
            m_waiting.emplace(m_running[i].key, std::move(*m_running[i].request));
        m_running[i] = {};
    }
    m_quiet.stop();
    m_origin = {std::move(file), password, false, openingMilliseconds};
    m_opening = std::move(done);
    m_openingAttempts = 0;
    m_openingSince.start();
    startOpening();
}

void EnginePageSource::startOpening()
{
    m_helpers[0].open(m_origin, [this](Ending ending, const OpenReply &reply) { finishOpening(ending, reply); });
}

void EnginePageSource::finishOpening(Ending ending, const OpenReply &reply)
{
    const bool died = ending == Ending::Died || ending == Ending::NotStarted;
    if (died && ++m_openingAttempts < mostAttempts) {
        if (ending == Ending::Died)
            logLine(QStringLiteral("the helper died while it opened the document; trying what repairing makes of it"));
        m_origin.isRepairedFirst = ending == Ending::Died;
        m_origin.patienceMilliseconds = std::max(leastPatience, openingMilliseconds - m_openingSince.elapsed());
        startOpening();
        return;
    }
    m_origin.patienceMilliseconds = openingMilliseconds; // of helpers that open the document later
    const OpenDone done = std::exchange(m_opening, nullptr);
    dispatchLater(0);
    if (done)
        done(outcomeFor(ending, reply)); // last: it may open again, or destroy this source
}

void EnginePageSource::callAfterFirstPage(std::function<void()> done)
{
    m_afterFirstPage.push_back(std::move(done));
    QTimer::singleShot(m_hasShownPage ? 0 : firstPagePatienceMilliseconds, &m_context, [this] { noteFirstPage(); });
}

void EnginePageSource::noteFirstPage()
{
    m_hasShownPage = true;
    for (const auto &done : std::exchange(m_afterFirstPage, {}))
        done();
}

DrawToken EnginePageSource::draw(const DrawRequest &request, DrawPriority priority, DrawDone done)
{
    const DrawToken token = ++m_lastToken;
    if (!m_origin.file || !isDrawable(request)) {
        QTimer::singleShot(0, &m_context, [done = std::move(done)] { done(cannotDraw()); });
        return token;
    }
    m_waiting.emplace(Key(priority, token), Request{request, std::move(done), 0});
    dispatchLater(0); // everything that is asked for in one go is known then
    return token;
}

void EnginePageSource::cancel(DrawToken token)
{
    std::erase_if(m_waiting, [token](const auto &entry) { return entry.first.second == token; });
    for (std::size_t i = 0; i < helperCount; ++i) {
        if (!m_running[i].request || m_running[i].key.second != token)
            continue;
        m_running[i].request.reset();
        m_helpers[i].giveUpJob();
        dispatchLater(0); // for what waits for this helper
    }
}

void EnginePageSource::dispatchLater(int milliseconds)
{
    QTimer::singleShot(milliseconds, &m_context, [this] { dispatch(); });
}

// Whether the helper can take a job now; one that does not give up a job that nobody wants is replaced for that.
bool EnginePageSource::freeHelper(std::size_t index, DrawPriority priority)
{
    DrawingHelper &helper = m_helpers[index];
    if (!helper.isBusy())
        return true;
    const qint64 grace = priority == DrawPriority::Visible ? graceMilliseconds : thumbnailGraceMilliseconds;
    const auto givenUp = helper.millisecondsSinceGivenUp();
    if (!givenUp)
        return false;
    if (*givenUp < grace) {
        dispatchLater(static_cast<int>(grace - *givenUp) + 1);
        return false;
    }
    logLine(QStringLiteral("a helper that did not give up a page in time is replaced"));
    helper.stop();
    return true;
}

std::optional<std::size_t> EnginePageSource::helperFor(DrawPriority priority)
{
    if (!m_helpers[0].isBusy())
        return 0;
    if (priority != DrawPriority::Visible)
        return freeHelper(0, priority) ? std::optional<std::size_t>(0) : std::nullopt;
    if (!m_helpers[1].isBusy() && m_helpers[1].isRunning())
        return 1;
    for (std::size_t i = 0; i < helperCount; ++i) {
        if (m_helpers[i].isBusy() && freeHelper(i, priority))
            return i;
    }
    if (m_helpers[1].isBusy())
        return std::nullopt;
    if (!m_visibleWaits.isValid()) {
        m_visibleWaits.start();
        dispatchLater(secondHelperDelayMilliseconds + 1);
    }
    return m_visibleWaits.elapsed() >= secondHelperDelayMilliseconds ? std::optional<std::size_t>(1) : std::nullopt;
}

void EnginePageSource::dispatch()
{
    if (m_opening)
        return;
    while (!m_waiting.empty()) {
        const DrawPriority priority = m_waiting.begin()->first.first;
        if (priority != DrawPriority::Visible)
            m_visibleWaits.invalidate();
        const auto helper = helperFor(priority);
        if (!helper)
            return;
        startDrawing(*helper);
    }
    m_visibleWaits.invalidate();
}

// Opens the document in helpers that do not have it as it is now, so that no visible page has to wait for that: not
// behind a page that ignores that it was given up either.
void EnginePageSource::openWhereIdle()
{
    for (DrawingHelper &helper : m_helpers) {
        if (!helper.isBusy() && !helper.isOpenFor(m_origin))
            helper.open(m_origin, [this](Ending, const OpenReply &) { dispatchLater(0); });
    }
}

void EnginePageSource::startDrawing(std::size_t index)
{
    m_quiet.stop();
    auto next = m_waiting.extract(m_waiting.begin());
    m_running[index] = {next.key(), std::move(next.mapped())};
    m_helpers[index].draw(m_origin, m_running[index].request->wanted,
                          [this, index](Ending ending, const QImage &image) { finishDrawing(index, ending, image); });
}

void EnginePageSource::finishDrawing(std::size_t index, Ending ending, const QImage &image)
{
    Running running = std::exchange(m_running[index], {});
    const bool died = ending == Ending::Died || ending == Ending::NotStarted;
    const bool isTriedAgain = running.request && died && ++running.request->attempts < mostAttempts;
    if (isTriedAgain)
        m_waiting.emplace(running.key, std::move(*running.request));
    dispatch(); // before the answer, so that the helper need not wait for what is done with it
    if (m_waiting.empty() && m_hasShownPage)
        m_quiet.start();
    if (isTriedAgain || !running.request)
        return;
    if (!m_hasShownPage)
        QTimer::singleShot(0, &m_context, [this] { noteFirstPage(); });
    const DrawDone done = std::move(running.request->done); // last: it may destroy this source
    if (image.isNull())
        done(cannotDraw());
    else
        done(image);
}

} // namespace

std::unique_ptr<PageSource> makePageSource()
{
    return std::make_unique<EnginePageSource>();
}

} // namespace inkory
