#include "platform/engine/FoldedText.h"

#include "platform/engine/Characters.h"
#include "platform/pdf/PageText.h"

#include <QHash>
#include <QStringMatcher>

#include <algorithm>
#include <utility>

namespace inkory
{

namespace
{

constexpr char32_t firstNotAscii = 0x80;

// Vowel signs of some scripts are marks, too, but such that say what is read; they have no class.
bool isLeftOut(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
        return QChar::combiningClass(character) != 0;
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
        return true;
    default:
        return false;
    }
}

QString foldedCharacter(char32_t character)
{
    // Some small letters have two large ones; folding the case can put a mark behind the letter again.
    const QString decomposed = QString::fromUcs4(&character, 1)
                                   .normalized(QString::NormalizationForm_KD)
                                   .toUpper()
                                   .toCaseFolded()
                                   .normalized(QString::NormalizationForm_KD);
    QString folded;
    forEachCharacter(decomposed, [&folded](char32_t part, qsizetype) {
        if (QChar::isSpace(part))
            folded += QLatin1Char(' ');
        else if (!isLeftOut(part))
            folded += QStringView(QChar::fromUcs4(part));
    });
    return folded;
}

} // namespace

FoldedText::FoldedText(QStringView text, DividedWord divided) : m_size(text.size())
{
    m_folded.reserve(m_size);
    m_origins.reserve(static_cast<std::size_t>(m_size) + 1);
    QHash<char32_t, QString> known; // a page consists of few different characters
    char32_t previous = 0;
    forEachCharacter(text, [&](char32_t character, qsizetype origin) {
        const char32_t last = std::exchange(previous, character);
        const bool isDivided = isHyphen(last) && divided != DividedWord::InTwo;
        if (character == U'\n' && (last == softHyphen || isDivided)) {
            if (isDivided && divided == DividedWord::WithoutHyphen)
                removeLast();
            return;
        }
        if (character < firstNotAscii) {
            add(QChar::isSpace(character) ? QLatin1Char(' ') : QChar(char16_t(QChar::toLower(character))), origin);
            return;
        }
        auto folded = known.constFind(character);
        if (folded == known.constEnd())
            folded = known.insert(character, foldedCharacter(character));
        for (const QChar unit : *folded)
            add(unit, origin);
    });
    m_origins.push_back(m_size);
}

void FoldedText::add(QChar unit, qsizetype origin)
{
    if (unit == QLatin1Char(' ') && m_folded.endsWith(unit))
        return;
    m_folded += unit;
    m_origins.push_back(origin);
}

void FoldedText::removeLast()
{
    m_folded.chop(1);
    m_origins.pop_back();
}

bool FoldedText::isBlank() const
{
    return std::all_of(m_folded.begin(), m_folded.end(), [](QChar unit) { return unit == QLatin1Char(' '); });
}

// From behind a unit of the folded text to behind the last one of the same character: a part of a ligature was found.
qsizetype FoldedText::endOfCharacter(qsizetype index) const
{
    const auto at = [this](qsizetype i) { return m_origins[static_cast<std::size_t>(i)]; };
    while (index < m_folded.size() && at(index) == at(index - 1))
        ++index;
    return index;
}

std::vector<FoldedText::Range> FoldedText::occurrencesOf(const FoldedText &query, qsizetype most) const
{
    std::vector<Range> found;
    if (query.isBlank())
        return found;
    const QStringMatcher matcher(query.folded());
    qsizetype from = 0;
    while (std::ssize(found) < most) {
        const qsizetype begin = matcher.indexIn(m_folded, from);
        if (begin < 0)
            break;
        from = endOfCharacter(begin + query.folded().size());
        found.push_back({m_origins[static_cast<std::size_t>(begin)], m_origins[static_cast<std::size_t>(from)]});
    }
    return found;
}

} // namespace inkory
