#include "platform/core/Log.h"
#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/ImageBufferPool.h"
#include "platform/pdf/OpeningOutcome.h"
#include "platform/pdf/PageHelper.h"
#include "platform/pdf/PageSource.h"

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

using Ending = PageHelper::Ending;
template <class Value> using Done = std::function<void(const Result<Value> &)>;
using OpenDone = std::function<void(const OpenOutcome &)>;

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(PageSource)
};

class EnginePageSource : public PageSource
{
public:
    EnginePageSource();
    void open(std::shared_ptr<DocumentFile> file, const SecretBytes &password, OpenDone done) override;
    void callAfterFirstPage(std::function<void()> done) override;
    DrawToken draw(const DrawRequest &request, DrawPriority priority, Done<QImage> done) override;
    DrawToken readText(int page, DrawPriority priority, Done<PageText> done) override;
    DrawToken readLinks(int page, DrawPriority priority, Done<std::vector<PageLink>> done) override;
    DrawToken readOutline(Done<std::vector<OutlineItem>> done) override;
    DrawToken find(const FindRequest &request, Done<FindReply> done) override;
    void cancel(DrawToken token) override;

private:
    /// After all that is drawn comes what takes long, then what nobody waits for.
    static constexpr int visibleRank = static_cast<int>(DrawPriority::Visible);
    static constexpr int backgroundRank = static_cast<int>(DrawPriority::Ahead) + 1;
    static constexpr int idleRank = backgroundRank + 1;
    static int rankOf(DrawPriority priority)
    {
        return priority == DrawPriority::Idle ? idleRank : static_cast<int>(priority);
    }
    using Key = std::pair<int, DrawToken>; // rank and token: the order of working
    struct Job
    {
        PageRequest request;
        std::function<void(PageAnswer)> answer;
        int attempts = 0;
    };
    struct Running
    {
        Key key;
        std::optional<Job> job; // none once nobody wants it
    };
    /// The first serves everything, the second visible pages only.
    static constexpr std::size_t helperCount = 2;

    template <class Value>
    DrawToken add(int rank, const PageRequest &request, bool isPossible, Done<Value> done, const QString &failure);
    void refuseLater(DrawToken token, Job job);
    void startOpening();
    void finishOpening(Ending ending, const OpenReply &reply);
    void dispatchLater(int milliseconds);
    void dispatch();
    std::optional<std::size_t> helperFor(int rank);
    bool freeHelper(std::size_t index, int rank);
    bool isOnlyIdleWorkWaiting() const;
    void interruptIdleWork();
    void openWhereIdle();
    void startJob(std::size_t index);
    void finishJob(std::size_t index, Ending ending, PageAnswer answer);
    static bool isTriedAgain(Job &job, Ending ending);
    void noteFirstPage();

    QObject m_context; // nothing that was planned happens once it is gone
    PageOrigin m_origin;
    OpenDone m_opening;
    int m_openingAttempts = 0;
    QElapsedTimer m_openingSince;
    ImageBufferPool m_buffers;
    std::array<PageHelper, helperCount> m_helpers{PageHelper(m_buffers), PageHelper(m_buffers)};
    std::array<Running, helperCount> m_running;
    std::map<Key, Job> m_waiting;
    std::map<DrawToken, Job> m_refused; // not answered yet
    QElapsedTimer m_visibleWaits;       // since when the second helper would be of use
    QTimer m_quiet; // from the last job of somebody who waits until the helpers are made ready for the next
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
        if (m_running[i].job)
            m_waiting.emplace(m_running[i].key, std::move(*m_running[i].job));
        m_running[i] = {};
    }
    m_quiet.stop();
    m_origin = {std::move(file), password, false, openingMilliseconds, 0};
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
    m_origin.pageCount = reply.pageCount;
    m_origin.patienceMilliseconds = openingMilliseconds; // of helpers that open the document later
    const OpenDone done = std::exchange(m_opening, nullptr);
    dispatchLater(0);
    if (done)
        done(openingOutcome(ending, reply)); // last: it may open again, or destroy this source
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

template <class Value>
DrawToken EnginePageSource::add(int rank, const PageRequest &request, bool isPossible, Done<Value> done,
                                const QString &failure)
{
    const DrawToken token = ++m_lastToken;
    Job job{request, [done = std::move(done), failure](PageAnswer answer) {
                if (auto *value = std::get_if<Value>(&answer))
                    done(std::move(*value));
                else
                    done(Error{failure});
            }};
    if (m_origin.file && isPossible) {
        m_waiting.emplace(Key(rank, token), std::move(job));
        dispatchLater(0); // everything that is asked for in one go is known then
    } else {
        refuseLater(token, std::move(job));
    }
    return token;
}

void EnginePageSource::refuseLater(DrawToken token, Job job)
{
    m_refused.emplace(token, std::move(job));
    QTimer::singleShot(0, &m_context, [this, token] {
        if (const auto refused = m_refused.extract(token))
            refused.mapped().answer({});
    });
}

DrawToken EnginePageSource::draw(const DrawRequest &request, DrawPriority priority, Done<QImage> done)
{
    return add(rankOf(priority), request, isDrawable(request), std::move(done), Text::tr("This page cannot be drawn."));
}

DrawToken EnginePageSource::readText(int page, DrawPriority priority, Done<PageText> done)
{
    return add(rankOf(priority), TextRequest{page}, page >= 0, std::move(done),
               Text::tr("The text of this page cannot be read."));
}

DrawToken EnginePageSource::readLinks(int page, DrawPriority priority, Done<std::vector<PageLink>> done)
{
    return add(rankOf(priority), LinksRequest{page}, page >= 0, std::move(done),
               Text::tr("The links of this page cannot be read."));
}

