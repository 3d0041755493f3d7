#include "platform/engine/EngineService.h"

#include "platform/core/Log.h"
#include "platform/engine/QpdfWriter.h"
#include "platform/pdf/ReadingMessages.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <utility>

#include <systemd/sd-bus.h>
#include <unistd.h>

namespace inkory
{

namespace
{

constexpr qsizetype mostFileBytesKept = 32 << 20;

struct BusDeleter
{
    void operator()(sd_bus *bus) const { sd_bus_close_unref(bus); }
};

QByteArray bytesOf(const SecretBytes &secret)
{
    return QByteArray::fromRawData(secret.data(), secret.size());
}

// An image whose parts stand in the payload, which it keeps mapped.
ImagePtr unpacked(const WriteMessage::ImagePart &part, const std::shared_ptr<SharedMemory> &payload)
{
    uchar *data = payload->data() + part.offset;
    if (part.jpegSize > 0)
        return Image::fromParts({}, QSizeF(part.pixelSize),
                                QByteArray::fromRawData(reinterpret_cast<char *>(data), part.jpegSize));
    const qint64 bytesPerLine = imageBytes(part.pixelSize, part.format) / part.pixelSize.height();
    const QImage pixels(data, part.pixelSize.width(), part.pixelSize.height(), bytesPerLine, part.format);
    return Image::fromParts(pixels, QSizeF(part.pixelSize), {});
}

// From the file's beginning: a helper that died over the same task may have written to it.
bool writeAll(int descriptor, const QByteArray &bytes)
{
    for (qsizetype done = 0; done < bytes.size();) {
        const ssize_t written =
            ::pwrite(descriptor, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done), done);
        if (written < 0 && errno != EINTR)
            return false;
        done += std::max<ssize_t>(written, 0);
    }
    return true;
}

} // namespace

struct EngineService::Method
{
    const char *name;
    bool (EngineService::*perform)(sd_bus_message *call, sd_bus_message *reply);
};

bool EngineService::attach(sd_bus_message *call)
{
    const auto block = readBlock(call);
    const auto memory = block ? SharedMemory::open(block->descriptor, block->size) : Error{};
    if (!memory || (*memory)->size() < qint64(sizeof(EngineControl)))
        return false;
    m_control = *memory;
    std::atomic_ref(control().isReady).store(1);
    return true;
}

EngineControl &EngineService::control() const
{
    return *reinterpret_cast<EngineControl *>(m_control->data());
}

std::function<bool()> EngineService::cancellationOf(quint32 job) const
{
    return [this, job] { return std::atomic_ref(control().cancelledJob).load() == job; };
}

bool EngineService::open(sd_bus_message *call, sd_bus_message *reply)
{
    const auto message = readOpen(call);
    if (!message)
        return false;
    auto mapped = MappedFile::map(message->document.descriptor, message->document.size);
    if (!mapped)
        return append(reply, OpenReply());                  // the file has changed meanwhile: what there was is gone
    const auto former = std::exchange(m_document, *mapped); // the drawer reads from it until it has opened the next one
    const auto repair = message->isRepairedFirst ? PageDrawer::Repair::First : PageDrawer::Repair::IfNeeded;
    return append(reply, m_drawer.open(m_document->bytes(), bytesOf(message->document.password), repair));
}

bool EngineService::draw(sd_bus_message *call, sd_bus_message *reply)
{
    const auto message = readDraw(call);
    const auto memory = message ? SharedMemory::open(message->target.descriptor, message->target.size) : Error{};
    if (!memory || !m_control)
        return false;
    QImage target = imageInMemory(*memory, message->request.region.size(), QImage::Format_RGB32);
    const bool isDrawn = m_drawer.draw(message->request, target, cancellationOf(message->job));
    // A scan read from end to end would otherwise stand in each helper's memory as a whole.
    if (m_document && m_document->bytes().size() > mostFileBytesKept)
        m_document->forgetWhatWasRead();
    return append(reply, isDrawn);
}

bool EngineService::readText(sd_bus_message *call, sd_bus_message *reply)
{
    const auto message = readReadPage(call);
    return message && m_control && append(reply, m_reader.text(message->page, cancellationOf(message->job)));
}

bool EngineService::readLinks(sd_bus_message *call, sd_bus_message *reply)
{
    const auto message = readReadPage(call);
    return message && append(reply, m_reader.links(message->page));
}

bool EngineService::readOutline(sd_bus_message *call, sd_bus_message *reply)
{
    const auto message = readReadOutline(call);
    return message && m_control && append(reply, m_reader.outline(cancellationOf(message->job)));
}

bool EngineService::find(sd_bus_message *call, sd_bus_message *reply)
{
    const auto message = readFind(call);
    return message && m_control && append(reply, m_reader.find(message->request, cancellationOf(message->job)));
}

bool EngineService::survey(sd_bus_message *call, sd_bus_message *reply)
{
    const auto message = readDocument(call);
    if (!message)
        return false;
    Survey survey;
    survey.structure.problem = WriteProblem::Damaged;
    if (const auto mapped = MappedFile::map(message->descriptor, message->size)) {
        const QByteArray password = bytesOf(message->password);
        survey.structure = readStructure((*mapped)->bytes(), password);
        PageDrawer drawer;
        if (drawer.open((*mapped)->bytes(), password, PageDrawer::Repair::IfNeeded).problem == OpenProblem::None)
            survey.drawnSizes = drawer.measureAllPages();
    }
    return append(reply, survey);
}

