#pragma once

#include "platform/pdf/EngineValues.h"

#include <QString>

namespace inkory
{

// What the person is told about a problem, and what to do next. Empty for None.

QString sentenceFor(OpenProblem problem);
QString sentenceFor(WriteProblem problem);

} // namespace inkory
