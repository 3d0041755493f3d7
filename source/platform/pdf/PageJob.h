#pragma once

#include "platform/pdf/EngineValues.h"
#include "platform/pdf/PageText.h"

#include <QImage>

#include <variant>
#include <vector>

// What a helper can be asked to do with the document that it has open, and what it answers.

namespace inkory
{

/// Pages are counted from 0, in the file's own order.
struct TextRequest
{
    int page = 0;
};

struct LinksRequest
{
    int page = 0;
};

struct OutlineRequest
{
};

using PageRequest = std::variant<DrawRequest, TextRequest, LinksRequest, OutlineRequest, FindRequest>;

/// Nothing where the request could not be fulfilled.
using PageAnswer =
    std::variant<std::monostate, QImage, PageText, std::vector<PageLink>, std::vector<OutlineItem>, FindReply>;

} // namespace inkory
