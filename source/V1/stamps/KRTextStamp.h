#pragma once

#include "V1/stamps/KRStamp.h"
#include "platform/core/TextStorage.h"

/// A stamp that shows text with formats: wrapped at its frame's width, cut at its height. The text is edited in place
/// by the editing view, on the stamp's own text storage, while the stamp itself draws nothing; what an edit changed is
/// one undo step "Text changed".
class KRTextStamp : public KRStamp
{
public:
    /// The frame is in page space, with the size that the text is to have on screen; the storage is shared, not copied.
    /// The stamp joins the page's list.
    static std::shared_ptr<KRTextStamp> create(std::shared_ptr<inkory::TextStorage> text, const inkory::PageRect &frame,
                                               inkory::StampHost *pdfView, KRPDFPage *pdfPage);

    StampType stampType() const override { return StampTypeText; }
    bool isEditable() const override { return true; }

    /// Never none.
    const std::shared_ptr<inkory::TextStorage> &textStorage() const { return m_textStorage; }
    /// The text from before the last edit; empty once its change has been registered.
    const inkory::AttributedText &previousTextStorage() const { return m_previousTextStorage; }

    /// Remembers the text. Called before it is edited in place.
    void beginEditing();
    /// Registers a step if there was a text and it is another one now. Called after the edit, while the stamp still has
    /// the frame from before it.
    void endEditing();
    /// Registers the step that brings back this text, and the present frame and page with it.
    void registerUndo(const inkory::AttributedText &text);
    /// Undoing and redoing: "text", "frame" and "page" of the dictionary become the stamp's.
    void setTextWithFrameAndPage(const QVariantMap &former);
    /// Replaces all characters and formats; an editor of the same storage shows the change.
    void setScriptingContents(const inkory::AttributedText &text) { m_textStorage->setAttributedText(text); }

    /// Nothing while the text is being edited.
    void draw() override;

    void performUndoOperation(const QString &operation, const QVariant &argument) override;

protected:
    void drawStampInRect(const QRectF &rect, float frac) override;

private:
    KRTextStamp(std::shared_ptr<inkory::TextStorage> text, const inkory::PageRect &frame, inkory::StampHost *pdfView,
                KRPDFPage *pdfPage);

    std::shared_ptr<inkory::TextStorage> m_textStorage;
    inkory::AttributedText m_previousTextStorage;
};