bool EngineService::write(sd_bus_message *call, sd_bus_message *reply)
{
    const auto message = readWrite(call);
    const auto payload = message ? SharedMemory::open(message->payload.descriptor, message->payload.size) : Error{};
    if (!payload)
        return false;
    WriteRequest request{message->pages,
                         QByteArray::fromRawData(reinterpret_cast<char *>((*payload)->data()), message->overlaysSize),
                         {}};
    for (const WriteMessage::ImagePart &part : message->images)
        request.images.push_back(unpacked(part, *payload));
    const auto mapped = MappedFile::map(message->document.descriptor, message->document.size);
    if (!mapped)
        return append(reply, WriteReply());
    const WrittenDocument written = writeDocument((*mapped)->bytes(), bytesOf(message->document.password), request);
    if (written.problem != WriteProblem::None || !writeAll(message->outputDescriptor, written.bytes))
        return append(reply,
                      WriteReply{written.problem == WriteProblem::None ? WriteProblem::NotBuilt : written.problem, 0});
    return append(reply, WriteReply{WriteProblem::None, written.bytes.size()});
}

bool EngineService::readImage(sd_bus_message *call, sd_bus_message *reply)
{
    const auto file = readBlock(call);
    if (!file)
        return false;
    const auto mapped = MappedFile::map(file->descriptor, file->size);
    return append(reply, mapped ? m_images.read((*mapped)->bytes()) : ImageReply());
}

bool EngineService::takeImage(sd_bus_message *call, sd_bus_message *reply)
{
    const auto block = readBlock(call);
    const auto memory = block ? SharedMemory::open(block->descriptor, block->size) : Error{};
    if (!memory)
        return false;
    const QImage &pixels = m_images.pixels();
    const QByteArray &jpeg = m_images.jpegBytes();
    QImage target = imageInMemory(*memory, pixels.size(), pixels.format());
    const qint64 pixelBytes = imageBytes(pixels.size(), pixels.format());
    if (target.isNull() || pixelBytes + jpeg.size() > (*memory)->size())
        return append(reply, false);
    for (int y = 0; y < pixels.height(); ++y)
        std::copy_n(pixels.constScanLine(y), pixels.bytesPerLine(), target.scanLine(y));
    std::copy_n(jpeg.constData(), jpeg.size(), (*memory)->data() + pixelBytes);
    return append(reply, true);
}

BusMessage EngineService::answerTo(sd_bus_message *call)
{
    static constexpr Method methods[] = {{engineBus::open, &EngineService::open},
                                         {engineBus::draw, &EngineService::draw},
                                         {engineBus::readText, &EngineService::readText},
                                         {engineBus::readLinks, &EngineService::readLinks},
                                         {engineBus::readOutline, &EngineService::readOutline},
                                         {engineBus::find, &EngineService::find},
                                         {engineBus::survey, &EngineService::survey},
                                         {engineBus::write, &EngineService::write},
                                         {engineBus::readImage, &EngineService::readImage},
                                         {engineBus::takeImage, &EngineService::takeImage}};
    for (const Method &method : methods) {
        if (sd_bus_message_is_method_call(call, engineBus::interface, method.name) <= 0)
            continue;
        sd_bus_message *answer = nullptr;
        if (sd_bus_message_new_method_return(call, &answer) < 0)
            return nullptr;
        BusMessage reply(answer);
        return (this->*method.perform)(call, answer) ? std::move(reply) : nullptr;
    }
    return nullptr;
}

bool EngineService::serve(int socket, bool (*lock)())
{
    EngineService service;
    bool isInOrder = true;
    struct State
    {
        EngineService &service;
        bool &isInOrder;
    } state{service, isInOrder};
    const auto handle = [](sd_bus_message *message, void *data, sd_bus_error *) {
        const auto &[self, inOrder] = *static_cast<State *>(data);
        if (sd_bus_message_is_method_call(message, engineBus::interface, engineBus::attach) > 0) {
            inOrder = self.attach(message);
            return 1;
        }
        const BusMessage reply = self.answerTo(message);
        inOrder = reply && sd_bus_send(nullptr, reply.get(), nullptr) >= 0;
        return 1;
    };
    sd_bus *made = nullptr;
    if (sd_bus_new(&made) < 0)
        return false;
    const std::unique_ptr<sd_bus, BusDeleter> bus(made);
    sd_id128_t id{};
    if (sd_id128_randomize(&id) < 0 || sd_bus_set_fd(made, socket, socket) < 0 || sd_bus_set_server(made, 1, id) < 0 ||
        sd_bus_set_anonymous(made, 1) < 0 || sd_bus_negotiate_fds(made, 1) < 0 ||
        sd_bus_add_object(made, nullptr, engineBus::path, handle, &state) < 0 || sd_bus_start(made) < 0 || !lock())
        return false;
    while (isInOrder) {
        const int status = sd_bus_process(made, nullptr);
        if (status < 0)
            return true; // the window is gone
        if (status > 0)
            continue;
        if (const int waited = sd_bus_wait(made, UINT64_MAX); waited < 0 && waited != -EINTR)
            return false;
    }
    logLine(QStringLiteral("a message from the window is not as it should be"));
    return false;
}

} // namespace inkory
