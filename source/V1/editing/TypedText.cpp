#include "V1/editing/TypedText.h"

namespace
{

bool isLeftOut(char32_t character)
{
    if (character == U'\n' || character == U'\t')
        return false;
    return QChar::category(character) == QChar::Other_Control || QChar::isSurrogate(character) ||
           QChar::isNonCharacter(character) || character == QChar::ObjectReplacementCharacter;
}

} // namespace

TypedText typedText(const QString &text, int room)
{
    TypedText typed;
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t character = text[i].unicode();
        if (character == U'\r') {
            if (i + 1 < text.size() && text[i + 1] == QLatin1Char('\n'))
                continue;
            character = U'\n';
        } else if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            character = QChar::surrogateToUcs4(text[i], text[i + 1]);
            ++i;
        }
        if (isLeftOut(character)) {
            ++typed.leftOut;
            continue;
        }
        const QString added = QString::fromUcs4(&character, 1);
        if (typed.text.size() + added.size() > room) {
            typed.isCut = true;
            break;
        }
        typed.text += added;
    }
    return typed;
}
