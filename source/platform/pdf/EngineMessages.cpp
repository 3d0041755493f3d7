#include "platform/pdf/EngineMessages.h"

#include "platform/core/SharedMemory.h"
#include "platform/pdf/BusValues.h"
#include "platform/pdf/WritePageMessages.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include <systemd/sd-bus.h>

namespace inkory
{

namespace
{

constexpr const char *documentSignature = "hxay";
constexpr int numbersPerPage = 9;
constexpr int numbersPerImage = 5;
constexpr std::size_t mostImages = 100'000;

std::vector<double> numbersOf(const std::vector<PageGeometry> &pages)
{
    std::vector<double> numbers;
    numbers.reserve(pages.size() * numbersPerPage);
    for (const PageGeometry &page : pages) {
        for (const PageRect &box : {page.mediaBox, page.cropBox})
            numbers.insert(numbers.end(), {box.x, box.y, box.width, box.height});
        numbers.push_back(page.rotation);
    }
    return numbers;
}

bool isBox(const PageRect &box)
{
    return isWithin(box.x, farthest) && isWithin(box.y, farthest) && box.width >= minPageSide &&
           box.height >= minPageSide && box.width <= maxPageSide && box.height <= maxPageSide;
}

bool isInside(const PageRect &inner, const PageRect &outer)
{
    constexpr double rounding = 1e-3; // of the farthest coordinates
    return inner.x >= outer.x - rounding && inner.y >= outer.y - rounding && inner.maxX() <= outer.maxX() + rounding &&
           inner.maxY() <= outer.maxY() + rounding;
}

std::optional<std::vector<PageGeometry>> pagesFrom(std::span<const double> numbers)
{
    if (numbers.size() % numbersPerPage != 0 || numbers.size() / numbersPerPage > maxPageCount)
        return std::nullopt;
    std::vector<PageGeometry> pages;
    pages.reserve(numbers.size() / numbersPerPage);
    for (std::size_t i = 0; i < numbers.size(); i += numbersPerPage) {
        const auto n = numbers.subspan(i, numbersPerPage);
        PageGeometry page{{n[0], n[1], n[2], n[3]}, {n[4], n[5], n[6], n[7]}, 0};
        if (!isBox(page.mediaBox) || !isBox(page.cropBox) || !isInside(page.cropBox, page.mediaBox) ||
            !isWithin(n[8], 270) || normalizedRotation(static_cast<int>(n[8])) != n[8])
            return std::nullopt;
        page.rotation = static_cast<int>(n[8]);
        pages.push_back(page);
    }
    return pages;
}

bool appendStructure(sd_bus_message *message, const FileStructure &structure)
{
    return appended(sd_bus_message_append(message, "ib", static_cast<qint32>(structure.problem),
                                          static_cast<int>(structure.isRepaired))) &&
           appendArray(message, 'd', numbersOf(structure.pages));
}

std::optional<FileStructure> readStructure(sd_bus_message *message)
{
    qint32 problem = 0;
    int isRepaired = 0;
    std::span<const double> numbers;
    if (sd_bus_message_read(message, "ib", &problem, &isRepaired) < 0 || !readArray(message, 'd', numbers))
        return std::nullopt;
    const auto known = enumFromInt<WriteProblem>(problem);
    auto pages = pagesFrom(numbers);
    if (!known || !pages)
        return std::nullopt;
    return FileStructure{*known, isRepaired != 0, std::move(*pages)};
}

// The last part of a message: it is wiped when it is freed, but not what is left behind where it has to grow.
bool appendDocument(sd_bus_message *message, const DocumentMessage &document)
{
    (void)sd_bus_message_sensitive(message);
    return appended(sd_bus_message_append(message, "hx", document.descriptor, static_cast<int64_t>(document.size))) &&
           appended(sd_bus_message_append_array(message, 'y', document.password.data(),
                                                static_cast<std::size_t>(document.password.size())));
}

std::optional<DocumentMessage> readDocumentPart(sd_bus_message *message)
{
    (void)sd_bus_message_sensitive(message);
    DocumentMessage document;
    int64_t size = 0;
    std::span<const char> password;
    if (sd_bus_message_read(message, "hx", &document.descriptor, &size) < 0 || size <= 0 ||
        !readArray(message, 'y', password))
        return std::nullopt;
    document.size = size;
    document.password = SecretBytes(QByteArray(password.data(), static_cast<qsizetype>(password.size())));
    return document;
}

std::optional<QImage::Format> pixelFormat(qint64 value)
{
    for (const QImage::Format format : {QImage::Format_Grayscale8, QImage::Format_RGB32, QImage::Format_ARGB32})
        if (value == format)
            return format;
    return std::nullopt;
}

bool isImageSide(qint64 side)
{
    constexpr qint64 longest = 32'767;
    return side > 0 && side <= longest;
}

// Whether the part lies in the payload, behind the overlays.
bool isInPayload(const WriteMessage &write, const WriteMessage::ImagePart &part)
{
    const qint64 length = part.jpegSize > 0 ? part.jpegSize : imageBytes(part.pixelSize, part.format);
    return part.jpegSize >= 0 && part.offset >= write.overlaysSize && part.offset <= write.payload.size &&
           length <= write.payload.size - part.offset;
}

bool readImageParts(std::span<const qint64> numbers, WriteMessage &write)
{
    if (numbers.size() % numbersPerImage != 0 || numbers.size() / numbersPerImage > mostImages)
        return false;
    for (std::size_t i = 0; i < numbers.size(); i += numbersPerImage) {
        const auto n = numbers.subspan(i, numbersPerImage);
        const auto format = pixelFormat(n[2]);
        if (!isImageSide(n[0]) || !isImageSide(n[1]) || !format)
            return false;
        const WriteMessage::ImagePart part{QSize(static_cast<int>(n[0]), static_cast<int>(n[1])), *format, n[3], n[4]};
        if (!isInPayload(write, part))
            return false;
        write.images.push_back(part);
    }
    return true;
}

} // namespace

void BusMessageDeleter::operator()(sd_bus_message *message) const
{
    sd_bus_message_unref(message);
}

bool append(sd_bus_message *message, const BlockMessage &block)
{
    return appended(sd_bus_message_append(message, "hx", block.descriptor, static_cast<int64_t>(block.size)));
}

std::optional<BlockMessage> readBlock(sd_bus_message *message)
{
    BlockMessage block;
    int64_t size = 0;
    if (!isMessageOf(message, "hx") || sd_bus_message_read(message, "hx", &block.descriptor, &size) < 0 || size <= 0)
        return std::nullopt;
    block.size = size;
    return block;
}

bool append(sd_bus_message *message, const DocumentMessage &document)
{
    return appendDocument(message, document);
}

std::optional<DocumentMessage> readDocument(sd_bus_message *message)
{
    return isMessageOf(message, documentSignature) ? readDocumentPart(message) : std::nullopt;
}

bool append(sd_bus_message *message, const OpenMessage &open)
{
    return appended(sd_bus_message_append(message, "b", static_cast<int>(open.isRepairedFirst))) &&
           appendDocument(message, open.document);
}

std::optional<OpenMessage> readOpen(sd_bus_message *message)
{
    int isRepairedFirst = 0;
    if (!isMessageOf(message, "bhxay") || sd_bus_message_read(message, "b", &isRepairedFirst) < 0)
        return std::nullopt;
    auto document = readDocumentPart(message);
    if (!document)
        return std::nullopt;
    return OpenMessage{std::move(*document), isRepairedFirst != 0};
}

bool append(sd_bus_message *message, const OpenReply &reply)
{
    return appended(sd_bus_message_append(message, "ibidd", static_cast<qint32>(reply.problem),
                                          static_cast<int>(reply.isRepaired), reply.pageCount,
                                          reply.firstPageSize.width(), reply.firstPageSize.height()));
}

std::optional<OpenReply> readOpenReply(sd_bus_message *message)
{
    qint32 problem = 0;
    int isRepaired = 0;
    qint32 pageCount = 0;
    double width = 0;
    double height = 0;
    if (!isMessageOf(message, "ibidd") ||
        sd_bus_message_read(message, "ibidd", &problem, &isRepaired, &pageCount, &width, &height) < 0)
        return std::nullopt;
    const auto known = enumFromInt<OpenProblem>(problem);
    if (!known)
        return std::nullopt;
    if (*known != OpenProblem::None)
        return OpenReply{*known, false, 0, {}};
    const auto isSide = [](double side) { return side >= 1 && side <= maxPageSide; };
    if (pageCount < 1 || pageCount > maxPageCount || !isSide(width) || !isSide(height))
        return std::nullopt;
    return OpenReply{*known, isRepaired != 0, pageCount, QSizeF(width, height)};
}

bool append(sd_bus_message *message, const DrawMessage &draw)
{
    const DrawRequest &request = draw.request;
    return appended(sd_bus_message_append(message, "uiidiiii", draw.job, request.page, request.extraQuarterTurns,
                                          request.scale, request.region.x(), request.region.y(), request.region.width(),
                                          request.region.height())) &&
           append(message, draw.target);
}

std::optional<DrawMessage> readDraw(sd_bus_message *message)
{
    DrawMessage draw;
    DrawRequest &request = draw.request;
    qint32 x = 0;
    qint32 y = 0;
    qint32 width = 0;
    qint32 height = 0;
    int64_t size = 0;
    if (!isMessageOf(message, "uiidiiiihx") ||
        sd_bus_message_read(message, "uiidiiiihx", &draw.job, &request.page, &request.extraQuarterTurns, &request.scale,
                            &x, &y, &width, &height, &draw.target.descriptor, &size) < 0)
        return std::nullopt;
    const auto isReachable = [](qint32 value) {
        return std::abs(qint64(value)) <= std::numeric_limits<int>::max() / 2;
    };
    if (!isReachable(x) || !isReachable(y) || !isImageSide(width) || !isImageSide(height) || request.page < 0 ||
        request.extraQuarterTurns < 0 || request.extraQuarterTurns > 3)
        return std::nullopt;
    request.region = QRect(x, y, width, height);
    draw.target.size = size;
    if (!isDrawable(request) || size < imageBytes(request.region.size(), QImage::Format_RGB32))
        return std::nullopt;
    return draw;
}

bool append(sd_bus_message *message, bool answer)
{
    return appended(sd_bus_message_append(message, "b", static_cast<int>(answer)));
}

std::optional<bool> readBool(sd_bus_message *message)
{
    int answer = 0;
    if (!isMessageOf(message, "b") || sd_bus_message_read(message, "b", &answer) < 0)
        return std::nullopt;
    return answer != 0;
}

bool append(sd_bus_message *message, const Survey &survey)
{
    std::vector<double> sizes;
    sizes.reserve(survey.drawnSizes.size() * 2);
    for (const QSizeF &size : survey.drawnSizes)
        sizes.insert(sizes.end(), {size.width(), size.height()});
    return appendStructure(message, survey.structure) && appendArray(message, 'd', sizes);
}

std::optional<Survey> readSurvey(sd_bus_message *message)
{
    if (!isMessageOf(message, "ibadad"))
        return std::nullopt;
    auto structure = readStructure(message);
    std::span<const double> numbers;
    if (!structure || !readArray(message, 'd', numbers) || numbers.size() % 2 != 0 ||
        numbers.size() / 2 > maxPageCount ||
        !std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); }))
        return std::nullopt;
    Survey survey{std::move(*structure), {}};
    for (std::size_t i = 0; i < numbers.size(); i += 2)
        survey.drawnSizes.emplace_back(numbers[i], numbers[i + 1]);
    return survey;
}

