#pragma once

#include "platform/core/Result.h"

#include <QtGlobal>

#include <memory>
#include <utility>

namespace inkory
{

/// What a helper process is for: this decides what it may still read once it has locked itself up.
enum class EngineKind { Documents, Images };

/// One helper process and our end of the socket to it. Killed when this object goes: what it does then is of no use to
/// anybody. May be used on any thread, one at a time; nothing here blocks.
class EngineProcess
{
public:
    /// Starts a helper, or takes the spare one. What is sent through the socket meanwhile waits for it; where no
    /// process could be started, the socket is closed from the other side.
    static Result<std::unique_ptr<EngineProcess>> start(EngineKind kind);

    /// Sees to it that a helper for documents is ready for the next start(), and, a moment after it was taken, for the
    /// one after that.
    static void prepareSpare();
    /// Before the process ends, and where no helper is to be left over.
    static void dropSpare();

    EngineProcess(const EngineProcess &) = delete;
    EngineProcess &operator=(const EngineProcess &) = delete;
    ~EngineProcess();

    /// Our end of the socket; given away.
    int takeSocket();

    /// How long it has computed so far.
    qint64 cpuMilliseconds() const;

    /// Memory that is its own, not shared with anybody, in bytes; 0 where the system does not tell.
    qint64 privateMemory() const;

    /// Lets it have that much more address space than it has for itself: for documents and buffers that it is given.
    void allowAddressSpaceFor(qint64 bytes);

private:
    struct Life;

    EngineProcess(std::shared_ptr<Life> life, int socket) : m_life(std::move(life)), m_socket(socket) {}
    static Result<std::unique_ptr<EngineProcess>> spawn(EngineKind kind);
    static void fillSpare();
    static void refillSpareLater();
    bool hasEnded() const;

    std::shared_ptr<Life> m_life; // shared with the thread that starts it and waits for its end
    int m_socket;
};

} // namespace inkory
