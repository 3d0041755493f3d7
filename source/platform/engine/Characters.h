#pragma once

#include <QStringView>

namespace inkory
{

/// Calls the function with each character of the text and the index of its first unit. Halves of surrogate pairs are
/// characters, too.
template <class Function> void forEachCharacter(QStringView text, Function function)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const char32_t character = isPair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : text[i].unicode();
        function(character, i);
        i += isPair ? 1 : 0;
    }
}

} // namespace inkory
