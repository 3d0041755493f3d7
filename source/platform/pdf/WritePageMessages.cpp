#include "platform/pdf/WritePageMessages.h"

#include "platform/pdf/BusValues.h"

#include <algorithm>
#include <optional>

namespace inkory
{

namespace
{

constexpr double leastSlotSize = 0.01; // no letter is as small, and widths are divided by it

constexpr std::size_t wholePerPiece = 3;
constexpr std::size_t numbersPerLine = 7; // only of a line with slots
constexpr std::size_t numbersPerSlot = 2;

/// All pieces' values, each kind in one array.
template <template <class> class Container> struct PieceArrays
{
    /// Of each piece the overlay page, the length of the text and the number of slots.
    Container<qint32> whole;
    /// Of each piece the text, then those of its slots.
    Container<quint16> text;
    /// Of each slot the length of its text.
    Container<qint32> lengths;
    /// Of each piece with slots the transform and the size, then x and width of each slot.
    Container<double> numbers;
};

template <class T> using Filled = std::vector<T>;
template <class T> using Unread = std::span<const T>;

void add(const QString &text, std::vector<quint16> &units)
{
    units.insert(units.end(), text.utf16(), text.utf16() + text.size());
}

void add(const OverlayPiece &piece, PieceArrays<Filled> &arrays)
{
    arrays.whole.insert(arrays.whole.end(), {piece.overlayPage, static_cast<qint32>(piece.text.size()),
                                             static_cast<qint32>(piece.slots.size())});
    add(piece.text, arrays.text);
    if (piece.slots.empty())
        return;
    const QTransform &t = piece.lineToPage;
    arrays.numbers.insert(arrays.numbers.end(), {t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy(), piece.slotSize});
    for (const TextSlot &slot : piece.slots) {
        arrays.lengths.push_back(static_cast<qint32>(slot.text.size()));
        add(slot.text, arrays.text);
        arrays.numbers.insert(arrays.numbers.end(), {slot.x, slot.width});
    }
}

// The first `count` values, which are no longer there afterwards; none where there are not so many.
template <class T> std::optional<std::span<const T>> taken(std::span<const T> &values, std::size_t count)
{
    if (count > values.size())
        return std::nullopt;
    const auto first = values.first(count);
    values = values.subspan(count);
    return first;
}

std::optional<QString> takenText(std::span<const quint16> &units, qint32 length)
{
    const auto taking = length < 0 ? std::nullopt : taken(units, static_cast<std::size_t>(length));
    if (!taking)
        return std::nullopt;
    QString text = QString::fromUtf16(reinterpret_cast<const char16_t *>(taking->data()), length);
    return text.isValidUtf16() ? std::optional(text) : std::nullopt;
}

bool readSlots(PieceArrays<Unread> &arrays, std::size_t count, OverlayPiece &piece)
{
    const auto lengths = taken(arrays.lengths, count);
    const auto line = taken(arrays.numbers, numbersPerLine);
    const auto places = taken(arrays.numbers, numbersPerSlot * count);
    const auto isNear = [](double number) { return isWithin(number, farthest); };
    if (!lengths || !line || !places || !std::all_of(line->begin(), line->end(), isNear) ||
        !std::all_of(places->begin(), places->end(), isNear))
        return false;
    const auto &n = *line;
    piece.lineToPage = QTransform(n[0], n[1], n[2], n[3], n[4], n[5]);
    piece.slotSize = n[6];
    for (std::size_t i = 0; i < count; ++i) {
        const auto text = takenText(arrays.text, (*lengths)[i]);
        const double width = (*places)[2 * i + 1];
        if (!text || text->isEmpty() || width < 0)
            return false;
        piece.slots.push_back({*text, (*places)[2 * i], width});
    }
    return piece.slotSize >= leastSlotSize && piece.text.isEmpty();
}

std::optional<OverlayPiece> readPiece(PieceArrays<Unread> &arrays)
{
    const auto whole = taken(arrays.whole, wholePerPiece);
    if (!whole || std::any_of(whole->begin(), whole->end(), [](qint32 value) { return value < 0; }))
        return std::nullopt;
    const auto text = takenText(arrays.text, (*whole)[1]);
    if (!text)
        return std::nullopt;
    OverlayPiece piece;
    piece.overlayPage = (*whole)[0];
    piece.text = *text;
    const auto slotCount = static_cast<std::size_t>((*whole)[2]);
    if (slotCount > 0 && !readSlots(arrays, slotCount, piece))
        return std::nullopt;
    return piece;
}

bool appendPieces(sd_bus_message *message, const std::vector<WritePage> &pages)
{
    PieceArrays<Filled> arrays;
    for (const WritePage &page : pages)
        for (const OverlayPiece &piece : page.pieces)
            add(piece, arrays);
    return appendArray(message, 'i', arrays.whole) && appendArray(message, 'q', arrays.text) &&
           appendArray(message, 'i', arrays.lengths) && appendArray(message, 'd', arrays.numbers);
}

// As many pieces for each page as its count says.
bool readPieces(sd_bus_message *message, std::span<const qint32> counts, std::vector<WritePage> &pages)
{
    PieceArrays<Unread> arrays;
    if (!readArray(message, 'i', arrays.whole) || !readArray(message, 'q', arrays.text) ||
        !readArray(message, 'i', arrays.lengths) || !readArray(message, 'd', arrays.numbers) ||
        arrays.whole.size() > wholePerPiece * OverlayPiece::mostInDocument ||
        arrays.text.size() > static_cast<std::size_t>(OverlayPiece::mostCharacters))
        return false;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        for (qint32 left = counts[i]; left > 0; --left) {
            auto piece = readPiece(arrays);
            if (!piece)
                return false;
            pages[i].pieces.push_back(std::move(*piece));
        }
    }
    return arrays.whole.empty() && arrays.text.empty() && arrays.lengths.empty() && arrays.numbers.empty();
}

// Without what lies over them. Negative counts of pieces are refused here.
std::optional<std::vector<WritePage>> writePagesFrom(std::span<const qint32> whole, std::span<const qint32> pieceCounts,
                                                     std::span<const double> origins)
{
    const std::size_t count = pieceCounts.size();
    if (whole.size() != 2 * count || origins.size() != 2 * count || count > maxPageCount ||
        std::any_of(pieceCounts.begin(), pieceCounts.end(), [](qint32 pieces) { return pieces < 0; }))
        return std::nullopt;
    std::vector<WritePage> pages;
    for (std::size_t i = 0; i < count; ++i) {
        WritePage page{whole[2 * i], whole[2 * i + 1], {}, PagePoint{origins[2 * i], origins[2 * i + 1]}};
        if (page.sourcePage < 0 || normalizedRotation(page.rotation) != page.rotation ||
            !isWithin(page.overlayOrigin.x, farthest) || !isWithin(page.overlayOrigin.y, farthest))
            return std::nullopt;
        pages.push_back(std::move(page));
    }
    return pages;
}

} // namespace

bool appendPages(sd_bus_message *message, const std::vector<WritePage> &pages)
{
    std::vector<qint32> whole;
    std::vector<qint32> pieceCounts;
    std::vector<double> origins;
    for (const WritePage &page : pages) {
        whole.insert(whole.end(), {page.sourcePage, page.rotation});
        pieceCounts.push_back(static_cast<qint32>(page.pieces.size()));
        origins.insert(origins.end(), {page.overlayOrigin.x, page.overlayOrigin.y});
    }
    return appendArray(message, 'i', whole) && appendArray(message, 'i', pieceCounts) &&
           appendArray(message, 'd', origins) && appendPieces(message, pages);
}

std::optional<std::vector<WritePage>> readPages(sd_bus_message *message)
{
    std::span<const qint32> whole;
    std::span<const qint32> pieceCounts;
    std::span<const double> origins;
    if (!readArray(message, 'i', whole) || !readArray(message, 'i', pieceCounts) || !readArray(message, 'd', origins))
        return std::nullopt;
    auto pages = writePagesFrom(whole, pieceCounts, origins);
    if (!pages || !readPieces(message, pieceCounts, *pages))
        return std::nullopt;
    return pages;
}

} // namespace inkory
