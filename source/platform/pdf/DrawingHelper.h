#pragma once

#include "platform/core/SecretBytes.h"
#include "platform/pdf/EngineChannel.h"
#include "platform/pdf/EngineValues.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace inkory
{

class DocumentFile;
class ImageBufferPool;

/// What the helpers of one page source open.
struct DrawingOrigin
{
    std::shared_ptr<DocumentFile> file;
    SecretBytes password;
    /// Whether the drawing library dies over the file as it is.
    bool isRepairedFirst = false;
    /// How long opening it may take.
    qint64 patienceMilliseconds = 10'000;
};

/// One helper process that draws pages of one document, one after the other; started, and started again, when there is
/// something to do. Main thread only; answers come from the event loop.
class DrawingHelper
{
public:
    using Ending = EngineChannel::Ending;
    /// The reply says something only if the ending is Answered.
    using Opened = std::function<void(Ending, const OpenReply &)>;
    /// A null image if the page could not be drawn.
    using Drawn = std::function<void(Ending, const QImage &)>;

    explicit DrawingHelper(ImageBufferPool &buffers) : m_buffers(buffers) {}
    DrawingHelper(const DrawingHelper &) = delete;
    DrawingHelper &operator=(const DrawingHelper &) = delete;

    bool isBusy() const { return m_isBusy; }
    /// Whether it has a process now.
    bool isRunning() const { return m_channel && m_channel->isAlive(); }

    /// Whether it can draw at once.
    bool isOpenFor(const DrawingOrigin &origin) const;

    /// Opens the file; only when it is not busy.
    void open(const DrawingOrigin &origin, const Opened &done);
    /// Opens the file before, where it is not open; only when it is not busy.
    void draw(const DrawingOrigin &origin, const DrawRequest &request, const Drawn &done);

    /// Nobody wants the running job's result: it is stopped, and answered all the same.
    void giveUpJob();
    /// How long ago giveUpJob() was called for the running job; nothing if it was not.
    std::optional<qint64> millisecondsSinceGivenUp() const;

    /// Ends the process; a running job is not answered.
    void stop();

private:
    void sendOpening(const DrawingOrigin &origin, const Opened &done);
    void sendDrawing(const DrawRequest &request, const Drawn &done);
    void finishDrawing(EngineChannel::Answer answer, const Drawn &done, const QImage &image);

    void endProcess();

    ImageBufferPool &m_buffers;
    QObject m_context; // nothing is answered once it is gone
    std::unique_ptr<EngineChannel> m_channel;
    std::shared_ptr<DocumentFile> m_file; // that is open in the process
    bool m_isFromCopy = false;
    bool m_hasDrawn = false;
    bool m_isBusy = false;
    quint32 m_job = 0;
    QElapsedTimer m_givenUp; // valid while a job that was given up runs
};

} // namespace inkory
