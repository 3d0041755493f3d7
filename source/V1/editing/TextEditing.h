#pragma once

#include "platform/core/Geometry.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QTextCharFormat>

#include <memory>

class KRPDFView;
class KRTextStamp;
class OverlayTracking;
class TextStampEditor;

/// Editing a text stamp's text where it stands: from opening the editor over it to the frame that the stamp has
/// afterwards. A part of the editing view. There is no cancelling: however an edit ends, what was typed stays, and one
/// undo step takes it back.
class TextEditing : public QObject
{
    Q_OBJECT

public:
    TextEditing(KRPDFView &view, OverlayTracking &overlays);

    /// Makes the editor in the overlay container; once.
    void setUp();
    TextStampEditor *textEditor() const { return m_textEditor; }

    /// Places an empty text whose first character will stand at the point, on the lower edge of the text cursor's
    /// image, and starts editing it.
    void addTextStampView(const inkory::ViewPoint &point);
    /// Nothing without a selected text stamp.
    void startTextEditing();
    /// The selected text stamp takes the size of its new text. One without text goes: if it never had any, as if it had
    /// not been placed, otherwise with a step that brings it back. Nothing while nothing is edited.
    void endTextEditing();
    bool isEditing() const { return editedStamp() != nullptr; }

    void openFontPanel();
    void openColorPanel();
    /// Behind the selected characters, or what is typed next; behind the whole text while it is not edited.
    void setBackgroundColor(const QColor &color);

    /// A new text's first character at `baselineStart` on the screen is placed by this point.
    inkory::ViewPoint placementPoint(const inkory::ViewPoint &baselineStart) const;

private:
    KRTextStamp *selectedText() const;
    KRTextStamp *editedStamp() const;
    QFont newTextFont() const;
    QTextCharFormat newTextAttributes() const;
    inkory::ViewRect editedRect(const KRTextStamp &stamp) const;
    void discard(const std::shared_ptr<KRTextStamp> &stamp, bool heldText);
    void changeFont(const QFont &font);
    void changeColor(const QColor &color);
    void showTypingAttributes();
    void closePanels();
    void followFocus(const QWidget *before, QWidget *now);

    KRPDFView &m_view;
    OverlayTracking &m_overlays;
    TextStampEditor *m_textEditor = nullptr; // the overlay container's
    // To the shared panels, while they work for this view.
    QMetaObject::Connection m_fontPanel;
    QMetaObject::Connection m_colorPanel;
};
