#pragma once

#include "platform/core/Result.h"
#include "platform/core/SecretBytes.h"
#include "platform/pdf/EngineValues.h"
#include "platform/pdf/PageText.h"

#include <QImage>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace inkory
{

class DocumentFile;

/// What opening a file for drawing found.
struct OpenOutcome
{
    enum class State { Open, PasswordNeeded, Failed };

    State state = State::Failed;
    /// What the person is told: why it failed, or why a password is asked for ("This document is protected by a
    /// password." at first; that the password is wrong when one was given).
    QString message;
    /// Whether the file had to be repaired to find its pages.
    bool isRepaired = false;
    /// At most maxPageCount; a file with more fails.
    int pageCount = 0;
    /// The first page's size as displayed, in points: enough to show it before all geometry is known. Between 1 and
    /// maxPageSide a side, whatever the file says.
    QSizeF firstPageSize;
};

/// Visible pages come before thumbnails, these before what may be needed soon. Idle is for images that nobody waits
/// for: they come after everything else, also outline and search, and one that is being drawn makes room for whatever
/// comes, to be begun anew later.
enum class DrawPriority { Visible, Thumbnail, Ahead, Idle };

/// Names a request; 0 names none.
using DrawToken = quint64;

/// Draws and reads pages of one file in helper processes: one, and a second one while visible pages would have to wait.
/// A helper that dies or takes too long is replaced. All calls come from the main thread and return at once; all
/// answers arrive there, from the event loop. Destroying the source ends its helpers, whatever they are doing.
class PageSource
{
public:
    virtual ~PageSource() = default;

    /// Opens the file with the password (empty: none). Asked again after PasswordNeeded with another password. Until
    /// the file's private copy exists, the file itself is read. Opening again before the answer came replaces the
    /// first call, which is then not answered. Answers within seconds: what takes longer fails.
    virtual void open(std::shared_ptr<DocumentFile> file, const SecretBytes &password,
                      std::function<void(const OpenOutcome &)> done) = 0;

    /// Calls when the first page has been drawn, or after a moment in case nobody wants to see one: for work that
    /// would be in its way.
    virtual void callAfterFirstPage(std::function<void()> done) = 0;

    /// Draws on white, at device pixel ratio 1. Fails on a page that cannot be drawn (its helper died over it twice, or
    /// took longer than it may), and on regions that are empty or of more than 64 megapixels or 32,767 pixels a side.
    /// Not called back once cancelled.
    virtual DrawToken draw(const DrawRequest &request, DrawPriority priority,
                           std::function<void(const Result<QImage> &)> done) = 0;

    // The following are answered like draw(): in the order of their priority, from the event loop, once, not at all
    // when cancelled. Pages are counted in the file's own order. They fail where the helper dies over them twice or
    // takes too long. A page that does not exist, or cannot be read, has no text and no links.

    virtual DrawToken readText(int page, DrawPriority priority, std::function<void(const Result<PageText> &)> done) = 0;
    /// In the order in which they lie over each other, the topmost last.
    virtual DrawToken readLinks(int page, DrawPriority priority,
                                std::function<void(const Result<std::vector<PageLink>> &)> done) = 0;
    /// Empty for a document that has none. Comes after all that is drawn and wanted.
    virtual DrawToken readOutline(std::function<void(const Result<std::vector<OutlineItem>> &)> done) = 0;
    /// Searches on when asked again from FindReply::nextPage on. Comes after all that is drawn and wanted. Fails over
    /// the request's first page only: the one after it can be searched. A text of nothing but white space occurs
    /// nowhere.
    virtual DrawToken find(const FindRequest &request, std::function<void(const Result<FindReply> &)> done) = 0;

    /// Forgets the request, or stops it if a helper is at it. A token that is done or unknown is ignored.
    virtual void cancel(DrawToken token) = 0;
};

std::unique_ptr<PageSource> makePageSource();

} // namespace inkory
