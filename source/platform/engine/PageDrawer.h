#pragma once

#include "platform/engine/OpenedDocument.h"
#include "platform/pdf/EngineValues.h"

#include <QByteArray>
#include <QImage>

#include <functional>
#include <vector>

namespace inkory
{

/// Opens one document and draws its pages. Everything blocks until it is done; nothing throws. One thread at a time.
class PageDrawer
{
public:
    using Repair = OpenedDocument::Repair;

    /// As OpenedDocument::open().
    OpenReply open(const QByteArray &document, const QByteArray &password, Repair repair);

    /// For those that read what this one draws; it lives as long as this object.
    const OpenedDocument &document() const { return m_document; }

    /// The sizes of all pages as displayed, in points, as the drawing library sees them: also absurd ones, and empty
    /// ones for pages that it cannot find. None unless a document is open.
    std::vector<QSizeF> measureAllPages();

    /// Draws on white into the target, which has the region's size and the format RGB32. Answers whether the page could
    /// be drawn, and was not cancelled: the function is asked about every tenth operator of the page.
    bool draw(const DrawRequest &request, QImage &target, const std::function<bool()> &isCancelled);

private:
    OpenedDocument m_document;
};

} // namespace inkory
