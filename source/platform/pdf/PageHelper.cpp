#include "platform/pdf/PageHelper.h"

#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/ImageBufferPool.h"
#include "platform/pdf/ReadingMessages.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace inkory
{

namespace
{

// A page that a slow machine takes its time for is still worth waiting for, as other pages go on meanwhile.
constexpr EngineChannel::Limits drawLimits{20'000, 60'000};
constexpr EngineChannel::Limits readLimits{20'000, 60'000, engineBus::longestReadAnswer};
// Above this a helper is ended after its job: the drawing library keeps every page that it has seen.
constexpr qint64 mostMemoryKept = 200LL << 20;

template <class Value> std::optional<PageAnswer> asAnswer(std::optional<Value> value)
{
    return value ? std::optional<PageAnswer>(std::move(*value)) : std::nullopt;
}

// Nothing if something leads to a page that the document does not have.
template <class Value>
std::optional<std::vector<Value>> withinDocument(std::optional<std::vector<Value>> values, int pageCount)
{
    const auto leadsOut = [pageCount](const Value &each) {
        return each.destination && each.destination->page >= pageCount;
    };
    const bool isWrong = values && std::any_of(values->begin(), values->end(), leadsOut);
    return isWrong ? std::nullopt : std::move(values);
}

} // namespace

/// A message, what its answer may take, and how it is read: nothing where it is not as it should be.
struct PageHelper::Call
{
    BusMessage message;
    EngineChannel::Limits limits;
    Read read;
};

bool PageHelper::isOpenFor(const PageOrigin &origin) const
{
    // A file without a private copy may change under the library's hands, so the copy is taken as soon as it exists,
    // but for the first page: it is shown from what is open already.
    const bool changesToCopy = origin.file->hasPrivateCopy() && !m_isFromCopy && m_hasDrawn;
    return isRunning() && m_file == origin.file && !changesToCopy;
}

void PageHelper::open(const PageOrigin &origin, const Opened &done)
{
    m_isBusy = true;
    sendOpening(origin, [this, done](Ending ending, const OpenReply &reply) {
        m_isBusy = false;
        m_givenUp.invalidate();
        done(ending, reply);
    });
}

// Leaves it busy.
void PageHelper::sendOpening(const PageOrigin &origin, const Opened &done)
{
    if (!isRunning()) {
        m_channel.reset();
        auto started = EngineChannel::start(EngineKind::Documents);
        if (!started) {
            QTimer::singleShot(0, &m_context, [done] { done(Ending::NotStarted, {}); });
            return;
        }
        m_channel = std::move(*started);
    }
    m_file = origin.file;
    m_isFromCopy = origin.file->hasPrivateCopy();
    m_hasDrawn = false;
    const auto [descriptor, size] = origin.file->content();
    m_channel->process().allowAddressSpaceFor(2 * size); // repairing makes another document of it
    BusMessage call = m_channel->newCall(engineBus::open);
    const OpenMessage message{{descriptor, size, origin.password}, origin.isRepairedFirst};
    if (call && !append(call.get(), message))
        call.reset();
    const EngineChannel::Limits limits{origin.patienceMilliseconds, origin.patienceMilliseconds};
    m_channel->send(std::move(call), limits, [this, done](const EngineChannel::Answer &answer) {
        const auto reply = answer.message ? readOpenReply(answer.message.get()) : std::nullopt;
        const bool isMad = answer.ending == Ending::Answered && !reply;
        if (isMad)
            endProcess();
        done(isMad ? Ending::Died : answer.ending, reply.value_or(OpenReply()));
    });
}

void PageHelper::perform(const PageOrigin &origin, const PageRequest &request, const Done &done)
{
    m_isBusy = true;
    m_pageCount = origin.pageCount;
    if (isOpenFor(origin)) {
        send(request, done);
        return;
    }
    sendOpening(origin, [this, request, done](Ending ending, const OpenReply &reply) {
        const bool isOpen = ending == Ending::Answered && reply.problem == OpenProblem::None;
        if (isOpen && !m_givenUp.isValid()) {
            send(request, done);
            return;
        }
        if (!isOpen)
            endProcess();
        m_isBusy = false;
        m_givenUp.invalidate();
        done(ending, {});
    });
}

template <class Message> BusMessage PageHelper::newCall(const char *method, const Message &message)
{
    BusMessage call = m_channel->newCall(method);
    if (call && !append(call.get(), message))
        call.reset();
    return call;
}

PageHelper::Call PageHelper::callFor(const DrawRequest &request)
{
    const QSize size = request.region.size();
    auto memory = m_buffers.take(imageBytes(size, QImage::Format_RGB32));
    if (!memory)
        return {};
    const DrawMessage message{m_job, request, {(*memory)->descriptor(), (*memory)->size()}};
    const QImage image = imageInMemory(*memory, size, QImage::Format_RGB32);
    return {newCall(engineBus::draw, message), drawLimits,
            [image](sd_bus_message *answer) -> std::optional<PageAnswer> {
                const auto isDrawn = readBool(answer);
                if (!isDrawn)
                    return std::nullopt;
                return *isDrawn ? PageAnswer(image) : PageAnswer();
            }};
}

PageHelper::Call PageHelper::callFor(const TextRequest &request)
{
    return {newCall(engineBus::readText, ReadPageMessage{m_job, request.page}), readLimits,
            [](sd_bus_message *answer) { return asAnswer(readPageText(answer)); }};
}

PageHelper::Call PageHelper::callFor(const LinksRequest &request)
{
    return {newCall(engineBus::readLinks, ReadPageMessage{m_job, request.page}), readLimits,
            [count = m_pageCount](sd_bus_message *answer) {
                return asAnswer(withinDocument(readPageLinks(answer), count));
            }};
}

PageHelper::Call PageHelper::callFor(const OutlineRequest &)
{
    return {
        newCall(engineBus::readOutline, ReadOutlineMessage{m_job}), readLimits,
        [count = m_pageCount](sd_bus_message *answer) { return asAnswer(withinDocument(readOutline(answer), count)); }};
}

PageHelper::Call PageHelper::callFor(const FindRequest &request)
{
    return {newCall(engineBus::find, FindMessage{m_job, request}), readLimits, [request](sd_bus_message *answer) {
                auto reply = readFindReply(answer);
                const bool fits = reply && reply->nextPage > request.firstPage && reply->nextPage <= request.endPage &&
                                  (reply->hits.empty() || reply->hits.front().page >= request.firstPage);
                return asAnswer(fits ? std::move(reply) : std::nullopt);
            }};
}

void PageHelper::send(const PageRequest &request, const Done &done)
{
    ++m_job;
    m_isDrawing = std::holds_alternative<DrawRequest>(request);
    Call call = std::visit([this](const auto &each) { return callFor(each); }, request);
    m_channel->send(std::move(call.message), call.limits,
                    [this, done, read = std::move(call.read)](EngineChannel::Answer answer) {
                        finish(std::move(answer), read, done);
                    });
}

void PageHelper::finish(EngineChannel::Answer answer, const Read &read, const Done &done)
{
    m_isBusy = false;
    m_hasDrawn = m_hasDrawn || m_isDrawing;
    m_givenUp.invalidate();
    auto outcome = answer.message ? read(answer.message.get()) : std::nullopt;
    const bool isMad = answer.ending == Ending::Answered && !outcome;
    if (isMad || (isRunning() && m_channel->process().privateMemory() > mostMemoryKept))
        endProcess();
    done(isMad ? Ending::Died : answer.ending, std::move(outcome).value_or(PageAnswer()));
}

void PageHelper::giveUpJob()
{
    if (!m_isBusy || m_givenUp.isValid())
        return;
    m_givenUp.start();
    if (isRunning())
        m_channel->cancelJob(m_job);
}

std::optional<qint64> PageHelper::millisecondsSinceGivenUp() const
{
    return m_givenUp.isValid() ? std::optional(m_givenUp.elapsed()) : std::nullopt;
}

void PageHelper::stop()
{
    endProcess();
    m_isBusy = false;
    m_givenUp.invalidate();
}

void PageHelper::endProcess()
{
    m_channel.reset();
    m_file.reset();
}

} // namespace inkory
