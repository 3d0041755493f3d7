#include "platform/pdf/DocumentWriter.h"

#include "platform/core/Log.h"
#include "platform/core/SharedMemory.h"
#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/EngineChannel.h"
#include "platform/pdf/ProblemSentences.h"

#include <QCoreApplication>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace inkory
{

namespace
{

using Ending = EngineChannel::Ending;

// Ten thousand pages take a second; no document that people sign comes near these.
// Eleven numbers for each page.
constexpr EngineChannel::Limits surveyLimits{30'000, 60'000, 16LL << 20};
constexpr EngineChannel::Limits writeLimits{120'000, 300'000};
constexpr qint64 rowAlignment = 16;
constexpr int mostAttempts = 2;
// What a new document may be larger than its parts would explain.
constexpr qint64 spareBytes = 64LL << 20;

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(DocumentWriter)
};

Error cannotBuild()
{
    return {sentenceFor(WriteProblem::NotBuilt)};
}

/// A file in memory that the engine fills.
class MemoryFile
{
public:
    MemoryFile() : m_descriptor(::memfd_create("document", MFD_CLOEXEC)) {}
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;
    ~MemoryFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    int descriptor() const { return m_descriptor; }

    /// Its first bytes; nothing if it is shorter, or if there are more than `most` of them.
    QByteArray read(qint64 size, qint64 most) const
    {
        struct stat status = {};
        if (::fstat(m_descriptor, &status) != 0 || size > status.st_size || size > most)
            return {};
        QByteArray bytes(size, Qt::Uninitialized);
        for (qint64 done = 0; done < size;) {
            const ssize_t got = ::pread(m_descriptor, bytes.data() + done, static_cast<std::size_t>(size - done), done);
            if (got == 0 || (got < 0 && errno != EINTR))
                return {};
            done += std::max<ssize_t>(got, 0);
        }
        return bytes;
    }

private:
    int m_descriptor;
};

// Puts the overlays and what the images consist of into one block.
std::shared_ptr<SharedMemory> packed(const WriteRequest &request, WriteMessage &message)
{
    const auto aligned = [](qint64 offset) { return (offset + rowAlignment - 1) / rowAlignment * rowAlignment; };
    qint64 end = request.overlays.size();
    message.overlaysSize = end;
    for (const ImagePtr &image : request.images) {
        const QImage &pixels = image->pixels();
        const qint64 jpegSize = image->jpegBytes().size();
        message.images.push_back({pixels.size(), pixels.format(), aligned(end), jpegSize});
        end = aligned(end) + (jpegSize > 0 ? jpegSize : pixels.sizeInBytes());
    }
    auto memory = SharedMemory::create(std::max<qint64>(end, 1));
    if (!memory)
        return nullptr;
    uchar *data = (*memory)->data();
    std::copy_n(request.overlays.constData(), request.overlays.size(), data);
    for (std::size_t i = 0; i < request.images.size(); ++i) {
        const Image &image = *request.images[i];
        const QByteArray &jpeg = image.jpegBytes();
        if (jpeg.isEmpty())
            std::copy_n(image.pixels().constBits(), image.pixels().sizeInBytes(), data + message.images[i].offset);
        else
            std::copy_n(jpeg.constData(), jpeg.size(), data + message.images[i].offset);
    }
    message.payload = {(*memory)->descriptor(), (*memory)->size()};
    return *memory;
}

// Asks a new helper, and another one if that one dies: it may have died of something else than the document.
template <class Message>
EngineChannel::Answer ask(const char *method, const Message &message, qint64 addressSpace, EngineChannel::Limits limits,
                          const std::atomic<bool> *givenUp = nullptr)
{
    EngineChannel::Answer answer{Ending::NotStarted, {}};
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        auto channel = EngineChannel::start(EngineKind::Documents);
        if (!channel)
            continue;
        (*channel)->process().allowAddressSpaceFor(addressSpace);
        BusMessage call = (*channel)->newCall(method);
        if (!call || !append(call.get(), message))
            break;
        answer = (*channel)->call(std::move(call), limits, givenUp);
        if (answer.ending != Ending::Died && answer.ending != Ending::NotStarted)
            break;
    }
    return answer;
}

// Answers the size of what stands in the output.
Result<qint64> write(const WriteMessage &message)
{
    // The document is read twice (once more to check the result), and the result stands beside the original for a
    // while.
    const qint64 addressSpace = 3 * message.document.size + 3 * message.payload.size;
    const EngineChannel::Answer answer = ask(engineBus::write, message, addressSpace, writeLimits);
    if (answer.ending == Ending::NotStarted)
        return Error{Text::tr("The part of Inkory that writes PDF documents could not be started. Try again; if that "
                              "does not help, install Inkory again.")};
    if (answer.ending == Ending::Overran)
        return Error{Text::tr("The changed document could not be built: that takes too long.")};
    const auto reply = answer.message ? readWriteReply(answer.message.get()) : std::nullopt;
    if (!reply)
        return cannotBuild();
    if (reply->problem != WriteProblem::None)
        return Error{sentenceFor(reply->problem)};
    return reply->size;
}

} // namespace

SurveyOutcome surveyDocument(const DocumentFile &file, const SecretBytes &password, const std::atomic<bool> &givenUp)
{
    const auto [descriptor, size] = file.content();
    const EngineChannel::Answer answer =
        ask(engineBus::survey, DocumentMessage{descriptor, size, password}, 2 * size, surveyLimits, &givenUp);
    auto survey = answer.message ? readSurvey(answer.message.get()) : std::nullopt;
    if (survey)
        return {{}, std::move(*survey)};
    if (answer.ending == Ending::Overran)
        return {Text::tr("This document can only be read: finding out whether it can be changed takes too long."), {}};
    return {
        Text::tr("This document can only be read: finding out whether it can be changed failed. Close it and open it "
                 "again, or ask its sender for a new copy."),
        {}};
}

Result<QByteArray> writeChangedDocument(const DocumentFile &file, const SecretBytes &password,
                                        const WriteRequest &request)
{
    WriteMessage message;
    message.document = {file.content().descriptor, file.content().size, password};
    message.pages = request.pages;
    const auto payload = packed(request, message);
    const MemoryFile output;
    message.outputDescriptor = output.descriptor();
    if (!payload || output.descriptor() < 0) {
        logLine(QStringLiteral("no memory for a save: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
        return Error{Text::tr("There is not enough memory to save the document.")};
    }
    const Result<qint64> size = write(message);
    if (!size)
        return size.error();
    const qint64 mostPlausible = 3 * (message.document.size + message.payload.size) + spareBytes;
    const QByteArray bytes = output.read(*size, std::min<qint64>(mostPlausible, maxFileSize));
    if (bytes.isEmpty())
        return cannotBuild();
    return bytes;
}

} // namespace inkory
