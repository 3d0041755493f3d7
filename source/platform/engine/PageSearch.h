#pragma once

#include "platform/engine/FoldedText.h"
#include "platform/pdf/PageText.h"

#include <vector>

namespace inkory
{

/// Where the query occurs on the page with this number. Occurrences of which nothing has a place are left out.
std::vector<FindHit> hitsOn(int page, const PageText &text, const FoldedText &query);

} // namespace inkory
