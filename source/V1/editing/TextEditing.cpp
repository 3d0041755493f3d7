#include "V1/editing/TextEditing.h"

#include "V1/editing/KRPDFOverlayView.h"
#include "V1/editing/KRPDFView.h"
#include "V1/editing/StampViewOverlay.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRPDFPage.h"
#include "V1/stamps/KRTextStamp.h"
#include "platform/core/NotificationCenter.h"
#include "platform/pdf/PDFDocument.h"
#include "platform/widgets/FontManager.h"

#include <QApplication>
#include <QMenuBar>
#include <QTextCursor>

using namespace inkory;

namespace
{

bool isSideways(int degrees)
{
    return degrees % 180 != 0;
}

} // namespace

TextEditing::TextEditing(KRPDFView &view, OverlayTracking &overlays) : m_view(view), m_overlays(overlays) {}

void TextEditing::setUp()
{
    m_textEditor = new TextStampEditor(m_overlays.clipView());
    m_textEditor->installEventFilter(m_overlays.clipView()); // there the pointer is not over the pages
    connect(m_textEditor, &TextStampEditor::endRequested, this, &TextEditing::endTextEditing);
    connect(m_textEditor, &TextStampEditor::typingAttributesChanged, this, &TextEditing::showTypingAttributes);
    connect(m_textEditor, &TextStampEditor::undoAvailabilityChanged, &m_view, &KRPDFView::typingUndoChanged);
    connect(m_textEditor, &TextStampEditor::refused, &m_view, &KRPDFView::textRefused);
    connect(qApp, &QApplication::focusChanged, this, &TextEditing::followFocus);
    connect(&m_view, &PDFView::contentViewBoundsChanged, this, &TextEditing::endTextEditing);
    connect(&m_view, &PDFView::scaleFactorWillChange, this, &TextEditing::endTextEditing);
}

// Another part of the window took the keyboard to be typed into: keys of its own are no longer the text's. Panels and
// menus only borrow it.
void TextEditing::followFocus(const QWidget *, QWidget *now)
{
    const bool isElsewhere = now && now->window() == m_view.window() && now != &m_view && !m_view.isAncestorOf(now);
    const bool isOnToolbar = m_view.stampViewToolbar() && m_view.stampViewToolbar()->isAncestorOf(now);
    if (!isEditing() || (!isElsewhere && !isOnToolbar) || qobject_cast<QMenuBar *>(now))
        return;
    endTextEditing();
    now->setFocus();
}

KRTextStamp *TextEditing::selectedText() const
{
    return dynamic_cast<KRTextStamp *>(m_view.selectedStampView());
}

KRTextStamp *TextEditing::editedStamp() const
{
    KRTextStamp *stamp = selectedText();
    return stamp && stamp->stampMode() == StampModeEditing ? stamp : nullptr;
}

ViewPoint TextEditing::placementPoint(const ViewPoint &baselineStart) const
{
    return {baselineStart.x, baselineStart.y + OverlayTracking::textCursorDescent()};
}

void TextEditing::addTextStampView(const ViewPoint &point)
{
    auto *page = dynamic_cast<KRPDFPage *>(m_view.pageForPoint(point, PageSearch::Nearest));
    if (!page || !m_textEditor || !m_view.document()->canSave()) {
        Q_EMIT m_view.placementRefused();
        return;
    }
    const QFont font = newTextFont();
    if (const auto chosen = sharedFontManager().selectedFont(); chosen && chosen->family() != font.family())
        Q_EMIT m_view.fontReplaced(chosen->family(), font.family());
    const TextStorage::LineMetrics line = TextStorage::lineMetrics(font);
    const double scale = m_view.scaleFactor();
    const double padding = scale * TextStorage::lineFragmentPadding;
    const double baseline = point.y - OverlayTracking::textCursorDescent();
    const PageRect onPage = m_view.convertRectToPage(
        {point.x - padding, baseline - scale * (line.height - line.baseline), 2 * padding, scale * line.height}, page);
    // A new stamp's frame has the size that is wanted on the screen.
    const PageRect frame =
        isSideways(page->rotation()) ? PageRect{onPage.x, onPage.y, onPage.height, onPage.width} : onPage;
    const auto stamp = KRTextStamp::create(std::make_shared<TextStorage>(), frame, &m_view, page);
    m_view.addStampView(stamp);
    stamp->setStampMode(StampModeEditing);
    m_view.updateStampViewOverlay();
    startTextEditing();
    NotificationCenter::defaultCenter().post(pdfViewAddedTextStampNotification, &m_view);
}

