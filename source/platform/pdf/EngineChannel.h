#pragma once

#include "platform/core/Result.h"
#include "platform/core/SharedMemory.h"
#include "platform/pdf/ChannelInlet.h"
#include "platform/pdf/EngineMessages.h"
#include "platform/pdf/EngineProcess.h"

#include <QElapsedTimer>
#include <QtGlobal>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class QSocketNotifier;
class QTimer;
struct sd_bus;
struct sd_bus_slot;

namespace inkory
{

/// One helper process and the messages to and from it: one job at a time, bounded in time. Used on one thread; what it
/// may be called from there blocks with call() and never blocks with send(). After any ending but Answered the helper
/// is gone.
class EngineChannel
{
public:
    /// How a job ended: with an answer, because the helper never got going, because it died (or said what cannot be),
    /// because it took longer than it may, or because the caller gave it up.
    enum class Ending { Answered, NotStarted, Died, Overran, GivenUp };
    struct Answer
    {
        Ending ending = Ending::Died;
        /// Only when Answered.
        BusMessage message;
    };
    /// What a job may take: computing, and in all, which is more on a busy machine; and how many bytes the helper may
    /// send meanwhile. Reading is the caller's time, so whoever sends more is mad.
    struct Limits
    {
        qint64 cpuMilliseconds = 0;
        qint64 wallMilliseconds = 0;
        qint64 answerBytes = 4096;
    };
    using Done = std::function<void(Answer)>;

    static Result<std::unique_ptr<EngineChannel>> start(EngineKind kind);
    EngineChannel(const EngineChannel &) = delete;
    EngineChannel &operator=(const EngineChannel &) = delete;
    ~EngineChannel();

    bool isAlive() const { return m_process != nullptr; }
    /// Only while it is alive.
    EngineProcess &process() { return *m_process; }

    /// An empty call of this method, to be filled and handed to call() or send(). None once the helper is gone.
    BusMessage newCall(const char *method);

    /// Waits for the answer. Gives the job up, and the helper with it, when the flag becomes true meanwhile.
    Answer call(BusMessage message, Limits limits, const std::atomic<bool> *givenUp = nullptr);

    /// Answers from the event loop, unless this object is gone by then; `done` may destroy it.
    void send(BusMessage message, Limits limits, Done done);

    /// Asks the helper to give up the drawing job with this number. Its answer comes all the same, soon unless the page
    /// ignores it.
    void cancelJob(quint32 job);

    /// Kills the helper. A job that is sent is not answered any more.
    void kill();

private:
    explicit EngineChannel(std::unique_ptr<EngineProcess> process);
    bool connect();
    bool begin(BusMessage message, Limits limits);
    bool sendWaiting();
    void pump();
    bool processPassed();
    void waitForSocket() const;
    bool hasOverrun();
    void watch();
    void finishSent();
    Ending deathBefore() const;
    void end(Ending ending);

    std::unique_ptr<EngineProcess> m_process;
    std::shared_ptr<SharedMemory> m_control; // an EngineControl
    int m_socket = -1;                       // to the helper; the bus's
    std::unique_ptr<ChannelInlet> m_inlet;
    struct BusDeleter
    {
        void operator()(sd_bus *bus) const;
    };
    struct SlotDeleter
    {
        void operator()(sd_bus_slot *slot) const;
    };
    std::unique_ptr<sd_bus, BusDeleter> m_bus;
    std::unique_ptr<sd_bus_slot, SlotDeleter> m_slot; // of the call that waits for its answer
    BusMessage m_attach;                              // until it could be sent
    BusMessage m_call;                                // likewise
    std::optional<Answer> m_answer;
    Limits m_limits;
    QElapsedTimer m_elapsed;
    qint64 m_cpuBefore = 0;
    Done m_done;
    // They may be calling when the helper is found dead, so they are destroyed from the event loop.
    struct LaterDeleter
    {
        void operator()(QObject *object) const;
    };
    std::unique_ptr<QSocketNotifier, LaterDeleter> m_readable;
    std::unique_ptr<QSocketNotifier, LaterDeleter> m_writable;
    std::unique_ptr<QTimer, LaterDeleter> m_watchdog;
};

} // namespace inkory
