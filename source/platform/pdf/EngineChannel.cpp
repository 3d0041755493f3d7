#include "platform/pdf/EngineChannel.h"

#include "platform/core/Log.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <atomic>
#include <utility>

#include <poll.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace inkory
{

namespace
{

constexpr int watchMilliseconds = 100;
constexpr int mostStepsAtOnce = 50;

} // namespace

void EngineChannel::BusDeleter::operator()(sd_bus *bus) const
{
    sd_bus_close_unref(bus);
}

void EngineChannel::LaterDeleter::operator()(QObject *object) const
{
    object->disconnect();
    if (auto *notifier = qobject_cast<QSocketNotifier *>(object))
        notifier->setEnabled(false);
    object->deleteLater();
}

void EngineChannel::SlotDeleter::operator()(sd_bus_slot *slot) const
{
    sd_bus_slot_unref(slot);
}

EngineChannel::EngineChannel(std::unique_ptr<EngineProcess> process) : m_process(std::move(process)) {}

EngineChannel::~EngineChannel() = default;

Result<std::unique_ptr<EngineChannel>> EngineChannel::start(EngineKind kind)
{
    auto process = EngineProcess::start(kind);
    if (!process)
        return process.error();
    std::unique_ptr<EngineChannel> channel(new EngineChannel(std::move(*process)));
    if (!channel->connect()) {
        logLine(QStringLiteral("no connection to a helper process could be made"));
        return Error{QCoreApplication::translate("EngineProcess", "There is not enough memory to read the file.")};
    }
    return channel;
}

bool EngineChannel::connect()
{
    auto control = SharedMemory::create(sizeof(EngineControl));
    sd_bus *bus = nullptr;
    m_socket = m_process->takeSocket();
    m_inlet = ChannelInlet::create(m_socket);
    if (!control || !m_inlet || sd_bus_new(&bus) < 0) {
        ::close(m_socket);
        return false;
    }
    m_control = *control;
    m_bus.reset(bus);
    const int outlet = m_inlet->takeOutlet();
    if (sd_bus_set_fd(bus, outlet, m_socket) < 0) {
        ::close(outlet);
        ::close(m_socket);
        return false;
    }
    if (sd_bus_negotiate_fds(bus, 1) < 0 || sd_bus_set_anonymous(bus, 1) < 0 || sd_bus_start(bus) < 0)
        return false;
    // What no call asked for says that the helper is mad; without this, the library would answer some of it itself.
    const auto unasked = [](sd_bus_message *, void *channel, sd_bus_error *) {
        auto *self = static_cast<EngineChannel *>(channel);
        self->m_answer = Answer{self->deathBefore(), {}};
        return 1;
    };
    m_attach = newCall(engineBus::attach);
    return m_attach && sd_bus_add_filter(bus, nullptr, unasked, this) >= 0 &&
           append(m_attach.get(), BlockMessage{m_control->descriptor(), m_control->size()}) &&
           sd_bus_message_set_expect_reply(m_attach.get(), 0) >= 0;
}

BusMessage EngineChannel::newCall(const char *method)
{
    sd_bus_message *message = nullptr;
    if (m_bus)
        sd_bus_message_new_method_call(m_bus.get(), &message, nullptr, engineBus::path, engineBus::interface, method);
    return BusMessage(message);
}

bool EngineChannel::begin(BusMessage message, Limits limits)
{
    m_answer.reset();
    m_limits = limits;
    if (m_inlet)
        m_inlet->allow(limits.answerBytes);
    m_elapsed.start();
    m_cpuBefore = m_process ? m_process->cpuMilliseconds() : 0;
    m_call = std::move(message);
    return m_process && m_call && sendWaiting();
}

// Sends what waits for the helper's greeting: before it the library would block over a message with descriptors, for as
// long as the helper takes to start.
bool EngineChannel::sendWaiting()
{
    const int ready = sd_bus_is_ready(m_bus.get());
    if (ready <= 0)
        return ready == 0;
    if (m_attach && sd_bus_send(m_bus.get(), m_attach.get(), nullptr) < 0)
        return false;
    m_attach.reset();
    if (!m_call)
        return true;
    const auto received = [](sd_bus_message *reply, void *channel, sd_bus_error *) {
        auto *self = static_cast<EngineChannel *>(channel);
        // The helper answers no call with an error: that says that the connection is gone, or the helper mad.
        const bool isError = sd_bus_message_is_method_error(reply, nullptr) != 0;
        self->m_answer =
            isError ? Answer{self->deathBefore(), {}} : Answer{Ending::Answered, BusMessage(sd_bus_message_ref(reply))};
        return 1;
    };
    sd_bus_slot *slot = nullptr;
    if (sd_bus_call_async(m_bus.get(), &slot, m_call.get(), received, this, UINT64_MAX) < 0)
        return false;
    m_slot.reset(slot);
    m_call.reset();
    return true;
}

// Handles what has arrived, up to the answer; not for ever, whatever the helper sends.
void EngineChannel::pump()
{
    for (int i = 0; i < mostStepsAtOnce && m_bus && !m_answer; ++i) {
        const ChannelInlet::Passed passed = m_inlet->pass();
        if (passed == ChannelInlet::Passed::TooMuch) {
            logLine(QStringLiteral("a helper that sends more than its answer is ended"));
            m_answer = Answer{Ending::Died, {}};
            return;
        }
        if (!processPassed() && passed == ChannelInlet::Passed::Nothing)
            return;
    }
}

// Lets the library read and write. Whether it did.
bool EngineChannel::processPassed()
{
    bool hasProcessed = false;
    for (int status = 1; status > 0 && !m_answer; hasProcessed |= status > 0) {
        status = sd_bus_process(m_bus.get(), nullptr);
        if ((status < 0 || (status > 0 && !sendWaiting())) && !m_answer)
            m_answer = Answer{deathBefore(), {}};
    }
    return hasProcessed;
}

bool EngineChannel::hasOverrun()
{
    return m_elapsed.elapsed() > m_limits.wallMilliseconds ||
           m_process->cpuMilliseconds() - m_cpuBefore > m_limits.cpuMilliseconds;
}

void EngineChannel::end(Ending ending)
{
    m_answer = Answer{ending, {}};
    kill();
}

void EngineChannel::kill()
{
    m_readable.reset();
    m_writable.reset();
    m_watchdog.reset();
    m_done = nullptr;
    m_slot.reset();
    m_attach.reset();
    m_call.reset();
    m_process.reset();
    m_bus.reset();
    m_inlet.reset();
}

// What the end of the connection means.
EngineChannel::Ending EngineChannel::deathBefore() const
{
    const auto *control = reinterpret_cast<EngineControl *>(m_control->data());
    return std::atomic_ref<const quint32>(control->isReady).load() != 0 ? Ending::Died : Ending::NotStarted;
}

void EngineChannel::waitForSocket() const
{
    const int wanted = POLLIN | (sd_bus_get_events(m_bus.get()) & POLLOUT);
    pollfd socket{.fd = m_socket, .events = static_cast<short>(wanted), .revents = 0};
    (void)::poll(&socket, 1, watchMilliseconds); // after an interruption, the caller looks and waits again
}

EngineChannel::Answer EngineChannel::call(BusMessage message, Limits limits, const std::atomic<bool> *givenUp)
{
    if (!begin(std::move(message), limits))
        end(Ending::Died);
    while (!m_answer) {
        pump();
        if (m_answer)
            break;
        if (givenUp && *givenUp)
            end(Ending::GivenUp);
        else if (hasOverrun())
            end(Ending::Overran);
        else
            waitForSocket();
    }
    m_slot.reset();
    Answer answer = std::move(*std::exchange(m_answer, std::nullopt));
    if (answer.ending != Ending::Answered)
        kill();
    return answer;
}

void EngineChannel::send(BusMessage message, Limits limits, Done done)
{
    if (!m_watchdog) {
        m_watchdog.reset(new QTimer);
        QObject::connect(m_watchdog.get(), &QTimer::timeout, m_watchdog.get(), [this] { watch(); });
    }
    if (!m_readable && m_bus) {
        m_readable.reset(new QSocketNotifier(m_socket, QSocketNotifier::Read));
        m_writable.reset(new QSocketNotifier(m_socket, QSocketNotifier::Write));
        for (QSocketNotifier *notifier : {m_readable.get(), m_writable.get()})
            QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this] { watch(); });
    }
    m_done = std::move(done);
    if (!begin(std::move(message), limits))
        m_answer = Answer{};
    // An answer that is there already is given from the event loop, too.
    m_watchdog->start(m_answer ? 0 : watchMilliseconds);
    if (m_writable)
        m_writable->setEnabled(true);
}

void EngineChannel::watch()
{
    pump();
    if (m_writable)
        m_writable->setEnabled(m_bus && (sd_bus_get_events(m_bus.get()) & POLLOUT) != 0);
    if (m_done && !m_answer && hasOverrun())
        m_answer = Answer{Ending::Overran, {}};
    if (m_answer)
        finishSent();
}

void EngineChannel::finishSent()
{
    m_watchdog->stop();
    m_slot.reset();
    Answer answer = std::move(*std::exchange(m_answer, std::nullopt));
    const Done done = std::exchange(m_done, nullptr);
    if (answer.ending == Ending::Answered) {
        if (done)
            done(std::move(answer));
        return;
    }
    kill();
    if (done)
        done(std::move(answer));
}

void EngineChannel::cancelJob(quint32 job)
{
    std::atomic_ref(reinterpret_cast<EngineControl *>(m_control->data())->cancelledJob).store(job);
}

} // namespace inkory
