#pragma once

#include "platform/engine/FoldedText.h"
#include "platform/pdf/PageText.h"

#include <cstddef>

namespace inkory
{

/// Adds to the reply where the query occurs on the page with this number, words divided at the ends of lines included,
/// and what there is to be said of the page. Occurrences of which nothing has a place are left out. Answers how many
/// areas were added.
std::size_t addHits(int page, const PageText &text, const FoldedText &query, FindReply &reply);

} // namespace inkory
