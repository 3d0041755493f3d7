#include "platform/pdf/ReadingMessages.h"

#include "platform/pdf/BusValues.h"

#include <algorithm>
#include <span>
#include <utility>

namespace inkory
{

namespace
{

// Texts cross as UTF-16, several of them as one with their lengths beside it: reading is copying then.
constexpr std::size_t numbersPerArea = 4;
constexpr std::size_t realsPerLink = numbersPerArea + 1;
constexpr std::size_t wholesPerLink = 3;
constexpr std::size_t wholesPerItem = 5;
constexpr int noPage = -1;

constexpr std::size_t mostAreas = PageText::mostCharacters + FindReply::enoughAreas;
constexpr std::size_t mostHits = FindReply::mostHitsPerPage + FindReply::enoughAreas;

constexpr qint64 bytesOfAreas(qint64 count)
{
    return count * qint64(numbersPerArea * sizeof(double));
}
constexpr qint64 roomForTheRest = 400LL << 10; // message headers, and what one look at the socket can count twice
static_assert(bytesOfAreas(PageText::mostCharacters) + PageText::mostCharacters * 2 + roomForTheRest <=
              engineBus::longestReadAnswer);
static_assert(bytesOfAreas(mostAreas) + qint64(mostHits * 8) + roomForTheRest <= engineBus::longestReadAnswer);
static_assert(PageLink::mostAddressCharacters * 2 +
                  PageLink::mostPerPage * qint64(realsPerLink * 8 + wholesPerLink * 4) + roomForTheRest <=
              engineBus::longestReadAnswer);
static_assert(OutlineItem::mostTitleCharacters * 2 + OutlineItem::mostItems * qint64(8 + wholesPerItem * 4) +
                  roomForTheRest <=
              engineBus::longestReadAnswer);

bool appendText(sd_bus_message *message, const QString &text)
{
    return appended(sd_bus_message_append_array(message, 'q', text.utf16(),
                                                static_cast<std::size_t>(text.size()) * sizeof(quint16)));
}

std::optional<QString> readText(sd_bus_message *message, qsizetype longest)
{
    std::span<const quint16> units;
    if (!readArray(message, 'q', units) || std::ssize(units) > longest)
        return std::nullopt;
    QString text(reinterpret_cast<const QChar *>(units.data()), std::ssize(units));
    return text.isValidUtf16() ? std::optional(std::move(text)) : std::nullopt;
}

void addArea(std::vector<double> &numbers, const QRectF &area)
{
    numbers.insert(numbers.end(), {area.x(), area.y(), area.width(), area.height()});
}

QRectF areaFrom(std::span<const double> n)
{
    return {n[0], n[1], n[2], n[3]};
}

bool isNoPlace(const QRectF &box)
{
    return box.x() == 0 && box.y() == 0 && box.width() == 0 && box.height() == 0;
}

/// Takes one text after the other out of those that came as one.
class JoinedTexts
{
public:
    explicit JoinedTexts(QString texts) : m_texts(std::move(texts)) {}

    std::optional<QString> take(qint32 length, qsizetype longest)
    {
        if (length < 0 || length > longest || length > m_texts.size() - m_taken)
            return std::nullopt;
        QString text = m_texts.mid(m_taken, length);
        m_taken += length;
        return text.isValidUtf16() ? std::optional(std::move(text)) : std::nullopt;
    }

