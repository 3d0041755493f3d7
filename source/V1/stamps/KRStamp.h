#pragma once

#include "V1/stamps/StampHost.h"
#include "platform/core/Geometry.h"
#include "platform/core/UndoManager.h"

#include <QRectF>
#include <QString>

#include <cstdint>
#include <memory>

class KRPDFPage;

/// The kind of a stamp, fixed when it is made.
enum StampType : std::int32_t {
    StampTypeImage = 0,
    StampTypeText = 1,
};

/// What is being done with a stamp; set by the editing view.
enum StampMode : std::int32_t {
    StampModeNone = 0,     ///< New, before the view first sets a mode.
    StampModeNormal = 1,   ///< Placed, not selected.
    StampModeSelected = 2, ///< The view's selected stamp. Entering this mode puts the stamp on top of its page; where
                           ///< another one lay over it, that is a change without an undo step.
    StampModeDragging = 3, ///< Being moved or resized with the pointer.
    StampModeEditing = 4,  ///< A text stamp whose text is being edited in place.
};

/// Posted with the stamp as object when its appearance changed; user info "frame": where it was before, if that changed
/// (an inkory::PageRect in the space of the stamp's page).
inline const QString stampViewNeedsRefreshNotification = QStringLiteral("STAMP_VIEW_NEEDS_REFRESH");

/// A rectangle on one page with a rotation in quarter turns, which its page draws over its content. Base of the image
/// stamp and the text stamp: knows its geometry, its modes and the undo of both; the content is the subclass's. Owned
/// by its page's list, by the view's list and by the undo steps that refer to it. Main thread only.
class KRStamp : public inkory::UndoTarget, public std::enable_shared_from_this<KRStamp>
{
public:
    ~KRStamp() override;

    /// Page space, before the page's rotation. For rotations 1 and 3 the frame's width is the content's height. Setting
    /// it neither redraws nor registers undo.
    inkory::PageRect frame() const { return m_frame; }
    void setFrame(const inkory::PageRect &frame) { m_frame = frame; }

    /// Not owned; none for a stamp that is on no page.
    KRPDFPage *pdfPage() const { return m_pdfPage; }
    /// Moves the stamp from its page's list to the end of the other page's list; nothing for the same page.
    void setPdfPage(KRPDFPage *page);

    StampMode stampMode() const { return m_stampMode; }
    /// Nothing for the same mode.
    void setStampMode(StampMode mode);

    /// A kind that does not say its type is a programming mistake.
    virtual StampType stampType() const;
    virtual bool isEditable() const { return false; }
    /// Whether the selection overlay is shown over the stamp: not while its text is edited.
    bool needsOverlay() const;

    /// Quarter turns counter-clockwise in page space, 0 to 3. Setting it neither redraws nor registers undo.
    int stampRotation() const { return m_stampRotation; }
    void setStampRotation(int quarterTurns) { m_stampRotation = quarterTurns; }

    /// Joins the page's list; called when the stamp is made and when a deletion is undone.
    void setup();
    /// Leaves the page's list; the stamp remembers its page.
    void cleanup();

    /// The commands of a person: each is one undo step "Rotate Stamp". A quarter turn keeps the corner that is shown at
    /// the top left where it is.
    void rotateClockwise();
    void rotateCounterClockwise();
    void rotate180();
    /// Sets the rotation (0 to 3) with undo; the frame stays.
    void rotate(int quarterTurns);
    /// Exchanges the frame's width and height, keeping the corner shown at the top left. The result becomes the tracked
    /// frame, so that turning is never undone as a move. Also called when a drag enters a page of another orientation.
    void rotateFrame();

    /// Registers "Stamp Size && Position" for what changed since the last tracking point (nothing for a stamp's first
    /// tracking), and makes the present frame and page the tracking point.
    void trackFrameAndPageChanges();
    /// Makes the present frame and page the tracking point without undo.
    void resetLastFrameAndPage();

    /// Where a stamp stands, and its tracking point: all that dragging it changes. Refers to pages without owning them.
    struct Placement
    {
        KRPDFPage *page = nullptr;
        inkory::PageRect frame;
        KRPDFPage *lastPage = nullptr;
        inkory::PageRect lastFrame;
    };
    Placement placement() const { return {m_pdfPage, m_frame, m_lastPage, m_lastFrame}; }
    /// Puts the stamp back, for a drag that is given up: no undo, no announcement.
    void restorePlacement(const Placement &former);

    /// Draws the stamp into the current context, which is in the page's space: with its rotation, and on screen with
    /// the opacity of its mode.
    virtual void draw();

    void performUndoOperation(const QString &operation, const QVariant &argument) override;

protected:
    /// Stamps are made by the subclasses' create(): a constructor cannot join a list that owns it.
    KRStamp(const inkory::PageRect &frame, inkory::StampHost *pdfView, KRPDFPage *pdfPage);

    /// Adapts a new stamp, whose frame has the size wanted on screen, to its page's rotation, so that it shows upright.
    virtual void createStamp();
    /// Draws the content upright into the rectangle, y upward, with the opacity (0 to 1).
    virtual void drawStampInRect(const QRectF &rect, float frac);

    inkory::StampHost *pdfView() const { return m_pdfView; }
    void registerUndo(const QString &operation, const QVariant &argument, const char *actionName);
    void postNeedsRefresh(const QVariantMap &userInfo = {});

private:
    void moveToTop(KRPDFPage &page);
    void rotateWithObject(int quarterTurns);
    void updateFrameAndPage(const QVariantMap &former);
    float opacity() const;

    inkory::PageRect m_frame;
    inkory::StampHost *m_pdfView = nullptr;
    KRPDFPage *m_pdfPage = nullptr;
    StampMode m_stampMode = StampModeNone;
    int m_stampRotation = 0;
    KRPDFPage *m_lastPage = nullptr;
    inkory::PageRect m_lastFrame;
};

Q_DECLARE_METATYPE(std::shared_ptr<KRStamp>)
