#pragma once

#include <QString>

/// What of a text from elsewhere (the clipboard, an input method, another program) a stamp takes.
struct TypedText
{
    QString text;       ///< Nothing in it is changed but the ends of lines, which are "\n".
    int leftOut = 0;    ///< Characters that nobody could see and no file could give back: control characters, halves
                        ///< of surrogate pairs, noncharacters.
    bool isCut = false; ///< There was more than fits.
};

/// At most `room` UTF-16 code units of the text; no surrogate pair is cut in two.
TypedText typedText(const QString &text, int room);