void TextEditing::startTextEditing()
{
    KRTextStamp *stamp = selectedText();
    if (!stamp || !m_textEditor || m_textEditor->isAttached())
        return;
    stamp->setStampMode(StampModeEditing);
    const OverlayRect onScreen = m_view.convertRectToOverlay(m_view.stampRect(*stamp));
    const std::shared_ptr<TextStorage> text = stamp->textStorage();
    m_textEditor->place({onScreen.x, onScreen.y}, m_view.scaleFactor());
    m_textEditor->replaceTextStorage(text);
    m_textEditor->show();
    if (text->isEmpty())
        m_textEditor->setTypingAttributes(newTextAttributes());
    else
        m_textEditor->selectAll(); // what is typed instead is like the last character
    m_textEditor->setFocus();
    stamp->beginEditing();
    text->document().clearUndoRedoStacks();
    m_overlays.stampViewOverlay()->hide();
    m_view.setNeedsDisplayInRect(m_view.stampRect(*stamp));
    Q_EMIT m_view.editingTextChanged();
}

// Where the stamp is to stand: as large as its text, its upper left corner where it was before the edit, wherever its
// page has gone meanwhile. Of a stamp that shows turned by a quarter turn the text lies across it.
ViewRect TextEditing::editedRect(const KRTextStamp &stamp) const
{
    const OverlayRect editor = m_textEditor->frame();
    const ViewRect former = m_view.stampRect(stamp);
    const ViewRect rect{former.x, former.maxY() - editor.height, editor.width, editor.height};
    const int pageTurns = stamp.pdfPage() ? stamp.pdfPage()->rotation() / 90 : 0;
    if ((pageTurns + stamp.stampRotation()) % 2 == 0)
        return rect;
    return {rect.x, rect.y + rect.height - rect.width, rect.height, rect.width};
}

void TextEditing::endTextEditing()
{
    if (!editedStamp())
        return;
    m_textEditor->commitComposition();
    const auto stamp = std::static_pointer_cast<KRTextStamp>(editedStamp()->shared_from_this());
    stamp->setStampMode(StampModeSelected);
    closePanels();
    const bool isKept = !stamp->textStorage()->isEmpty();
    const bool heldText = !stamp->previousTextStorage().isEmpty();
    const PageRect frame = m_view.convertRectToPage(editedRect(*stamp), stamp->pdfPage());
    m_textEditor->removeTextStorage();
    stamp->endEditing(); // registers the frame from before the edit, too
    m_textEditor->hide();
    if (isKept) {
        stamp->setFrame(frame);
        m_view.forceBoundsForSelectedStampView();
        stamp->resetLastFrameAndPage();
    } else {
        discard(stamp, heldText);
    }
    m_view.setFocus();
    m_view.updateStampViewOverlay();
    m_view.annotationsChangedOnPage(stamp->pdfPage());
    m_view.setNeedsDisplayInRect(m_view.visibleRect());
    Q_EMIT m_view.editingTextChanged();
}

void TextEditing::discard(const std::shared_ptr<KRTextStamp> &stamp, bool heldText)
{
    if (heldText)
        m_view.deleteStampView(stamp);
    else
        m_view.takeBackStampView(stamp);
}

void TextEditing::setBackgroundColor(const QColor &color)
{
    KRTextStamp *stamp = selectedText();
    if (!stamp)
        return;
    QTextCharFormat change;
    change.setBackground(color);
    if (stamp->stampMode() == StampModeEditing) {
        m_textEditor->changeFormat(change);
    } else {
        stamp->textStorage()->addFormat(0, stamp->textStorage()->length(), change);
        QTextCharFormat typed = m_textEditor->typingAttributes();
        typed.merge(change);
        m_textEditor->setTypingAttributes(typed);
        m_view.annotationsChangedOnPage(stamp->pdfPage());
        m_view.noteChangeWithoutStep();
    }
    m_view.setNeedsDisplayInRect(m_view.visibleRect());
}
