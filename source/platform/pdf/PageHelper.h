#pragma once

#include "platform/core/SecretBytes.h"
#include "platform/pdf/EngineChannel.h"
#include "platform/pdf/PageJob.h"

#include <QElapsedTimer>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace inkory
{

class DocumentFile;
class ImageBufferPool;

/// What the helpers of one page source open.
struct PageOrigin
{
    std::shared_ptr<DocumentFile> file;
    SecretBytes password;
    /// Whether the drawing library dies over the file as it is.
    bool isRepairedFirst = false;
    /// How long opening it may take.
    qint64 patienceMilliseconds = 10'000;
    /// A helper that answers with a page beyond is not right in its mind.
    int pageCount = 0;
};

/// One helper process that draws and reads pages of one document, one job after the other; started, and started again,
/// when there is something to do. Main thread only; answers come from the event loop.
class PageHelper
{
public:
    using Ending = EngineChannel::Ending;
    /// The reply says something only if the ending is Answered.
    using Opened = std::function<void(Ending, const OpenReply &)>;
    using Done = std::function<void(Ending, PageAnswer)>;

    explicit PageHelper(ImageBufferPool &buffers) : m_buffers(buffers) {}
    PageHelper(const PageHelper &) = delete;
    PageHelper &operator=(const PageHelper &) = delete;

    bool isBusy() const { return m_isBusy; }
    /// Whether it has a process now.
    bool isRunning() const { return m_channel && m_channel->isAlive(); }

    /// Whether it can begin with a job at once.
    bool isOpenFor(const PageOrigin &origin) const;

    /// Opens the file; only when it is not busy.
    void open(const PageOrigin &origin, const Opened &done);
    /// Opens the file before, where it is not open; only when it is not busy.
    void perform(const PageOrigin &origin, const PageRequest &request, const Done &done);

    /// Nobody wants the running job's result: it is stopped, and answered all the same.
    void giveUpJob();
    /// How long ago giveUpJob() was called for the running job; nothing if it was not.
    std::optional<qint64> millisecondsSinceGivenUp() const;

    /// Ends the process; a running job is not answered.
    void stop();

private:
    struct Call;
    using Read = std::function<std::optional<PageAnswer>(sd_bus_message *)>;

    void sendOpening(const PageOrigin &origin, const Opened &done);
    void send(const PageRequest &request, const Done &done);
    void finish(EngineChannel::Answer answer, const Read &read, const Done &done);
    template <class Message> BusMessage newCall(const char *method, const Message &message);
    Call callFor(const DrawRequest &request);
    Call callFor(const TextRequest &request);
    Call callFor(const LinksRequest &request);
    Call callFor(const OutlineRequest &request);
    Call callFor(const FindRequest &request);
    void endProcess();

    ImageBufferPool &m_buffers;
    QObject m_context; // nothing is answered once it is gone
    std::unique_ptr<EngineChannel> m_channel;
    std::shared_ptr<DocumentFile> m_file; // that is open in the process
    int m_pageCount = 0;
    bool m_isFromCopy = false;
    bool m_hasDrawn = false;
    bool m_isBusy = false;
    bool m_isDrawing = false;
    quint32 m_job = 0;
    QElapsedTimer m_givenUp; // valid while a job that was given up runs
};

} // namespace inkory