bool append(sd_bus_message *message, const WriteMessage &write)
{
    std::vector<qint64> images;
    for (const WriteMessage::ImagePart &part : write.images)
        images.insert(images.end(),
                      {part.pixelSize.width(), part.pixelSize.height(), part.format, part.offset, part.jpegSize});
    return appendPages(message, write.pages) && append(message, write.payload) &&
           appended(sd_bus_message_append(message, "x", static_cast<int64_t>(write.overlaysSize))) &&
           appendArray(message, 'x', images) && appended(sd_bus_message_append(message, "h", write.outputDescriptor)) &&
           appendDocument(message, write.document);
}

std::optional<WriteMessage> readWrite(sd_bus_message *message)
{
    if (!isMessageOf(message, "aiaiadaiaqaiadhxxaxhhxay"))
        return std::nullopt;
    auto pages = readPages(message);
    if (!pages)
        return std::nullopt;
    WriteMessage write{{}, std::move(*pages), {}, 0, {}, -1};
    int64_t payloadSize = 0;
    int64_t overlaysSize = 0;
    std::span<const qint64> images;
    if (sd_bus_message_read(message, "hxx", &write.payload.descriptor, &payloadSize, &overlaysSize) < 0 ||
        overlaysSize < 0 || overlaysSize > payloadSize)
        return std::nullopt;
    write.payload.size = payloadSize;
    write.overlaysSize = overlaysSize;
    if (!readArray(message, 'x', images) || !readImageParts(images, write) ||
        sd_bus_message_read(message, "h", &write.outputDescriptor) < 0)
        return std::nullopt;
    auto document = readDocumentPart(message);
    if (!document)
        return std::nullopt;
    write.document = std::move(*document);
    return write;
}

