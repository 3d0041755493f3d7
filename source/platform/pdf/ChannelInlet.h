#pragma once

#include <QtGlobal>

#include <memory>

namespace inkory
{

/// Stands between a helper's socket and the bus library and passes on no more bytes than the helper may send. The
/// library reads from a socket for as long as there is something in it, whatever length a message claims: before a
/// helper that never stops, it would never come back. Used on one thread.
class ChannelInlet
{
public:
    enum class Passed { Nothing, Something, TooMuch };

    /// Reads from the helper's socket, which stays the caller's and outlives this. None when the system is out of
    /// descriptors.
    static std::unique_ptr<ChannelInlet> create(int socket);
    ChannelInlet(const ChannelInlet &) = delete;
    ChannelInlet &operator=(const ChannelInlet &) = delete;
    ~ChannelInlet();

    /// The socket that the library reads from. The caller closes it; once.
    int takeOutlet();

    /// How many bytes may come from now on.
    void allow(qint64 bytes) { m_allowed = bytes; }

    /// Passes on some of what has arrived, without waiting. The end of the helper's bytes is passed on as an end.
    /// TooMuch when more came than is allowed, or than the library has taken.
    Passed pass();

private:
    ChannelInlet(int socket, int inlet, int outlet) : m_socket(socket), m_inlet(inlet), m_outlet(outlet) {}

    int m_socket;
    int m_inlet;
    int m_outlet;
    qint64 m_allowed = 0;
};

} // namespace inkory
