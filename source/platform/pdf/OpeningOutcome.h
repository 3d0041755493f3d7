#pragma once

#include "platform/pdf/EngineChannel.h"
#include "platform/pdf/PageSource.h"

namespace inkory
{

/// What came of opening a document in a helper, with the sentence for the person. The reply says something only where
/// the helper answered.
OpenOutcome openingOutcome(EngineChannel::Ending ending, const OpenReply &reply);

} // namespace inkory
