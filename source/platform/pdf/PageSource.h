#pragma once

#include "platform/core/Result.h"
#include "platform/pdf/PageGeometry.h"

#include <QByteArray>
#include <QImage>
#include <QRect>
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
    /// At most 100,000; a file with more fails.
    int pageCount = 0;
    /// The first page's size as displayed, in points: enough to show it before all geometry is known. Between 1 and
    /// 14,400 a side, whatever the file says.
    QSizeF firstPageSize;
};

/// One region of one page as an image.
struct DrawRequest
{
    /// From 0, in the file's own order.
    int page = 0;
    /// How far the page is turned beyond what the file says, in quarter turns clockwise, 0 to 3.
    int extraQuarterTurns = 0;
    /// Pixels per point.
    double scale = 1;
    /// The part to draw, in pixels of the whole shown page at that scale: origin upper left, y downward. What lies
    /// outside the page is white.
    QRect region;
};

/// Visible pages come before thumbnails, these before what may be needed soon.
enum class DrawPriority { Visible, Thumbnail, Ahead };

/// Names a request; 0 names none.
using DrawToken = quint64;

/// Draws pages of one file off the main thread. All calls come from the main thread and return at once; all answers
/// arrive there, from the event loop. Destroying the source cancels everything and waits for nothing: one
/// operator of a hostile page may take minutes, and is left to itself then.
class PageSource
{
public:
    virtual ~PageSource() = default;

    /// Opens the file with the password (empty: none). Asked again after PasswordNeeded with another password. Until
    /// the file's private copy exists, it is read through its descriptor. Opening again before the answer came
    /// replaces the first call, which is then not answered.
    virtual void open(std::shared_ptr<DocumentFile> file, const QByteArray &password,
                      std::function<void(const OpenOutcome &)> done) = 0;

    /// The sizes of all pages as displayed, in points, as this engine sees them: also absurd ones, and empty ones for
    /// pages that it cannot find. No sizes at all for a file that cannot be opened. On its own worker.
    virtual void measureAllPages(std::function<void(const std::vector<QSizeF> &)> done) = 0;

    /// Draws on white, at device pixel ratio 1. Fails on a page that cannot be drawn, and on regions that are empty or
    /// of more than 64 megapixels or 32,767 pixels a side. Not called back once cancelled.
    virtual DrawToken draw(const DrawRequest &request, DrawPriority priority,
                           std::function<void(const Result<QImage> &)> done) = 0;

    /// Forgets the request, or stops it if it is being drawn. A token that is done or unknown is ignored.
    virtual void cancel(DrawToken token) = 0;
};

/// The drawing library in this process, on two drawing threads with a document of their own each, one of them kept free
/// for visible pages, and a third thread for measuring.
std::unique_ptr<PageSource> makePageSource();

/// Whether threads of page sources that are gone are still at work: a process that ends now must not wait for them.
bool pageSourcesAreBusy();

} // namespace inkory
