#pragma once

#include "platform/core/SharedMemory.h"
#include "platform/engine/ImageDecoder.h"
#include "platform/engine/PageDrawer.h"
#include "platform/engine/PageReader.h"
#include "platform/pdf/EngineMessages.h"

#include <functional>
#include <memory>

namespace inkory
{

/// The helper process's side of the messages: does what the window asks for, one call after the other, and answers. A
/// call that is not as it should be ends the process, as nothing good can come of it.
class EngineService
{
public:
    /// Answers calls that arrive at this socket, which it takes over, until the window is gone or a call is wrong.
    /// Before the first message is read, `lock` is called; it answers whether the process may go on.
    static bool serve(int socket, bool (*lock)());

private:
    struct Method;
    /// Only once it is attached.
    EngineControl &control() const;
    /// Whether the window has given up the job with this number meanwhile. Only once it is attached.
    std::function<bool()> cancellationOf(quint32 job) const;
    BusMessage answerTo(sd_bus_message *call);

    bool attach(sd_bus_message *call);
    bool open(sd_bus_message *call, sd_bus_message *reply);
    bool draw(sd_bus_message *call, sd_bus_message *reply);
    bool readText(sd_bus_message *call, sd_bus_message *reply);
    bool readLinks(sd_bus_message *call, sd_bus_message *reply);
    bool readOutline(sd_bus_message *call, sd_bus_message *reply);
    bool find(sd_bus_message *call, sd_bus_message *reply);
    bool survey(sd_bus_message *call, sd_bus_message *reply);
    bool write(sd_bus_message *call, sd_bus_message *reply);
    bool readImage(sd_bus_message *call, sd_bus_message *reply);
    bool takeImage(sd_bus_message *call, sd_bus_message *reply);

    std::shared_ptr<SharedMemory> m_control;
    std::shared_ptr<MappedFile> m_document; // outlives the drawer, which reads from it
    PageDrawer m_drawer;
    PageReader m_reader{m_drawer.document()};
    ImageDecoder m_images;
};

} // namespace inkory
