#pragma once

#include "platform/pdf/PageSource.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QRect>

#include <map>
#include <vector>

namespace inkory
{

class PDFDocument;
class PDFPage;

/// The images of page contents that a view shows, drawn in the background when they are missing. A page is one image up
/// to a size limit; above it, what is visible of it with a margin around, over the whole page from a smaller zoom, if
/// there was one. The images of pages far from those being shown go when there are too many. Owned by the view. Main
/// thread only.
class PageImageStore : public QObject
{
    Q_OBJECT

public:
    /// A part of a shown page in pixels of the whole shown page at that scale (pixels per point).
    struct Piece
    {
        double scale = 0;
        QRect region;
        QImage image;
        bool isPart = false; // not the whole page
    };

    /// Whether what is missing is to be drawn.
    enum class Missing { Request, Leave };

    explicit PageImageStore(DrawPriority priority, QObject *parent = nullptr);
    ~PageImageStore() override;

    /// Forgets everything; the document is not owned.
    void setDocument(PDFDocument *document);
    PDFDocument *document() const { return m_document; }

    /// The piece that shows the wanted part of the page (what lies outside it does not count) at the scale; none where
    /// there is none yet.
    const Piece *piece(const PDFPage &page, double scale, const QRect &wanted, Missing missing = Missing::Request);
    /// Whatever there is of the page, to be shown scaled until the right piece comes; none if there is nothing.
    const Piece *standIn(const PDFPage &page) const;
    /// The whole page, where standIn() shows only a part of it and there is one; to be shown below that.
    const Piece *backdrop(const PDFPage &page) const;
    /// Draws these pages, the first one first, when nothing else is to be done, as far as they may be one image each
    /// and there is room for them beside what is shown. Ends what was drawn ahead before and is not among them.
    void drawAhead(const std::vector<const PDFPage *> &pages, double scale);
    /// Whether the wanted part of the page could not be drawn at this scale. It is not tried again at the same scale.
    bool hasFailed(const PDFPage &page, double scale, const QRect &wanted) const;
    /// Forgets that the page could not be drawn, so that it is tried again when it is asked for next.
    void retry(const PDFPage &page);

    /// After each frame. Cancels the requests that were not asked for again (by piece()) since the last call, as their
    /// pages left the view; and what is drawn ahead, while something that is shown is missing.
    void cancelStaleRequests();

    /// Of all images, in bytes.
    qint64 heldBytes() const;

Q_SIGNALS:
    /// A piece of the page with this source index came, or turned out impossible.
    void pieceArrived(int sourceIndex);

private:
    struct Key
    {
        int sourceIndex;
        int extraQuarterTurns;
        auto operator<=>(const Key &) const = default;
    };
    struct Request
    {
        DrawToken token = 0;      // at the store's priority; 0 for what is only drawn ahead
        DrawToken aheadToken = 0; // may go on beside the other: whichever comes first is taken
        double scale = 0;
        QRect region;
        bool wanted = true; // in this frame
    };
    struct Held
    {
        Piece piece;
        Piece whole;            // where the piece is a part of the page
        int pageIndex = 0;      // in the document, when it was asked for last
        double failedScale = 0; // 0: nothing has failed
        QRect failedRegion;
        quint64 lastUse = 0;
    };

    struct Range
    {
        int first = 0;
        int last = -1;

        void include(int index);
        int distanceTo(int index) const;
    };

    static Key keyOf(const PDFPage &page);
    static qint64 bytesOf(const Held &held);
    static QRect regionToDraw(const PDFPage &page, double scale, const QRect &needed);
    DrawToken draw(const PDFPage &page, double scale, const QRect &region, DrawPriority priority);
    void request(const PDFPage &page, double scale, const QRect &needed);
    static void keep(Held &held, const Piece &arrival);
    void cancel(const Request &request);
    void arrived(const Key &key, bool isPart, const Result<QImage> &image);
    bool isShown(const Held &held) const { return held.lastUse + 1 >= m_frame; }
    void dropFarthest();

    QPointer<PDFDocument> m_document;
    DrawPriority m_priority;
    std::map<Key, Held> m_held;
    std::map<Key, Request> m_requests;
    Range m_shown;       // by index: the pages asked for in the last frame
    Range m_asked;       // and in this one so far
    quint64 m_frame = 1; // counts the calls of cancelStaleRequests()
};

} // namespace inkory
