#include "platform/pdf/DrawingHelper.h"

#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/ImageBufferPool.h"

#include <QTimer>

#include <utility>

namespace inkory
{

namespace
{

// A page that a slow machine takes its time for is still worth waiting for, as other pages go on meanwhile.
constexpr EngineChannel::Limits drawLimits{20'000, 60'000};
// Above this a helper is ended after its job: the drawing library keeps every page that it has seen.
constexpr qint64 mostMemoryKept = 200LL << 20;

} // namespace

bool DrawingHelper::isOpenFor(const DrawingOrigin &origin) const
{
    // A file without a private copy may change under the library's hands, so the copy is taken as soon as it exists,
    // but for the first page: it is shown from what is open already.
    const bool changesToCopy = origin.file->hasPrivateCopy() && !m_isFromCopy && m_hasDrawn;
    return isRunning() && m_file == origin.file && !changesToCopy;
}

void DrawingHelper::open(const DrawingOrigin &origin, const Opened &done)
{
    m_isBusy = true;
    sendOpening(origin, [this, done](Ending ending, const OpenReply &reply) {
        m_isBusy = false;
        m_givenUp.invalidate();
        done(ending, reply);
    });
}

// Leaves it busy.
void DrawingHelper::sendOpening(const DrawingOrigin &origin, const Opened &done)
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

void DrawingHelper::draw(const DrawingOrigin &origin, const DrawRequest &request, const Drawn &done)
{
    m_isBusy = true;
    if (isOpenFor(origin)) {
        sendDrawing(request, done);
        return;
    }
    sendOpening(origin, [this, request, done](Ending ending, const OpenReply &reply) {
        const bool isOpen = ending == Ending::Answered && reply.problem == OpenProblem::None;
        if (isOpen && !m_givenUp.isValid()) {
            sendDrawing(request, done);
            return;
        }
        if (!isOpen)
            endProcess();
        m_isBusy = false;
        m_givenUp.invalidate();
        done(ending, {});
    });
}

void DrawingHelper::sendDrawing(const DrawRequest &request, const Drawn &done)
{
    const QSize size = request.region.size();
    auto memory = m_buffers.take(imageBytes(size, QImage::Format_RGB32));
    BusMessage call = memory ? m_channel->newCall(engineBus::draw) : nullptr;
    if (call && !append(call.get(), DrawMessage{++m_job, request, {(*memory)->descriptor(), (*memory)->size()}}))
        call.reset();
    const QImage image = memory ? imageInMemory(*memory, size, QImage::Format_RGB32) : QImage();
    m_channel->send(std::move(call), drawLimits, [this, done, image](EngineChannel::Answer answer) {
        finishDrawing(std::move(answer), done, image);
    });
}

void DrawingHelper::finishDrawing(EngineChannel::Answer answer, const Drawn &done, const QImage &image)
{
    m_isBusy = false;
    m_hasDrawn = true;
    m_givenUp.invalidate();
    const auto isDrawn = answer.message ? readBool(answer.message.get()) : std::nullopt;
    const bool isMad = answer.ending == Ending::Answered && !isDrawn;
    if (isMad || (isRunning() && m_channel->process().privateMemory() > mostMemoryKept))
        endProcess();
    done(isMad ? Ending::Died : answer.ending, isDrawn.value_or(false) ? image : QImage());
}

void DrawingHelper::giveUpJob()
{
    if (!m_isBusy || m_givenUp.isValid())
        return;
    m_givenUp.start();
    if (isRunning())
        m_channel->cancelJob(m_job);
}

std::optional<qint64> DrawingHelper::millisecondsSinceGivenUp() const
{
    return m_givenUp.isValid() ? std::optional(m_givenUp.elapsed()) : std::nullopt;
}

void DrawingHelper::stop()
{
    endProcess();
    m_isBusy = false;
    m_givenUp.invalidate();
}

void DrawingHelper::endProcess()
{
    m_channel.reset();
    m_file.reset();
}

} // namespace inkory