DrawToken EnginePageSource::readOutline(Done<std::vector<OutlineItem>> done)
{
    return add(backgroundRank, OutlineRequest{}, true, std::move(done),
               Text::tr("The outline of this document cannot be read."));
}

DrawToken EnginePageSource::find(const FindRequest &request, Done<FindReply> done)
{
    return add(backgroundRank, request, isFindable(request), std::move(done),
               Text::tr("This page cannot be searched."));
}

void EnginePageSource::cancel(DrawToken token)
{
    m_refused.erase(token);
    std::erase_if(m_waiting, [token](const auto &entry) { return entry.first.second == token; });
    for (std::size_t i = 0; i < helperCount; ++i) {
        if (!m_running[i].job || m_running[i].key.second != token)
            continue;
        m_running[i].job.reset();
        m_helpers[i].giveUpJob();
        dispatchLater(0); // for what waits for this helper
    }
}

void EnginePageSource::dispatchLater(int milliseconds)
{
    QTimer::singleShot(milliseconds, &m_context, [this] { dispatch(); });
}

// Whether the helper can take a job now; one that does not give up a job that nobody wants is replaced for that.
bool EnginePageSource::freeHelper(std::size_t index, int rank)
{
    PageHelper &helper = m_helpers[index];
    if (!helper.isBusy())
        return true;
    const qint64 grace = rank == visibleRank ? graceMilliseconds : thumbnailGraceMilliseconds;
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

std::optional<std::size_t> EnginePageSource::helperFor(int rank)
{
    if (!m_helpers[0].isBusy())
        return 0;
    if (rank != visibleRank)
        return freeHelper(0, rank) ? std::optional<std::size_t>(0) : std::nullopt;
    if (!m_helpers[1].isBusy() && m_helpers[1].isRunning())
        return 1;
    for (std::size_t i = 0; i < helperCount; ++i) {
        if (m_helpers[i].isBusy() && freeHelper(i, rank))
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
        const int rank = m_waiting.begin()->first.first;
        if (rank != visibleRank)
            m_visibleWaits.invalidate();
        const auto helper = helperFor(rank);
        if (!helper) {
            interruptIdleWork();
            return;
        }
        startJob(*helper);
    }
    m_visibleWaits.invalidate();
}

bool EnginePageSource::isOnlyIdleWorkWaiting() const
{
    return !m_waiting.empty() && m_waiting.begin()->first.first == idleRank;
}

// Not for the same image: nothing is gained by beginning it anew.
void EnginePageSource::interruptIdleWork()
{
    Running &running = m_running[0];
    if (!running.job || running.key.first != idleRank || isOnlyIdleWorkWaiting())
        return;
    const auto *wanted = std::get_if<DrawRequest>(&m_waiting.begin()->second.request);
    const auto *present = std::get_if<DrawRequest>(&running.job->request);
    if (wanted && present && *wanted == *present)
        return;
    m_waiting.emplace(running.key, std::move(*running.job));
    running.job.reset();
    m_helpers[0].giveUpJob();
    dispatchLater(0);
}

// Opens the document in helpers that do not have it as it is now, so that no visible page has to wait for that: not
// behind a page that ignores that it was given up either.
void EnginePageSource::openWhereIdle()
{
    for (PageHelper &helper : m_helpers) {
        if (!helper.isBusy() && !helper.isOpenFor(m_origin))
            helper.open(m_origin, [this](Ending, const OpenReply &) { dispatchLater(0); });
    }
}

void EnginePageSource::startJob(std::size_t index)
{
    auto next = m_waiting.extract(m_waiting.begin());
    if (next.key().first < backgroundRank)
        m_quiet.stop();
    m_running[index] = {next.key(), std::move(next.mapped())};
    m_helpers[index].perform(m_origin, m_running[index].job->request, [this, index](Ending ending, PageAnswer answer) {
        finishJob(index, ending, std::move(answer));
    });
}

// Whether a job that ended so is begun again; changed to what is tried then.
bool EnginePageSource::isTriedAgain(Job &job, Ending ending)
{
    const bool died = ending == Ending::Died || ending == Ending::NotStarted;
    auto *find = std::get_if<FindRequest>(&job.request);
    const bool hasFurtherPages = find && find->endPage > find->firstPage + 1;
    const bool isWorthIt = died || (ending == Ending::Overran && hasFurtherPages);
    if (!isWorthIt || ++job.attempts >= mostAttempts)
        return false;
    if (find)
        find->endPage = find->firstPage + 1; // whichever page it was, this one is not given up for it
    return true;
}

void EnginePageSource::finishJob(std::size_t index, Ending ending, PageAnswer answer)
{
    Running running = std::exchange(m_running[index], {});
    const bool isAgain = running.job && isTriedAgain(*running.job, ending);
    if (isAgain)
        m_waiting.emplace(running.key, std::move(*running.job));
    if (isOnlyIdleWorkWaiting())
        dispatchLater(0); // the answer may lead to something that is wanted
    else
        dispatch(); // before the answer, so that the helper need not wait for what is done with it
    if (m_waiting.empty() && m_hasShownPage && !m_quiet.isActive())
        m_quiet.start();
    if (isAgain || !running.job)
        return;
    if (!m_hasShownPage && std::holds_alternative<DrawRequest>(running.job->request))
        QTimer::singleShot(0, &m_context, [this] { noteFirstPage(); });
    const auto done = std::move(running.job->answer); // last: it may destroy this source
    done(std::move(answer));
}

} // namespace

std::unique_ptr<PageSource> makePageSource()
{
    return std::make_unique<EnginePageSource>();
}

} // namespace inkory
