#pragma once

#include "Fuzzing.h"
#include "platform/pdf/EngineMessages.h"

#include <array>

#include <sys/socket.h>
#include <systemd/sd-bus.h>

namespace inkory::fuzz
{

/// A bus that leads nowhere: messages can be made and read all the same.
inline sd_bus *bus()
{
    static sd_bus *instance = [] {
        std::array<int, 2> ends{};
        sd_bus *made = nullptr;
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0 && sd_bus_new(&made) >= 0 &&
                    sd_bus_set_fd(made, ends[0], ends[0]) >= 0 && sd_bus_start(made) >= 0,
                "there is a bus");
        return made;
    }();
    return instance;
}

inline BusMessage newMessage()
{
    sd_bus_message *message = nullptr;
    require(sd_bus_message_new_method_call(bus(), &message, nullptr, engineBus::path, engineBus::interface,
                                           engineBus::draw) >= 0,
            "messages can be made");
    return BusMessage(message);
}

inline void seal(sd_bus_message *message)
{
    require(sd_bus_message_seal(message, 1, 0) >= 0, "messages can be sealed");
}

} // namespace inkory::fuzz
