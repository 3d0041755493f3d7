#include "Fuzzing.h"
#include "UnconnectedBus.h"
#include "platform/core/SharedMemory.h"
#include "platform/pdf/ReadingMessages.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include <fcntl.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <systemd/sd-bus.h>

using namespace inkory;

namespace
{

/// Fills a message with values of given types, mostly such as lie near a limit.
class Filler
{
public:
    explicit Filler(FuzzedDataProvider &data) : m_data(data) {}

    bool fill(sd_bus_message *message, const std::string &signature)
    {
        for (std::size_t i = 0; i < signature.size(); ++i) {
            const bool isArray = signature[i] == 'a';
            if (isArray ? !appendArray(message, signature[++i]) : !appendOne(message, signature[i]))
                return false;
        }
        return true;
    }

private:
    std::int64_t whole()
    {
        constexpr std::array<std::int64_t, 16> limits{0,
                                                      1,
                                                      -1,
                                                      90,
                                                      180,
                                                      270,
                                                      QImage::Format_RGB32,
                                                      QImage::Format_Grayscale8,
                                                      500,
                                                      14'400,
                                                      32767,
                                                      32'768,
                                                      100'000,
                                                      100'001,
                                                      std::numeric_limits<std::int32_t>::max(),
                                                      64'000'000};
        switch (m_data.ConsumeIntegralInRange(0, 3)) {
        case 0:
            return m_data.ConsumeIntegral<std::int64_t>();
        case 1:
            return m_data.ConsumeIntegralInRange<std::int64_t>(-2, 12);
        case 2:
            return m_data.PickValueInArray(limits);
        default: // the bytes of a picture of the last two numbers, as far as they are any
            return std::abs(m_last[0] % 40'000) * std::abs(m_last[1] % 40'000) * 4;
        }
    }

    std::int64_t nextWhole()
    {
        const std::int64_t value = whole();
        m_last = {m_last[1], value};
        return value;
    }

    double fraction()
    {
        constexpr std::array<double, 8> limits{0.5,
                                               1e-300,
                                               14'400,
                                               14'400.5,
                                               2e9,
                                               -1e308,
                                               std::numeric_limits<double>::infinity(),
                                               std::numeric_limits<double>::quiet_NaN()};
        switch (m_data.ConsumeIntegralInRange(0, 2)) {
        case 0:
            return m_data.PickValueInArray(limits);
        case 1:
            return m_data.ConsumeFloatingPointInRange(0.0, 1000.0);
        default:
            return static_cast<double>(whole());
        }
    }

    bool appendOne(sd_bus_message *message, char type)
    {
        static const int descriptor = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        switch (type) {
        case 'd': {
            const double value = fraction();
            return sd_bus_message_append_basic(message, type, &value) >= 0;
        }
        case 's':
        case 'g':
        case 'o':
            return sd_bus_message_append_basic(message, type, m_data.ConsumeRandomLengthString(8).c_str()) >= 0;
        case 'h':
            return sd_bus_message_append_basic(message, type, &descriptor) >= 0;
        case 'b': {
            const int value = m_data.ConsumeBool() ? 1 : 0;
            return sd_bus_message_append_basic(message, type, &value) >= 0;
        }
        default: { // little-endian: a shorter one takes the first bytes
            const std::int64_t value = nextWhole();
            return sd_bus_message_append_basic(message, type, &value) >= 0;
        }
        }
    }

    bool appendArray(sd_bus_message *message, char type)
    {
        constexpr std::array<int, 10> counts{0, 1, 2, 3, 4, 5, 8, 9, 10, 18};
        if (sd_bus_message_open_container(message, 'a', std::string(1, type).c_str()) < 0)
            return false;
        for (int left = m_data.PickValueInArray(counts); left > 0; --left)
            if (!appendOne(message, type))
                return false;
        return sd_bus_message_close_container(message) >= 0;
    }