    bool isEmpty() const { return m_taken == m_texts.size(); }

private:
    QString m_texts;
    qsizetype m_taken = 0;
};

qint32 pageOf(const std::optional<PageDestination> &destination)
{
    return destination ? destination->page : noPage;
}

bool hasTop(const std::optional<PageDestination> &destination)
{
    return destination && destination->top;
}

double topOf(const std::optional<PageDestination> &destination)
{
    return hasTop(destination) ? *destination->top : 0;
}

bool readDestination(qint32 page, qint32 hasTop, double top, std::optional<PageDestination> &destination)
{
    if (page < noPage || page >= maxPageCount || hasTop < 0 || hasTop > (page == noPage ? 0 : 1))
        return false;
    const bool isOnPage = top >= 0 && top <= maxPageSide;
    if (hasTop != 0 ? !isOnPage : top != 0)
        return false;
    if (page != noPage)
        destination = PageDestination{page, hasTop != 0 ? std::optional(top) : std::nullopt};
    return true;
}

std::optional<PageLink> linkFrom(std::span<const double> reals, std::span<const qint32> wholes, JoinedTexts &addresses)
{
    PageLink link{areaFrom(reals), {}, {}};
    auto address = addresses.take(wholes[2], PageLink::longestAddress);
    if (!isPlace(link.area) || !address || !readDestination(wholes[0], wholes[1], reals[4], link.destination) ||
        (link.destination ? !address->isEmpty() : !isLinkAddress(*address)))
        return std::nullopt;
    link.address = std::move(*address);
    return link;
}

std::optional<OutlineItem> itemFrom(double top, std::span<const qint32> wholes, JoinedTexts &titles, int deepest)
{
    OutlineItem item;
    auto title = titles.take(wholes[4], OutlineItem::longestTitle);
    if (!title || wholes[0] < 0 || wholes[0] > deepest || wholes[1] < 0 || wholes[1] > 1 ||
        !readDestination(wholes[2], wholes[3], top, item.destination))
        return std::nullopt;
    item.title = std::move(*title);
    item.level = wholes[0];
    item.isOpen = wholes[1] != 0;
    return item;
}

// One after the other, each with the areas that it says it has.
bool readHits(std::span<const qint32> wholes, std::span<const double> numbers, FindReply &reply)
{
    if (wholes.size() % 2 != 0 || wholes.size() / 2 > mostHits || numbers.size() % numbersPerArea != 0 ||
        numbers.size() / numbersPerArea > mostAreas)
        return false;
    reply.hits.reserve(wholes.size() / 2);
    for (std::size_t i = 0; i < wholes.size(); i += 2) {
        FindHit hit{wholes[i], {}};
        const qint32 count = wholes[i + 1];
        const int least = reply.hits.empty() ? 0 : reply.hits.back().page;
        if (hit.page < least || hit.page >= reply.nextPage || count < 1 ||
            static_cast<std::size_t>(count) > numbers.size() / numbersPerArea)
            return false;
        hit.areas.reserve(static_cast<std::size_t>(count));
        for (qint32 area = 0; area < count; ++area, numbers = numbers.subspan(numbersPerArea)) {
            hit.areas.push_back(areaFrom(numbers));
            if (!isPlace(hit.areas.back()))
                return false;
        }
        reply.hits.push_back(std::move(hit));
    }
    return numbers.empty();
}

} // namespace

bool append(sd_bus_message *message, const ReadPageMessage &read)
{
    return appended(sd_bus_message_append(message, "ui", read.job, read.page));
}

std::optional<ReadPageMessage> readReadPage(sd_bus_message *message)
{
    ReadPageMessage read;
    if (!isMessageOf(message, "ui") || sd_bus_message_read(message, "ui", &read.job, &read.page) < 0 || read.page < 0)
        return std::nullopt;
    return read;
}

bool append(sd_bus_message *message, const ReadOutlineMessage &read)
{
    return appended(sd_bus_message_append(message, "u", read.job));
}

std::optional<ReadOutlineMessage> readReadOutline(sd_bus_message *message)
{
    ReadOutlineMessage read;
    if (!isMessageOf(message, "u") || sd_bus_message_read(message, "u", &read.job) < 0)
        return std::nullopt;
    return read;
}

bool append(sd_bus_message *message, const FindMessage &find)
{
    const FindRequest &request = find.request;
    return appended(sd_bus_message_append(message, "uii", find.job, request.firstPage, request.endPage)) &&
           appendText(message, request.text);
}

std::optional<FindMessage> readFind(sd_bus_message *message)
{
    FindMessage find;
    FindRequest &request = find.request;
    if (!isMessageOf(message, "uiiaq") ||
        sd_bus_message_read(message, "uii", &find.job, &request.firstPage, &request.endPage) < 0)
        return std::nullopt;
    auto text = readText(message, FindRequest::longestText);
    if (!text)
        return std::nullopt;
    request.text = std::move(*text);
    return isFindable(request) ? std::optional(std::move(find)) : std::nullopt;
}

bool append(sd_bus_message *message, const PageText &text)
{
    std::vector<double> numbers;
    numbers.reserve(text.boxes.size() * numbersPerArea);
    for (const QRectF &box : text.boxes)
        addArea(numbers, box);
    return appended(sd_bus_message_append(message, "b", static_cast<int>(text.isCut))) &&
           appendText(message, text.text) && appendArray(message, 'd', numbers);
}

std::optional<PageText> readPageText(sd_bus_message *message)
{
    int isCut = 0;
    if (!isMessageOf(message, "baqad") || sd_bus_message_read(message, "b", &isCut) < 0)
        return std::nullopt;
    auto text = readText(message, PageText::mostCharacters);
    std::span<const double> numbers;
    if (!text || !readArray(message, 'd', numbers) ||
        numbers.size() != static_cast<std::size_t>(text->size()) * numbersPerArea)
        return std::nullopt;
    PageText read{std::move(*text), {}, isCut != 0};
    read.boxes.reserve(numbers.size() / numbersPerArea);
    for (; !numbers.empty(); numbers = numbers.subspan(numbersPerArea)) {
        read.boxes.push_back(areaFrom(numbers));
        if (!isPlace(read.boxes.back()) && !isNoPlace(read.boxes.back()))
            return std::nullopt;
    }
    return read;
}

bool append(sd_bus_message *message, const std::vector<PageLink> &links)
{
    std::vector<double> reals;
    std::vector<qint32> wholes;
    QString addresses;
    for (const PageLink &link : links) {
        addArea(reals, link.area);
        reals.push_back(topOf(link.destination));
        wholes.insert(wholes.end(), {pageOf(link.destination), static_cast<qint32>(hasTop(link.destination)),
                                     static_cast<qint32>(link.address.size())});
        addresses += link.address;
    }
    return appendArray(message, 'd', reals) && appendArray(message, 'i', wholes) && appendText(message, addresses);
}

std::optional<std::vector<PageLink>> readPageLinks(sd_bus_message *message)
{
    std::span<const double> reals;
    std::span<const qint32> wholes;
    if (!isMessageOf(message, "adaiaq") || !readArray(message, 'd', reals) || !readArray(message, 'i', wholes))
        return std::nullopt;
    auto joined = readText(message, PageLink::mostAddressCharacters);
    const std::size_t count = reals.size() / realsPerLink;
    if (!joined || count > PageLink::mostPerPage || reals.size() != count * realsPerLink ||
        wholes.size() != count * wholesPerLink)
        return std::nullopt;
    JoinedTexts addresses(std::move(*joined));
    std::vector<PageLink> links;
    links.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        auto link = linkFrom(reals.subspan(i * realsPerLink, realsPerLink),
                             wholes.subspan(i * wholesPerLink, wholesPerLink), addresses);
        if (!link)
            return std::nullopt;
        links.push_back(std::move(*link));
    }
    return addresses.isEmpty() ? std::optional(std::move(links)) : std::nullopt;
}

