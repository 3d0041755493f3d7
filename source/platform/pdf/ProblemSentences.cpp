#include "platform/pdf/ProblemSentences.h"

#include <QCoreApplication>

namespace inkory
{

namespace
{

/// Gives the sentences to the translation tools.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(ProblemSentences)
};

} // namespace

QString sentenceFor(OpenProblem problem)
{
    switch (problem) {
    case OpenProblem::None:
        break;
    case OpenProblem::PasswordNeeded:
        return Text::tr("This document is protected by a password.");
    case OpenProblem::PasswordWrong:
        return Text::tr("That password is not right. Try again.");
    case OpenProblem::ProtectionUnknown:
        return Text::tr("This document is protected in a way that is not supported. Ask its sender for a copy without "
                        "that protection.");
    case OpenProblem::NotPdf:
        return Text::tr("This file is not a PDF document. Choose another file, or export it as a PDF with the program "
                        "that it was made with.");
    case OpenProblem::Damaged:
        return Text::tr("This PDF document is damaged beyond repair and cannot be shown. Ask its sender for a new "
                        "copy, or download it again.");
    case OpenProblem::NoPages:
        return Text::tr("This PDF document has no pages, so there is nothing to sign. Ask its sender for a new copy.");
    case OpenProblem::TooManyPages:
        return Text::tr("This PDF document has too many pages: at most %L1 can be opened. Split it, and open a part.")
            .arg(maxPageCount);
    }
    return {};
}

QString sentenceFor(WriteProblem problem)
{
    switch (problem) {
    case WriteProblem::None:
        break;
    case WriteProblem::Damaged:
        return Text::tr("This document is damaged: it can be read but not changed. Ask its sender for a new copy.");
    case WriteProblem::ProtectionUnknown:
        return Text::tr("This document is protected in a way that is not supported: it can be read but not changed. "
                        "Ask its sender for a copy without that protection.");
    case WriteProblem::ChangesForbidden:
        return Text::tr("The author of this document does not allow changes to it. Ask for a copy that may be signed.");
    case WriteProblem::NotBuilt:
        return Text::tr("The changed document could not be built. Your document is as it was.");
    }
    return {};
}

} // namespace inkory
