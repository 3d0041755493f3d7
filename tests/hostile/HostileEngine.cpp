// A helper in the wrong hands, in the place of inkory-engine beside the test program: answers the first job with what
// INKORY_HOSTILITY says.

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include <systemd/sd-bus.h>
#include <unistd.h>

namespace
{

constexpr int socketToWindow = 3;
constexpr std::size_t hugeSize = 64U << 20;

void answerHugely(sd_bus_message *call)
{
    const std::vector<std::uint8_t> bytes(hugeSize);
    sd_bus_message *reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_append_array(reply, 'y', bytes.data(), bytes.size());
    sd_bus_send(nullptr, reply, nullptr);
    sd_bus_message_unref(reply);
    sd_bus_flush(sd_bus_message_get_bus(call));
}

// The beginning of an answer of 64 MiB, whose rest comes byte by byte, faster than anybody reads it.
void answerWithoutEnd()
{
    std::array<std::uint8_t, 16> header{'l', 2, 0, 1};
    const std::uint32_t bodySize = hugeSize;
    std::memcpy(&header[4], &bodySize, sizeof bodySize);
    header[8] = 9;   // serial
    header[12] = 64; // bytes of header fields
    const std::uint8_t piece = 0;
    for (ssize_t sent = write(socketToWindow, header.data(), header.size()); sent > 0;
         sent = write(socketToWindow, &piece, sizeof piece)) {
    }
}

void callTheWindow(sd_bus_message *call)
{
    sd_bus_call_method_async(sd_bus_message_get_bus(call), nullptr, nullptr, "/", "org.freedesktop.DBus.Peer",
                             "GetMachineId", nullptr, nullptr, nullptr);
}

int answer(sd_bus_message *call, void * /*unused*/, sd_bus_error * /*unused*/)
{
    const char *hostility = std::getenv("INKORY_HOSTILITY");
    const std::string_view how = hostility ? hostility : "";
    if (sd_bus_message_is_method_call(call, nullptr, "Attach") > 0)
        return 1;
    if (how == "huge")
        answerHugely(call);
    else if (how == "endless")
        answerWithoutEnd();
    else if (how == "unasked")
        callTheWindow(call);
    return 1;
}

} // namespace

int main()
{
    sd_bus *bus = nullptr;
    if (sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, socketToWindow, socketToWindow) < 0 ||
        sd_bus_set_server(bus, 1, SD_ID128_MAKE(01, 23, 45, 67, 89, ab, cd, ef, 01, 23, 45, 67, 89, ab, cd, ef)) < 0 ||
        sd_bus_set_anonymous(bus, 1) < 0 || sd_bus_negotiate_fds(bus, 1) < 0 ||
        sd_bus_add_object(bus, nullptr, "/engine", answer, nullptr) < 0 || sd_bus_start(bus) < 0)
        return EXIT_FAILURE;
    while (sd_bus_process(bus, nullptr) >= 0)
        sd_bus_wait(bus, UINT64_MAX);
    return EXIT_SUCCESS;
}
