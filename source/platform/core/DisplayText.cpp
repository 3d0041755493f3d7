#include "platform/core/DisplayText.h"

#include <QChar>

#include <algorithm>
#include <string>
#include <string_view>

namespace inkory
{

namespace
{

/// Letters and marks by their category that show nothing.
constexpr std::u32string_view invisibleLetters = U"\u034f\u115f\u1160\u17b4\u17b5\u180b\u180c\u180d\u180f\u3164\uffa0";

bool isShown(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return !QChar::isNonCharacter(character) && invisibleLetters.find(character) == std::u32string_view::npos;
    }
}

/// Persian and the scripts of India cannot be spelled without joiners; elsewhere these only make names look alike.
bool isJoinerInWord(std::u32string_view text, std::size_t position)
{
    if ((text[position] != U'\u200c' && text[position] != U'\u200d') || position == 0 || position + 1 == text.size())
        return false;
    const QChar::Script script = QChar::script(text[position - 1]);
    const bool needsJoiners =
        script == QChar::Script_Arabic || (script >= QChar::Script_Devanagari && script <= QChar::Script_Sinhala);
    return needsJoiners && QChar::script(text[position + 1]) == script;
}

} // namespace

QString displayable(const QString &foreign, qsizetype maxLength)
{
    const std::u32string original = foreign.toStdU32String(); // lone surrogates become U+FFFD
    std::u32string shown = original;
    for (std::size_t i = 0; i < original.size(); ++i) {
        if (original[i] == U'\n' || original[i] == U'\r' || original[i] == U'\t')
            shown[i] = U' ';
        else if (!isShown(original[i]) && !isJoinerInWord(original, i))
            shown[i] = U'\ufffd';
    }
    const auto limit = static_cast<std::size_t>(std::max<qsizetype>(maxLength, 1));
    if (shown.size() > limit)
        shown.replace(limit / 2, shown.size() - (limit - 1), 1, U'\u2026');
    return QString::fromStdU32String(shown);
}

QString displayableInMenu(const QString &foreign)
{
    return displayable(foreign).replace(u'&', QStringLiteral("&&"));
}

} // namespace inkory
