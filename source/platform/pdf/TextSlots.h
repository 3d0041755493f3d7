#pragma once

#include "platform/pdf/EngineValues.h"

class QTextLine;

namespace inkory
{

/// Whether the text has letters of a script that runs from right to left, or a mark that stands for one.
bool hasRightToLeftLetters(const QString &text);

/// Where each character of the line stands, from left to right as displayed; the places fill the line without gaps. In
/// units of the layout; x is 0 where the layout's own x is 0. `text` is that of the whole layout. A ligature's
/// characters share its width; one that takes no width gets a part of its neighbour's.
std::vector<TextSlot> textSlots(const QTextLine &line, const QString &text);

} // namespace inkory
