#include "platform/engine/JpegStructure.h"

#include <QByteArrayView>

#include <algorithm>

namespace inkory
{

namespace
{

enum Marker : quint8 {
    StuffedZero = 0x00,
    FirstStartOfFrame = 0xC0,
    ProgressiveFrame = 0xC2,
    HuffmanTables = 0xC4,
    JpegExtension = 0xC8,
    ArithmeticConditioning = 0xCC,
    LastStartOfFrame = 0xCF,
    FirstRestart = 0xD0,
    LastRestart = 0xD7,
    StartOfImage = 0xD8,
    EndOfImage = 0xD9,
    StartOfScan = 0xDA,
    FirstApplication = 0xE0,
    ProfileApplication = 0xE2,
    AdobeApplication = 0xEE,
    LastApplication = 0xEF,
    Comment = 0xFE,
    Fill = 0xFF,
};

int byteAt(const QByteArray &bytes, qsizetype position)
{
    return position < bytes.size() ? static_cast<quint8>(bytes[position]) : 0;
}

int wordAt(const QByteArray &bytes, qsizetype position)
{
    return byteAt(bytes, position) << 8 | byteAt(bytes, position + 1);
}

/// One marker with what belongs to it: its segment, and what lies between that and the next marker.
struct Piece
{
    quint8 marker = 0;
    qsizetype start = 0; // of its FF
    qsizetype data = 0;  // behind the length
    qsizetype segmentEnd = 0;
    qsizetype end = 0;
};

/// Goes from piece to piece; ends at the end marker or where the bytes make no sense.
class Walker
{
public:
    explicit Walker(const QByteArray &bytes) : m_bytes(bytes) {}

    bool startsAsJpeg() const { return wordAt(m_bytes, 0) == (Fill << 8 | StartOfImage); }

    std::optional<Piece> next()
    {
        Piece piece{.start = m_position};
        while (byteAt(m_bytes, m_position) == Fill && byteAt(m_bytes, m_position + 1) == Fill)
            ++m_position;
        if (byteAt(m_bytes, m_position) != Fill || m_position + 1 >= m_bytes.size())
            return std::nullopt;
        piece.marker = static_cast<quint8>(m_bytes[m_position + 1]);
        m_position += 2;
        if (piece.marker != EndOfImage && !skipSegment(piece))
            return std::nullopt;
        piece.end = m_position;
        return piece;
    }

private:
    bool skipSegment(Piece &piece)
    {
        const int length = wordAt(m_bytes, m_position);
        piece.data = m_position + 2;
        piece.segmentEnd = m_position + length;
        if (length < 2 || piece.segmentEnd > m_bytes.size())
            return false;
        m_position = piece.segmentEnd;
        skipToMarker();
        return true;
    }

    /// Over a scan's coded data; elsewhere over stray bytes, as decoders do.
    void skipToMarker()
    {
        while (m_position < m_bytes.size()) {
            m_position = m_bytes.indexOf('\xFF', m_position);
            if (m_position < 0) {
                m_position = m_bytes.size();
                return;
            }
            if (m_position + 1 == m_bytes.size())
                return; // cut off inside a marker
            const int following = byteAt(m_bytes, m_position + 1);
            if (following != StuffedZero && (following < FirstRestart || following > LastRestart))
                return;
            m_position = std::min(m_position + 2, m_bytes.size());
        }
    }