bool append(sd_bus_message *message, const WriteReply &reply)
{
    return appended(
        sd_bus_message_append(message, "ix", static_cast<qint32>(reply.problem), static_cast<int64_t>(reply.size)));
}

std::optional<WriteReply> readWriteReply(sd_bus_message *message)
{
    qint32 problem = 0;
    int64_t size = 0;
    if (!isMessageOf(message, "ix") || sd_bus_message_read(message, "ix", &problem, &size) < 0)
        return std::nullopt;
    const auto known = enumFromInt<WriteProblem>(problem);
    if (!known || size < 0 || (*known == WriteProblem::None) != (size > 0))
        return std::nullopt;
    return WriteReply{*known, size};
}

bool append(sd_bus_message *message, const ImageReply &reply)
{
    return appended(sd_bus_message_append(message, "iiiiddx", static_cast<qint32>(reply.problem),
                                          reply.pixelSize.width(), reply.pixelSize.height(),
                                          static_cast<qint32>(reply.format), reply.size.width(), reply.size.height(),
                                          static_cast<int64_t>(reply.jpegSize)));
}

std::optional<ImageReply> readImageReply(sd_bus_message *message)
{
    qint32 problem = 0;
    qint32 width = 0;
    qint32 height = 0;
    qint32 format = 0;
    QSizeF size;
    int64_t jpegSize = 0;
    if (!isMessageOf(message, "iiiiddx") || sd_bus_message_read(message, "iiiiddx", &problem, &width, &height, &format,
                                                                &size.rwidth(), &size.rheight(), &jpegSize) < 0)
        return std::nullopt;
    const auto known = enumFromInt<ImageProblem>(problem);
    if (!known)
        return std::nullopt;
    if (*known != ImageProblem::None)
        return ImageReply{*known, QSize(width, height), QImage::Format_Invalid, {}, 0};
    constexpr double longest = 1e7;               // of 32,767 pixels at 10 dpi, with room
    constexpr qint64 mostJpegBytes = 128LL << 20; // of so many pixels
    const auto isLength = [](double length) { return length > 0 && length <= longest; };
    const auto pixels = pixelFormat(format);
    if (!isImageSide(width) || !isImageSide(height) || qint64(width) * height > maxImagePixels || !pixels ||
        !isLength(size.width()) || !isLength(size.height()) || jpegSize < 0 || jpegSize > mostJpegBytes)
        return std::nullopt;
    return ImageReply{*known, QSize(width, height), *pixels, size, jpegSize};
}

} // namespace inkory