    FuzzedDataProvider &m_data;
    std::array<std::int64_t, 2> m_last{};
};

/// Whether two messages of the same types, arrays of fixed size among them, hold the same but for descriptors.
bool holdTheSame(sd_bus_message *a, sd_bus_message *b, const std::string &signature)
{
    sd_bus_message_rewind(a, 1);
    sd_bus_message_rewind(b, 1);
    for (std::size_t i = 0; i < signature.size(); ++i) {
        const void *values[2] = {};
        std::size_t sizes[2] = {};
        std::int64_t numbers[2] = {};
        if (signature[i] == 'a') {
            ++i;
            if (sd_bus_message_read_array(a, signature[i], &values[0], &sizes[0]) < 0 ||
                sd_bus_message_read_array(b, signature[i], &values[1], &sizes[1]) < 0 || sizes[0] != sizes[1] ||
                (sizes[0] > 0 && std::memcmp(values[0], values[1], sizes[0]) != 0))
                return false;
        } else if (sd_bus_message_read_basic(a, signature[i], &numbers[0]) < 0 ||
                   sd_bus_message_read_basic(b, signature[i], &numbers[1]) < 0 ||
                   (numbers[0] != numbers[1] && signature[i] != 'h')) {
            return false;
        }
    }
    return true;
}

void checkDescriptor(int descriptor)
{
    fuzz::require(::fcntl(descriptor, F_GETFD) >= 0, "descriptors are open");
}

void check(const BlockMessage &block)
{
    checkDescriptor(block.descriptor);
    fuzz::require(block.size > 0, "blocks have a size");
}

void check(const DocumentMessage &document)
{
    checkDescriptor(document.descriptor);
    fuzz::require(document.size > 0, "documents have a size");
}

void check(const OpenMessage &open)
{
    check(open.document);
}

void check(const OpenReply &reply)
{
    fuzz::require(reply.problem >= OpenProblem::None && reply.problem <= OpenProblem::Last, "problems are known");
    if (reply.problem != OpenProblem::None)
        return;
    const QSizeF size = reply.firstPageSize;
    fuzz::require(reply.pageCount > 0 && reply.pageCount <= maxPageCount, "an open document has pages");
    fuzz::require(size.width() >= 1 && size.width() <= maxPageSide && size.height() >= 1 &&
                      size.height() <= maxPageSide,
                  "pages have a size that can be shown");
}

void check(const DrawMessage &draw)
{
    checkDescriptor(draw.target.descriptor);
    const DrawRequest &request = draw.request;
    fuzz::require(request.page >= 0 && request.extraQuarterTurns >= 0 && request.extraQuarterTurns <= 3,
                  "pages count from 0 and have four sides");
    fuzz::require(isDrawable(request), "what is asked for can be drawn");
    fuzz::require(request.region.right() >= request.region.left() && request.region.bottom() >= request.region.top(),
                  "regions do not run over");
    fuzz::require(draw.target.size >= imageBytes(request.region.size(), QImage::Format_RGB32), "the pixels fit");
}

void check(bool) {}

void checkBox(const PageRect &box)
{
    fuzz::require(std::isfinite(box.x) && std::isfinite(box.y) && !box.isEmpty() && box.width <= maxPageSide &&
                      box.height <= maxPageSide,
                  "boxes have an area, and one that can be shown");
}

void check(const Survey &survey)
{
    constexpr double rounding = 1e-3; // at the largest coordinates
    fuzz::require(survey.structure.problem >= WriteProblem::None && survey.structure.problem <= WriteProblem::Last,
                  "problems are known");
    fuzz::require(survey.structure.pages.size() <= maxPageCount && survey.drawnSizes.size() <= maxPageCount,
                  "there are no more pages than are opened");
    for (const PageGeometry &page : survey.structure.pages) {
        const PageRect &media = page.mediaBox;
        const PageRect &crop = page.cropBox;
        checkBox(media);
        checkBox(crop);
        fuzz::require(crop.x >= media.x - rounding && crop.y >= media.y - rounding &&
                          crop.maxX() <= media.maxX() + rounding && crop.maxY() <= media.maxY() + rounding,
                      "the shown part lies on the sheet");
        fuzz::require(page.rotation >= 0 && page.rotation < 360 && page.rotation % 90 == 0,
                      "a rotation is one of four");
    }
    for (const QSizeF &size : survey.drawnSizes)
        fuzz::require(std::isfinite(size.width()) && std::isfinite(size.height()), "sizes are finite");
}

void check(const OverlayPiece &piece)
{
    fuzz::require(piece.overlayPage >= 0, "pages count from 0");
    fuzz::require(piece.text.isValidUtf16() && piece.text.size() <= OverlayPiece::mostCharacters, "texts are texts");
    const QTransform &t = piece.lineToPage;
    fuzz::require(t.isAffine() && std::isfinite(t.determinant()) && std::isfinite(t.dx()) && std::isfinite(t.dy()),
                  "lines stand somewhere");
    fuzz::require(piece.slots.empty() || (std::isfinite(piece.slotSize) && piece.slotSize > 0),
                  "characters have a size");
    for (const TextSlot &slot : piece.slots) {
        fuzz::require(slot.text.isValidUtf16() && !slot.text.isEmpty(), "slots have texts");
        fuzz::require(std::isfinite(slot.x) && std::isfinite(slot.width) && slot.width >= 0, "characters have a place");
    }
}

void check(const WriteMessage &write)
{
    check(write.document);
    checkDescriptor(write.payload.descriptor);
    checkDescriptor(write.outputDescriptor);
    fuzz::require(write.pages.size() <= maxPageCount, "there are no more pages than are opened");
    for (const WritePage &page : write.pages) {
        fuzz::require(page.sourcePage >= 0, "pages count from 0");
        fuzz::require(page.rotation >= 0 && page.rotation < 360 && page.rotation % 90 == 0,
                      "a rotation is one of four");
        fuzz::require(std::isfinite(page.overlayOrigin.x) && std::isfinite(page.overlayOrigin.y),
                      "coordinates are finite");
        for (const OverlayPiece &piece : page.pieces)
            check(piece);
    }
    fuzz::require(write.overlaysSize >= 0 && write.overlaysSize <= write.payload.size, "overlays lie in the payload");
    for (const WriteMessage::ImagePart &part : write.images) {
        fuzz::require(part.pixelSize.width() > 0 && part.pixelSize.height() > 0, "images have pixels");
        const qint64 length = part.jpegSize > 0 ? part.jpegSize : imageBytes(part.pixelSize, part.format);
        fuzz::require(part.offset >= write.overlaysSize && length > 0 && length <= write.payload.size - part.offset,
                      "images lie in the payload");
    }
}

void check(const WriteReply &reply)
{
    fuzz::require(reply.problem >= WriteProblem::None && reply.problem <= WriteProblem::Last, "problems are known");
    fuzz::require((reply.problem == WriteProblem::None) == (reply.size > 0), "what was written has a size");
}

void check(const ImageReply &reply)
{
    fuzz::require(reply.problem >= ImageProblem::None && reply.problem <= ImageProblem::Last, "problems are known");
    if (reply.problem != ImageProblem::None)
        return;
    constexpr int longest = 32'767;
    fuzz::require(reply.pixelSize.width() > 0 && reply.pixelSize.width() <= longest && reply.pixelSize.height() > 0 &&
                      reply.pixelSize.height() <= longest,
                  "images have pixels");
    fuzz::require(imageBytes(reply.pixelSize, reply.format) > 0, "images have a known format");
    fuzz::require(std::isfinite(reply.size.width()) && std::isfinite(reply.size.height()) && !reply.size.isEmpty(),
                  "images have a size");
    fuzz::require(reply.jpegSize >= 0, "sizes are not negative");
}

void check(const ReadPageMessage &read)
{
    fuzz::require(read.page >= 0, "pages count from 0");
}

void check(const ReadOutlineMessage &) {}

void check(const FindMessage &find)
{
    const FindRequest &request = find.request;
    fuzz::require(request.text.size() <= FindRequest::longestText && request.text.isValidUtf16(),
                  "what is looked for is a text");
    fuzz::require(request.firstPage >= 0 && request.firstPage < request.endPage && request.endPage <= maxPageCount,
                  "there are pages to search");
}

void checkPlace(const QRectF &box)
{
    fuzz::require(std::isfinite(box.x()) && std::isfinite(box.y()) && std::isfinite(box.width()) &&
                      std::isfinite(box.height()) && box.width() > 0 && box.height() > 0,
                  "places have an area");
}

void check(const std::optional<PageDestination> &destination)
{
    if (!destination)
        return;
    fuzz::require(destination->page >= 0 && destination->page < maxPageCount, "pages count from 0");
    fuzz::require(!destination->top || (*destination->top >= 0 && *destination->top <= maxPageSide),
                  "destinations are on their page");
}

void check(const PageText &text)
{
    fuzz::require(text.text.isValidUtf16() && text.text.size() <= PageText::mostCharacters, "texts are texts");
    fuzz::require(static_cast<qsizetype>(text.boxes.size()) == text.text.size(), "each unit has a box");
    for (const QRectF &box : text.boxes)
        if (!box.isNull())
            checkPlace(box);
}

void check(const std::vector<PageLink> &links)
{
    fuzz::require(links.size() <= PageLink::mostPerPage, "there are not too many links");
    for (const PageLink &link : links) {
        checkPlace(link.area);
        check(link.destination);
        fuzz::require(link.destination.has_value() == link.address.isEmpty(), "links lead to one place");
        fuzz::require(link.destination || isLinkAddress(link.address), "addresses are harmless");
    }
}

void check(const std::vector<OutlineItem> &outline)
{
    fuzz::require(outline.size() <= OutlineItem::mostItems, "there are not too many lines");
    int deepest = 0;
    for (const OutlineItem &item : outline) {
        check(item.destination);
        fuzz::require(item.title.isValidUtf16() && item.title.size() <= OutlineItem::longestTitle, "titles are texts");
        fuzz::require(item.level >= 0 && item.level <= deepest, "no level is left out");
        deepest = std::min(item.level + 1, OutlineItem::deepestLevel);
    }
}

void check(const FindReply &reply)
{
    int page = 0;
    for (const FindHit &hit : reply.hits) {
        fuzz::require(hit.page >= page && hit.page < reply.nextPage, "hits are in their order");
        fuzz::require(!hit.areas.empty(), "hits are somewhere");
        for (const QRectF &area : hit.areas)
            checkPlace(area);
        page = hit.page;
    }
}

/// A failure's reply means nothing beside its problem.
template <class T> bool isReadAsAWhole(const T &)
{
    return true;
}

bool isReadAsAWhole(const OpenReply &reply)
{
    return reply.problem == OpenProblem::None;
}

bool isReadAsAWhole(const ImageReply &reply)
{
    return reply.problem == ImageProblem::None;
}

template <class T> void checkReading(sd_bus_message *message, std::optional<T> (*read)(sd_bus_message *))
{
    sd_bus_message_rewind(message, 1);
    const std::optional<T> value = read(message);
    if (!value)
        return;
    check(*value);
    const BusMessage again = fuzz::newMessage();
    fuzz::require(append(again.get(), *value), "what was read can be sent");
    fuzz::seal(again.get());
    if (isReadAsAWhole(*value))
        fuzz::require(holdTheSame(message, again.get(), sd_bus_message_get_signature(message, 1)),
                      "nothing is lost on the way");
    sd_bus_message_rewind(again.get(), 1);
    fuzz::require(read(again.get()).has_value(), "what was sent can be read");
}

std::string signatureFrom(FuzzedDataProvider &data)
{
    constexpr std::array known{"hx",     "hxay", "hxayb",   "ibidd", "uiidiiiihx", "ibadad", "aiaiadaiaqaiadhxxaxhhxay",
                               "ix",     "b",    "iiiiddx", "ui",    "u",          "uiiaq",  "aqad",
                               "adaiaq", "iaiad"};
    constexpr std::array types{'y', 'b', 'n', 'q', 'i', 'u', 'x', 't', 'd', 's', 'o', 'g', 'h'};
    if (!data.ConsumeBool())
        return data.PickValueInArray(known);
    std::string signature;
    for (int left = data.ConsumeIntegralInRange(0, 14); left > 0; --left) {
        if (data.ConsumeBool())
            signature += 'a';
        signature += data.PickValueInArray(types);
    }
    return signature;
}

} // namespace

// Whatever a message holds: what is read from it is within the limits that its type promises, and the same again when
// it is sent on.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider provider(data, size);
    const std::string signature = signatureFrom(provider);
    const BusMessage message = fuzz::newMessage();
    if (!Filler(provider).fill(message.get(), signature))
        return 0;
    fuzz::seal(message.get());
    checkReading(message.get(), readBlock);
    checkReading(message.get(), readOpen);
    checkReading(message.get(), readOpenReply);
    checkReading(message.get(), readDraw);
    checkReading(message.get(), readBool);
    checkReading(message.get(), readDocument);
    checkReading(message.get(), readSurvey);
    checkReading(message.get(), readWrite);
    checkReading(message.get(), readWriteReply);
    checkReading(message.get(), readImageReply);
    checkReading(message.get(), readReadPage);
    checkReading(message.get(), readReadOutline);
    checkReading(message.get(), readFind);
    checkReading(message.get(), readPageText);
    checkReading(message.get(), readPageLinks);
    checkReading(message.get(), readOutline);
    checkReading(message.get(), readFindReply);
    return 0;
}