    const QByteArray &m_bytes;
    qsizetype m_position = 2; // behind the start marker
};

bool isFrame(quint8 marker)
{
    return marker >= FirstStartOfFrame && marker <= LastStartOfFrame && marker != HuffmanTables &&
           marker != JpegExtension && marker != ArithmeticConditioning;
}

void readFrame(const QByteArray &bytes, const Piece &piece, JpegStructure &structure)
{
    constexpr qsizetype sizeBesideComponents = 6;
    const qsizetype size = piece.segmentEnd - piece.data;
    if (size < sizeBesideComponents || size < sizeBesideComponents + qsizetype(3) * byteAt(bytes, piece.data + 5))
        return; // what stands behind it is something else
    structure.bitsPerComponent = byteAt(bytes, piece.data);
    structure.height = wordAt(bytes, piece.data + 1);
    structure.width = wordAt(bytes, piece.data + 3);
    structure.componentCount = byteAt(bytes, piece.data + 5);
    structure.hasCommonCoding = piece.marker <= ProgressiveFrame;
    structure.isDecodedAsAWhole = piece.marker == ProgressiveFrame;
    const auto nameOfComponent = [&](qsizetype index) { return byteAt(bytes, piece.data + 6 + 3 * index); };
    structure.hasComponentsNamedRgb = structure.componentCount == 3 && nameOfComponent(0) == 'R' &&
                                      nameOfComponent(1) == 'G' && nameOfComponent(2) == 'B';
}

bool dataStartsWith(const QByteArray &bytes, const Piece &piece, QByteArrayView beginning)
{
    return QByteArrayView(bytes).sliced(piece.data, piece.segmentEnd - piece.data).startsWith(beginning);
}

void readDensity(const QByteArray &bytes, const Piece &piece, JpegStructure &structure)
{
    constexpr double centimetresPerInch = 2.54;
    const qsizetype units = piece.data + 7; // behind the name and the version
    if (!dataStartsWith(bytes, piece, QByteArrayView("JFIF", 5)) || piece.segmentEnd < units + 5)
        return;
    const int unit = byteAt(bytes, units);
    const double toDpi = unit == 1 ? 1 : unit == 2 ? centimetresPerInch : 0;
    structure.horizontalDpi = wordAt(bytes, units + 1) * toDpi;
    structure.verticalDpi = wordAt(bytes, units + 3) * toDpi;
}

bool decidesTheLook(const QByteArray &bytes, const Piece &piece)
{
    if (piece.marker == Comment)
        return false;
    if (piece.marker < FirstApplication || piece.marker > LastApplication || piece.marker == AdobeApplication)
        return true;
    if (piece.marker == ProfileApplication)
        return dataStartsWith(bytes, piece, QByteArrayView("ICC_PROFILE", 12));
    // Beside JFIF, APP0 can hold a thumbnail, which may show what has been cropped away since.
    return piece.marker == FirstApplication && dataStartsWith(bytes, piece, QByteArrayView("JFIF", 5));
}

} // namespace

std::optional<JpegStructure> readJpegStructure(const QByteArray &bytes)
{
    Walker walker(bytes);
    if (!walker.startsAsJpeg())
        return std::nullopt;
    JpegStructure structure;
    bool hasScan = false;
    while (const std::optional<Piece> piece = walker.next()) {
        if (piece->marker == EndOfImage) {
            structure.end = piece->end;
            break;
        }
        if (piece->marker == FirstApplication)
            readDensity(bytes, *piece, structure);
        else if (isFrame(piece->marker))
            readFrame(bytes, *piece, structure);
        else if (piece->marker == StartOfScan) {
            hasScan = true;
            const bool hasCount = piece->segmentEnd > piece->data;
            if (!hasCount || byteAt(bytes, piece->data) < structure.componentCount)
                structure.isDecodedAsAWhole = true;
        }
    }
    return hasScan && structure.componentCount > 0 ? std::optional(structure) : std::nullopt;
}

QByteArray jpegWithoutMetadata(const QByteArray &bytes)
{
    Walker walker(bytes);
    if (!walker.startsAsJpeg())
        return {};
    QByteArray kept = bytes.first(2);
    kept.reserve(bytes.size());
    while (const std::optional<Piece> piece = walker.next()) {
        if (decidesTheLook(bytes, *piece))
            kept.append(QByteArrayView(bytes).sliced(piece->start, piece->end - piece->start));
        if (piece->marker == EndOfImage)
            return kept;
    }
    return {};
}

} // namespace inkory
