#include "platform/core/EmbeddableFont.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QHash>
#include <QRawFont>
#include <QStringList>
#include <QtEndian>

#include <optional>

namespace inkory
{

namespace
{

enum class LetterClass { Serif, SansSerif, Monospace };

constexpr int classOffset = 30; // in the table OS/2: sFamilyClass, and behind it the ten bytes of the Panose number
constexpr int panoseOffset = 32;

std::optional<LetterClass> letterClassFromPanose(const QByteArray &os2)
{
    if (os2.size() < panoseOffset + 10)
        return std::nullopt;
    constexpr int latinText = 2;
    constexpr int monospaced = 9;
    constexpr int firstSerif = 2;
    constexpr int firstSansSerif = 11;
    constexpr int lastSansSerif = 15;
    const int serifStyle = static_cast<unsigned char>(os2.at(panoseOffset + 1));
    if (os2.at(panoseOffset) != latinText)
        return std::nullopt;
    if (os2.at(panoseOffset + 3) == monospaced)
        return LetterClass::Monospace;
    if (serifStyle < firstSerif || serifStyle > lastSansSerif)
        return std::nullopt;
    return serifStyle < firstSansSerif ? LetterClass::Serif : LetterClass::SansSerif;
}

LetterClass letterClass(const QFont &font, const QRawFont &resolved)
{
    const QByteArray os2 = resolved.fontTable("OS/2");
    const auto fromPanose = letterClassFromPanose(os2);
    if (fromPanose == LetterClass::Monospace || QFontInfo(font).fixedPitch())
        return LetterClass::Monospace;
    const int family = os2.size() > classOffset ? os2.at(classOffset) : 0;
    constexpr int lastSerif = 7; // 1 to 5 and 7 are kinds of serifs; 6 is reserved
    constexpr int sansSerif = 8;
    if (family == sansSerif)
        return LetterClass::SansSerif;
    if (family >= 1 && family <= lastSerif)
        return LetterClass::Serif;
    return fromPanose.value_or(LetterClass::SansSerif);
}

QFont withFamily(QFont font, const QString &family)
{
    font.setFamilies({family});
    return font;
}

QString genericFamily(LetterClass letters)
{
    switch (letters) {
    case LetterClass::Serif:
        return QStringLiteral("serif");
    case LetterClass::Monospace:
        return QStringLiteral("monospace");
    case LetterClass::SansSerif:
        break;
    }
    return QStringLiteral("sans-serif");
}

bool isEmbeddableOf(const QFont &font, LetterClass letters)
{
    const QRawFont resolved = QRawFont::fromFont(font);
    return mayBeEmbedded(resolved) && resolved.supportsCharacter(u'a') && letterClass(font, resolved) == letters;
}

// The family to use instead; empty where the font's own may be used, or where there is none.
QString findFamily(const QFont &font)
{
    const QRawFont resolved = QRawFont::fromFont(font);
    if (mayBeEmbedded(resolved))
        return {};
    const LetterClass letters = letterClass(font, resolved);
    QStringList families = QFontDatabase::families();
    families.prepend(genericFamily(letters)); // the one that this system prefers
    for (const QString &family : families) {
        if (isEmbeddableOf(withFamily(font, family), letters))
            return family;
    }
    for (const QString &family : families) {
        if (mayBeEmbedded(QRawFont::fromFont(withFamily(font, family))))
            return family;
    }
    return {};
}

} // namespace

bool mayBeEmbedded(const QRawFont &font)
{
    if (!font.isValid())
        return false;
    constexpr int rightsOffset = 8; // fsType in the table OS/2
    constexpr unsigned restricted = 1U << 1U;
    constexpr unsigned previewOrEditing = 1U << 2U | 1U << 3U;
    constexpr unsigned asAWhole = 1U << 8U; // and files get only the letters that are used
    constexpr unsigned bitmapsOnly = 1U << 9U;
    const QByteArray os2 = font.fontTable("OS/2");
    if (os2.size() < rightsOffset + 2)
        return true;
    const unsigned rights = qFromBigEndian<quint16>(os2.constData() + rightsOffset);
    const bool isRestricted = (rights & restricted) != 0 && (rights & previewOrEditing) == 0;
    return !isRestricted && (rights & (asAWhole | bitmapsOnly)) == 0;
}

QFont embeddableFont(const QFont &font)
{
    static QHash<QString, QString> found; // by what decides which file is taken: size does not
    constexpr int mostFound = 1'000;
    const QString key =
        font.families().join(u'\n') + QStringLiteral("\n%1 %2 %3 %4")
                                          .arg(QString::number(font.weight()), font.styleName(),
                                               QString::number(font.style()), QString::number(font.stretch()));
    auto known = found.constFind(key);
    if (known == found.constEnd()) {
        if (found.size() >= mostFound)
            found.clear();
        known = found.insert(key, findFamily(font));
    }
    return known->isEmpty() ? font : withFamily(font, *known);
}

} // namespace inkory
