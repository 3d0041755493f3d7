#pragma once

#include "platform/pdf/EngineValues.h"

#include <QByteArray>
#include <QImage>

#include <functional>
#include <memory>
#include <vector>

namespace inkory
{

/// One document in the drawing library's hands. Everything blocks until it is done; nothing throws. One thread at a
/// time.
class PageDrawer
{
public:
    enum class Repair { IfNeeded, First };

    PageDrawer();
    PageDrawer(const PageDrawer &) = delete;
    PageDrawer &operator=(const PageDrawer &) = delete;
    ~PageDrawer();

    /// Opens a document; any former one is closed. The bytes are not copied: they have to outlive this object or the
    /// next opening. With Repair::First, what the writing library makes of the file is opened instead of the file: for
    /// files over which the drawing library died.
    OpenReply open(const QByteArray &document, const QByteArray &password, Repair repair);

    /// The sizes of all pages as displayed, in points, as the drawing library sees them: also absurd ones, and empty
    /// ones for pages that it cannot find. None unless a document is open.
    std::vector<QSizeF> measureAllPages();

    /// Draws on white into the target, which has the region's size and the format RGB32. Answers whether the page could
    /// be drawn, and was not cancelled: the function is asked about every tenth operator of the page.
    bool draw(const DrawRequest &request, QImage &target, const std::function<bool()> &isCancelled);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace inkory
