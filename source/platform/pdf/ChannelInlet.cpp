#include "platform/pdf/ChannelInlet.h"

#include <array>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace inkory
{

namespace
{

// Well within what a socket holds unread, however small a system makes it.
constexpr std::size_t mostPassedAtOnce = 16 << 10;

} // namespace

std::unique_ptr<ChannelInlet> ChannelInlet::create(int socket)
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
        return nullptr;
    return std::unique_ptr<ChannelInlet>(new ChannelInlet(socket, ends[0], ends[1]));
}

ChannelInlet::~ChannelInlet()
{
    ::close(m_inlet);
    if (m_outlet >= 0)
        ::close(m_outlet);
}

int ChannelInlet::takeOutlet()
{
    return std::exchange(m_outlet, -1);
}

ChannelInlet::Passed ChannelInlet::pass()
{
    std::array<char, mostPassedAtOnce> bytes; // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    const ssize_t count = ::recv(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count < 0)
        return Passed::Nothing;
    if (count == 0) {
        ::shutdown(m_inlet, SHUT_WR);
        return Passed::Nothing;
    }
    m_allowed -= count;
    if (m_allowed < 0 || ::send(m_inlet, bytes.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL) != count)
        return Passed::TooMuch;
    return Passed::Something;
}

} // namespace inkory
