#pragma once

#include "platform/engine/OpenedDocument.h"
#include "platform/pdf/PageText.h"

#include <functional>
#include <vector>

namespace inkory
{

/// Reads what the pages of an opened document say and where they lead. Everything blocks until it is done; nothing
/// throws. What is not there, or cannot be read, is empty; what the functions answer once they are cancelled is of no
/// use. One thread at a time.
class PageReader
{
public:
    using IsCancelled = std::function<bool()>;

    /// The document has to outlive this object, and may be opened anew meanwhile.
    explicit PageReader(const OpenedDocument &document) : m_document(document) {}

    PageText text(int page, const IsCancelled &isCancelled) const;

    /// In the order in which they lie over each other, the topmost last.
    std::vector<PageLink> links(int page) const;

    std::vector<OutlineItem> outline(const IsCancelled &isCancelled) const;

    /// Goes on until about 50 ms have passed or there is enough to answer, but over one page at least.
    FindReply find(const FindRequest &request, const IsCancelled &isCancelled) const;

private:
    const OpenedDocument &m_document;
};

} // namespace inkory
