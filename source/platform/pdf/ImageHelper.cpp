#include "platform/pdf/ImageHelper.h"

#include "platform/core/SharedMemory.h"
#include "platform/pdf/EngineChannel.h"
#include "platform/pdf/ImageFile.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace inkory
{

namespace
{

using Ending = EngineChannel::Ending;

// The slowest picture that is read takes a second; somebody may be waiting.
constexpr EngineChannel::Limits readLimits{8'000, 15'000};
constexpr EngineChannel::Limits takeLimits{2'000, 5'000};
constexpr int idleMilliseconds = 5'000;
constexpr std::size_t mostIdle = 2;
// A helper may also die of something else than its image.
constexpr int mostAttempts = 2;

/// The helpers that nobody uses at the moment.
struct IdleHelpers
{
    std::mutex mutex;
    std::vector<std::unique_ptr<EngineChannel>> channels;
    int uses = 0; // counts, so that helpers go only when none was used for a while
};

IdleHelpers &idleHelpers()
{
    static IdleHelpers theHelpers;
    return theHelpers;
}

// An idle one may have died unseen, so the second attempt gets a new one.
Result<std::unique_ptr<EngineChannel>> takeHelper(int attempt)
{
    IdleHelpers &idle = idleHelpers();
    {
        const std::lock_guard lock(idle.mutex);
        ++idle.uses;
        if (attempt == 0 && !idle.channels.empty()) {
            auto channel = std::move(idle.channels.back());
            idle.channels.pop_back();
            return channel;
        }
    }
    return EngineChannel::start(EngineKind::Images);
}

void dropUnlessUsedSince(int uses)
{
    IdleHelpers &idle = idleHelpers();
    const std::lock_guard lock(idle.mutex);
    if (idle.uses == uses)
        idle.channels.clear();
}

void giveBack(std::unique_ptr<EngineChannel> channel)
{
    IdleHelpers &idle = idleHelpers();
    const std::lock_guard lock(idle.mutex);
    if (!channel->isAlive() || idle.channels.size() >= mostIdle || !QCoreApplication::instance())
        return;
    idle.channels.push_back(std::move(channel));
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [uses = idle.uses] { QTimer::singleShot(idleMilliseconds, [uses] { dropUnlessUsedSince(uses); }); },
        Qt::QueuedConnection);
}

std::optional<ImageReply> read(EngineChannel &channel, int descriptor, qint64 size, Ending &ending)
{
    channel.process().allowAddressSpaceFor(size);
    BusMessage call = channel.newCall(engineBus::readImage);
    if (!call || !append(call.get(), BlockMessage{descriptor, size}))
        return std::nullopt;
    const EngineChannel::Answer answer = channel.call(std::move(call), readLimits);
    ending = answer.ending;
    if (ending == Ending::Overran)
        return ImageReply{};
    return answer.message ? readImageReply(answer.message.get()) : std::nullopt;
}

// The image that the helper has read, by way of the memory. None if the helper is to be given up.
ImagePtr take(EngineChannel &channel, const ImageReply &reply, const std::shared_ptr<SharedMemory> &memory)
{
    BusMessage call = channel.newCall(engineBus::takeImage);
    if (!call || !append(call.get(), BlockMessage{memory->descriptor(), memory->size()}))
        return nullptr;
    const EngineChannel::Answer answer = channel.call(std::move(call), takeLimits);
    if (!answer.message || !readBool(answer.message.get()).value_or(false))
        return nullptr;
    const QImage shared = imageInMemory(memory, reply.pixelSize, reply.format);
    const qint64 pixelBytes = imageBytes(reply.pixelSize, reply.format);
    const auto *jpeg = reinterpret_cast<const char *>(memory->data() + pixelBytes);
    // Copied: what belongs to the person's signature is not left where the helper could still reach it.
    return Image::fromParts(shared.copy(), reply.size, QByteArray(jpeg, reply.jpegSize));
}

} // namespace

Result<ImagePtr> decodeInHelper(int descriptor, qint64 size)
{
    Ending ending = Ending::NotStarted;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        auto channel = takeHelper(attempt);
        if (!channel)
            return channel.error();
        const auto reply = read(**channel, descriptor, size, ending);
        if (!reply || reply->jpegSize > size)
            continue;
        if (reply->problem != ImageProblem::None) {
            giveBack(std::move(*channel));
            return Error{sentenceFor(*reply)};
        }
        const auto memory = SharedMemory::create(imageBytes(reply->pixelSize, reply->format) + reply->jpegSize);
        if (!memory)
            return Error{QCoreApplication::translate("ImageFile", "There is not enough memory to read the image.")};
        if (ImagePtr image = take(**channel, *reply, *memory)) {
            giveBack(std::move(*channel));
            return image;
        }
    }
    if (ending == Ending::NotStarted)
        return Error{QCoreApplication::translate("ImageFile",
                                                 "The part of Inkory that reads images could not be started. "
                                                 "Installing Inkory again may help.")};
    return Error{sentenceFor(ImageReply{})};
}

void dropImageHelpers()
{
    IdleHelpers &idle = idleHelpers();
    const std::lock_guard lock(idle.mutex);
    idle.channels.clear();
}

} // namespace inkory
