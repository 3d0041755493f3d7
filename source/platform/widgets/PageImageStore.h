#pragma once

#include "platform/pdf/PageSource.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QRect>

#include <map>

namespace inkory
{

class PDFDocument;
class PDFPage;

/// The images of page contents that a view shows, drawn in the background when they are missing. A page is one image up
/// to a size limit; above it, what is visible of it with a margin around. The least recently shown images go when there
/// are too many. Owned by the view. Main thread only.
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
    };

    explicit PageImageStore(DrawPriority priority, QObject *parent = nullptr);
    ~PageImageStore() override;

    /// Forgets everything; the document is not owned.
    void setDocument(PDFDocument *document);
    PDFDocument *document() const { return m_document; }

    /// The piece that shows the needed part of the page at the scale; requests it where there is none yet and answers
    /// none.
    const Piece *piece(const PDFPage &page, double scale, const QRect &needed);
    /// Whatever there is of the page, to be shown scaled until the right piece comes; none if there is nothing.
    const Piece *standIn(const PDFPage &page) const;
    /// Whether the needed part of the page could not be drawn at this scale. It is not tried again at the same scale.
    bool hasFailed(const PDFPage &page, double scale, const QRect &needed) const;
    /// Forgets that the page could not be drawn, so that it is tried again when it is asked for next.
    void retry(const PDFPage &page);

    /// Cancels the requests that were not asked for again (by piece()) since the last call: their pages left the view.
    void cancelStaleRequests();

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
        DrawToken token = 0;
        double scale = 0;
        QRect region;
        bool wanted = true;
    };
    struct Held
    {
        Piece piece;
        double failedScale = 0; // 0: nothing has failed
        QRect failedRegion;
        quint64 lastUse = 0;
    };

    static Key keyOf(const PDFPage &page);
    QRect regionToDraw(const PDFPage &page, double scale, const QRect &needed) const;
    void request(const Key &key, double scale, const QRect &region);
    void arrived(const Key &key, const Result<QImage> &image);
    void dropLeastUsed();

    QPointer<PDFDocument> m_document;
    DrawPriority m_priority;
    std::map<Key, Held> m_held;
    std::map<Key, Request> m_requests;
    quint64 m_frame = 1; // counts the calls of cancelStaleRequests()
};

} // namespace inkory
