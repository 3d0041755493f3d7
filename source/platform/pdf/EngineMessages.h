#pragma once

#include "platform/core/SecretBytes.h"
#include "platform/pdf/EngineValues.h"

#include <memory>
#include <optional>
#include <vector>

struct sd_bus_message;

// The messages between the window's process and its engine's: D-Bus messages over a socket pair, one call and one
// answer each. Appending answers false when the message cannot be built. Reading takes the whole content of a received
// message and answers nothing for one that has another signature or values that the types do not promise; descriptors
// belong to the message. Both ends check: the engine may be in the hands of the file it reads.

namespace inkory
{

struct BusMessageDeleter
{
    void operator()(sd_bus_message *message) const;
};
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageDeleter>;

namespace engineBus
{

inline constexpr const char *path = "/engine";
inline constexpr const char *interface = "io.github.inkory.Engine";

/// Hands over the memory with an EngineControl, once. No answer.
inline constexpr const char *attach = "Attach";
/// Opens a document for drawing: DocumentMessage and whether to repair it first; OpenReply.
inline constexpr const char *open = "Open";
/// DrawMessage; whether the page was drawn.
inline constexpr const char *draw = "Draw";
/// What both libraries think of a document: DocumentMessage; Survey.
inline constexpr const char *survey = "Survey";
/// WriteMessage; WriteReply.
inline constexpr const char *write = "Write";
/// ImageFileMessage; ImageReply. The pixels are kept for the next call.
inline constexpr const char *readImage = "ReadImage";
/// Puts the pixels, and behind them the JPEG bytes, of the image read last into memory; whether it could.
inline constexpr const char *takeImage = "TakeImage";

} // namespace engineBus

/// What the two processes tell each other without messages, in memory that both see.
struct EngineControl
{
    /// Written by the window: the number of the drawing job that is to be given up.
    quint32 cancelledJob = 0;
    /// Written by the helper: not 0 once it has locked itself up and listens.
    quint32 isReady = 0;
};

/// A document on its way into the engine.
struct DocumentMessage
{
    int descriptor = -1;
    qint64 size = 0;
    SecretBytes password;
};

/// A block of shared memory, or a file, on its way into the engine.
struct BlockMessage
{
    int descriptor = -1;
    qint64 size = 0;
};

struct OpenMessage
{
    DocumentMessage document;
    bool isRepairedFirst = false;
};

struct DrawMessage
{
    quint32 job = 0;
    DrawRequest request;
    /// Where the pixels go: at least as many bytes as the region has in RGB32.
    BlockMessage target;
};

/// What the two libraries say about a document.
struct Survey
{
    FileStructure structure;
    /// The pages' sizes as the drawing library shows them, in points: also absurd ones, and empty ones for pages that
    /// it cannot find. None if it cannot open the document.
    std::vector<QSizeF> drawnSizes;
};

struct WriteMessage
{
    DocumentMessage document;
    std::vector<WritePage> pages;
    /// The overlays' bytes, and behind them what the images consist of.
    BlockMessage payload;
    qint64 overlaysSize = 0;
    struct ImagePart
    {
        QSize pixelSize;
        QImage::Format format = QImage::Format_Invalid;
        /// Where its pixels (as imageBytes() counts them) or, where jpegSize is not 0, its JPEG bytes stand in the
        /// payload.
        qint64 offset = 0;
        qint64 jpegSize = 0;
    };
    std::vector<ImagePart> images;
    /// A file without content, for the new document.
    int outputDescriptor = -1;
};

struct WriteReply
{
    WriteProblem problem = WriteProblem::NotBuilt;
    /// Of what stands in the output; 0 unless the problem is None.
    qint64 size = 0;
};

bool append(sd_bus_message *message, const BlockMessage &block);
bool append(sd_bus_message *message, const OpenMessage &open);
bool append(sd_bus_message *message, const OpenReply &reply);
bool append(sd_bus_message *message, const DrawMessage &draw);
bool append(sd_bus_message *message, bool answer);
bool append(sd_bus_message *message, const DocumentMessage &document);
bool append(sd_bus_message *message, const Survey &survey);
bool append(sd_bus_message *message, const WriteMessage &write);
bool append(sd_bus_message *message, const WriteReply &reply);
bool append(sd_bus_message *message, const ImageReply &reply);

std::optional<BlockMessage> readBlock(sd_bus_message *message);
std::optional<OpenMessage> readOpen(sd_bus_message *message);
std::optional<OpenReply> readOpenReply(sd_bus_message *message);
std::optional<DrawMessage> readDraw(sd_bus_message *message);
std::optional<bool> readBool(sd_bus_message *message);
std::optional<DocumentMessage> readDocument(sd_bus_message *message);
std::optional<Survey> readSurvey(sd_bus_message *message);
std::optional<WriteMessage> readWrite(sd_bus_message *message);
std::optional<WriteReply> readWriteReply(sd_bus_message *message);
std::optional<ImageReply> readImageReply(sd_bus_message *message);

} // namespace inkory
