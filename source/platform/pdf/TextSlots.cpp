#include "platform/pdf/TextSlots.h"

#include <QGlyphRun>
#include <QRawFont>
#include <QTextLayout>

#include <algorithm>
#include <utility>

namespace inkory
{

namespace
{

constexpr double noWidth = 1e-3;

/// Characters that share a place.
struct Cluster
{
    int start = 0;
    int end = 0;
    double left = 0;
    double right = 0;
    bool isRightToLeft = false;

    double width() const { return right - left; }
};

bool takesNoWidth(QChar character)
{
    return character.isMark() || character.category() == QChar::Other_Format;
}

// Where a text runs against the direction of its paragraph, a cursor before its first character stands at the far end
// of it, and both edges of that character seem to be there. The glyph knows better.
void placeByGlyph(const QTextLine &line, Cluster &cluster)
{
    const QList<QGlyphRun> runs = line.glyphRuns(cluster.start, cluster.end - cluster.start);
    if (runs.isEmpty())
        return;
    const QGlyphRun &run = runs.front();
    cluster.left = run.positions().front().x();
    cluster.right = cluster.left + run.rawFont().advancesForGlyphIndexes({run.glyphIndexes().front()}).front().x();
    cluster.isRightToLeft = run.isRightToLeft();
}

// The trailing edge of any character of a ligature is that of the whole ligature; it goes on behind this one where a
// cursor can stand inside.
void leaveRoomForNext(const QTextLine &line, Cluster &cluster)
{
    const double next = line.cursorToX(cluster.end);
    if (next <= cluster.left || next >= cluster.right)
        return;
    (cluster.isRightToLeft ? cluster.left : cluster.right) = next;
}

Cluster clusterAt(const QTextLine &line, const QString &text, int start, int lineEnd)
{
    int end = start + 1;
    line.cursorToX(&end); // moves to where a cursor can stand
    const double leading = line.cursorToX(start, QTextLine::Leading);
    const double trailing = line.cursorToX(start, QTextLine::Trailing);
    Cluster cluster{start, std::clamp(end, start + 1, lineEnd), std::min(leading, trailing),
                    std::max(leading, trailing), trailing < leading};
    if (cluster.width() < noWidth && !takesNoWidth(text.at(start)))
        placeByGlyph(line, cluster);
    leaveRoomForNext(line, cluster);
    return cluster;
}

// In the order of the text. What takes no width belongs to what stands before it, or else behind it.
std::vector<Cluster> clustersOf(const QTextLine &line, const QString &text)
{
    const int lineEnd = line.textStart() + line.textLength();
    std::vector<Cluster> clusters;
    for (int start = line.textStart(); start < lineEnd;) {
        Cluster cluster = clusterAt(line, text, start, lineEnd);
        start = cluster.end;
        if (!clusters.empty() && cluster.width() < noWidth) {
            clusters.back().end = cluster.end;
        } else if (!clusters.empty() && clusters.back().width() < noWidth) {
            cluster.start = clusters.back().start;
            clusters.back() = cluster;
        } else {
            clusters.push_back(cluster);
        }
    }
    return clusters;
}

} // namespace

bool hasRightToLeftLetters(const QString &text)
{
    const QList<uint> characters = text.toUcs4();
    return std::any_of(characters.begin(), characters.end(), [](uint character) {
        const QChar::Direction direction = QChar::direction(character);
        return direction == QChar::DirR || direction == QChar::DirAL;
    });
}

std::vector<TextSlot> textSlots(const QTextLine &line, const QString &text)
{
    std::vector<TextSlot> result;
    for (const Cluster &cluster : clustersOf(line, text)) {
        const std::u32string characters = text.mid(cluster.start, cluster.end - cluster.start).toStdU32String();
        const double width = cluster.width() / static_cast<double>(characters.size());
        for (std::size_t i = 0; i < characters.size(); ++i) {
            if (characters[i] == QChar::LineSeparator)
                continue; // the end of the line says as much
            const std::size_t place = cluster.isRightToLeft ? characters.size() - 1 - i : i;
            result.push_back(
                {QString::fromUcs4(&characters[i], 1), cluster.left + static_cast<double>(place) * width, width});
        }
    }
    std::stable_sort(result.begin(), result.end(), [](const TextSlot &a, const TextSlot &b) { return a.x < b.x; });
    return result;
}

} // namespace inkory
