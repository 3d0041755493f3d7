#include "platform/pdf/OpeningOutcome.h"

#include "platform/pdf/ProblemSentences.h"

#include <QCoreApplication>

namespace inkory
{

namespace
{

/// The sentences, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(PageSource)
};

OpenOutcome failure(const QString &sentence)
{
    return {OpenOutcome::State::Failed, sentence, false, 0, {}};
}

} // namespace

OpenOutcome openingOutcome(EngineChannel::Ending ending, const OpenReply &reply)
{
    using Ending = EngineChannel::Ending;
    if (ending == Ending::NotStarted)
        return failure(
            Text::tr("The part of Inkory that reads PDF documents could not be started. Installing Inkory again may "
                     "help."));
    if (ending == Ending::Overran)
        return failure(
            Text::tr("Opening this PDF document takes too long: it is damaged, or made to be slow. Ask its sender "
                     "for another copy."));
    const OpenProblem problem = ending == Ending::Answered ? reply.problem : OpenProblem::Damaged;
    const bool asks = problem == OpenProblem::PasswordNeeded || problem == OpenProblem::PasswordWrong;
    const auto state = problem == OpenProblem::None ? OpenOutcome::State::Open
                       : asks                       ? OpenOutcome::State::PasswordNeeded
                                                    : OpenOutcome::State::Failed;
    return {state, sentenceFor(problem), reply.isRepaired, reply.pageCount, reply.firstPageSize};
}

} // namespace inkory