bool append(sd_bus_message *message, const std::vector<OutlineItem> &outline)
{
    std::vector<double> tops;
    std::vector<qint32> wholes;
    QString titles;
    for (const OutlineItem &item : outline) {
        tops.push_back(topOf(item.destination));
        wholes.insert(wholes.end(),
                      {item.level, static_cast<qint32>(item.isOpen), pageOf(item.destination),
                       static_cast<qint32>(hasTop(item.destination)), static_cast<qint32>(item.title.size())});
        titles += item.title;
    }
    return appendArray(message, 'd', tops) && appendArray(message, 'i', wholes) && appendText(message, titles);
}

std::optional<std::vector<OutlineItem>> readOutline(sd_bus_message *message)
{
    std::span<const double> tops;
    std::span<const qint32> wholes;
    if (!isMessageOf(message, "adaiaq") || !readArray(message, 'd', tops) || !readArray(message, 'i', wholes))
        return std::nullopt;
    auto joined = readText(message, OutlineItem::mostTitleCharacters);
    if (!joined || tops.size() > OutlineItem::mostItems || wholes.size() != tops.size() * wholesPerItem)
        return std::nullopt;
    JoinedTexts titles(std::move(*joined));
    std::vector<OutlineItem> outline;
    outline.reserve(tops.size());
    for (std::size_t i = 0; i < tops.size(); ++i) {
        const int deepest = outline.empty() ? 0 : std::min(outline.back().level + 1, OutlineItem::deepestLevel);
        auto item = itemFrom(tops[i], wholes.subspan(i * wholesPerItem, wholesPerItem), titles, deepest);
        if (!item)
            return std::nullopt;
        outline.push_back(std::move(*item));
    }
    return titles.isEmpty() ? std::optional(std::move(outline)) : std::nullopt;
}

bool append(sd_bus_message *message, const FindReply &reply)
{
    std::vector<qint32> wholes;
    std::vector<double> numbers;
    for (const FindHit &hit : reply.hits) {
        wholes.insert(wholes.end(), {hit.page, static_cast<qint32>(hit.areas.size())});
        for (const QRectF &area : hit.areas)
            addArea(numbers, area);
    }
    return appended(sd_bus_message_append(message, "ibb", reply.nextPage, static_cast<int>(reply.hasText),
                                          static_cast<int>(reply.isCut))) &&
           appendArray(message, 'i', wholes) && appendArray(message, 'd', numbers);
}

std::optional<FindReply> readFindReply(sd_bus_message *message)
{
    FindReply reply;
    int hasText = 0;
    int isCut = 0;
    std::span<const qint32> wholes;
    std::span<const double> numbers;
    if (!isMessageOf(message, "ibbaiad") ||
        sd_bus_message_read(message, "ibb", &reply.nextPage, &hasText, &isCut) < 0 || reply.nextPage < 1 ||
        reply.nextPage > maxPageCount || !readArray(message, 'i', wholes) || !readArray(message, 'd', numbers) ||
        !readHits(wholes, numbers, reply))
        return std::nullopt;
    reply.hasText = hasText != 0;
    reply.isCut = isCut != 0;
    return reply;
}

} // namespace inkory
