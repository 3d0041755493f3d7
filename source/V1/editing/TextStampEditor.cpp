#include "V1/editing/TextStampEditor.h"

#include "V1/editing/EditedTextItem.h"
#include "V1/editing/TypedText.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QScopedValueRollback>
#include <QTextBlock>
#include <QTextLayout>
#include <QtMath>

#include <cmath>

using namespace inkory;

namespace
{

constexpr double caretWidth = 1;     // units
constexpr double firstFontSize = 12; // points; until a person chooses another one

// Qt's text control asks for this palette when it is made. Paper is light, whatever the theme, and selected text stays
// as black as it is.
void useSelectionColorsOfPaper()
{
    constexpr const char *textControl = "QWidgetTextControl";
    QPalette colors = QApplication::palette(textControl);
    colors.setColor(QPalette::Highlight, QColor(180, 213, 254));
    colors.setColor(QPalette::HighlightedText, Qt::black);
    QApplication::setPalette(colors, textControl);
}

} // namespace

TextStampEditor::TextStampEditor(QWidget *container) : QGraphicsView(container)
{
    setObjectName(QStringLiteral("textEditor"));
    setAccessibleName(tr("Text"));
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    useSelectionColorsOfPaper();
    m_item = new EditedTextItem(*this);
    QPalette clear = palette();
    clear.setColor(QPalette::Base, Qt::transparent);
    setPalette(clear);
    viewport()->setAutoFillBackground(false);
    m_scene.addItem(m_item);
    m_scene.setStickyFocus(true);
    m_item->setFocus(); // whenever the editor has it
    setScene(&m_scene);
    QFont font = QGuiApplication::font();
    font.setPointSizeF(firstFontSize);
    m_typingAttributes = TextStorage::characterFormat(font);
    hide();
}

TextStampEditor::~TextStampEditor()
{
    const QSignalBlocker blocker(this); // who would hear it is half gone
    removeTextStorage();
}

void TextStampEditor::replaceTextStorage(std::shared_ptr<TextStorage> text)
{
    removeTextStorage();
    m_text = std::move(text);
    QTextDocument &document = m_text->document();
    m_item->setDocument(&document);
    m_text->attachLayoutDevice();
    document.documentLayout()->setProperty("cursorWidth", qRound(caretWidth * TextStorage::layoutScale));
    document.setUndoRedoEnabled(true); // empties the history
    m_connections = {connect(&document, &QTextDocument::contentsChanged, this, &TextStampEditor::fitToText),
                     connect(document.documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
                             &TextStampEditor::fitToText),
                     connect(&document, &QTextDocument::undoAvailable, this, &TextStampEditor::undoAvailabilityChanged),
                     connect(&document, &QTextDocument::redoAvailable, this, &TextStampEditor::undoAvailabilityChanged),
                     connect(&document, &QTextDocument::cursorPositionChanged, this, &TextStampEditor::followCursor)};
    fitToText();
    Q_EMIT undoAvailabilityChanged();
}

void TextStampEditor::removeTextStorage()
{
    if (!m_text)
        return;
    for (const QMetaObject::Connection &connection : m_connections)
        disconnect(connection);
    m_connections.clear();
    m_item->setDocument(nullptr); // makes an empty one of its own, and takes the layout's device away
    m_text->attachLayoutDevice();
    m_text->document().setUndoRedoEnabled(false);
    m_text.reset();
    Q_EMIT undoAvailabilityChanged();
}

void TextStampEditor::place(const OverlayPoint &origin, double scaleFactor)
{
    m_origin = origin;
    m_scaleFactor = scaleFactor;
    applyGeometry();
}

OverlayRect TextStampEditor::frame() const
{
    return {m_origin.x, m_origin.y, m_size.width() * m_scaleFactor, m_size.height() * m_scaleFactor};
}

void TextStampEditor::fitToText()
{
    if (m_isFitting || !m_text)
        return;
    const QScopedValueRollback fitting(m_isFitting, true); // laying out tells of it
    const QSizeF size = m_text->layOutUnwrapped();
    if (size == m_size)
        return;
    m_size = size;
    applyGeometry();
}

// Widgets stand on whole pixels; the item takes what is left of the place.
void TextStampEditor::applyGeometry()
{
    const double scale = m_scaleFactor / TextStorage::layoutScale;
    const QPoint corner(qFloor(m_origin.x), qFloor(m_origin.y));
    const QPointF rest = QPointF(m_origin.x, m_origin.y) - corner;
    m_item->setPos(rest / scale);
    const QSizeF onScreen = m_size * m_scaleFactor;
    const QSize size(qCeil(rest.x() + onScreen.width()) + 1, qCeil(rest.y() + onScreen.height()) + 1);
    m_scene.setSceneRect(0, 0, size.width() / scale, size.height() / scale);
    setTransform(QTransform::fromScale(scale, scale));
    setGeometry(QRect(corner, size));
}

QTextCursor TextStampEditor::textCursor() const
{
    return m_item->textCursor();
}

void TextStampEditor::setSelectedRange(int from, int length)
{
    QTextCursor cursor = m_item->textCursor();
    cursor.setPosition(from);
    cursor.setPosition(from + length, QTextCursor::KeepAnchor);
    m_item->setTextCursor(cursor);
    followCursor();
}

// The document tells where its cursors go only when it is changed.
void TextStampEditor::followCursor()
{
    const QTextCursor cursor = m_item->textCursor();
    if (cursor.position() == m_cursorPosition && cursor.anchor() == m_cursorAnchor)
        return;
    m_cursorPosition = cursor.position();
    m_cursorAnchor = cursor.anchor();
    takeTypingAttributes();
}

void TextStampEditor::setTypingAttributes(const QTextCharFormat &attributes)
{
    m_typingAttributes = attributes;
    if (!m_text)
        return;
    QTextCursor cursor = m_item->textCursor();
    if (m_text->isEmpty())
        cursor.setBlockCharFormat(attributes); // the empty line is as high as what will be typed
    if (!cursor.hasSelection()) {
        cursor.setCharFormat(attributes);
        m_item->setTextCursor(cursor);
    }
    Q_EMIT typingAttributesChanged();
}

// Where the cursor went, the next characters are like those before it; in an empty text they stay what they were.
void TextStampEditor::takeTypingAttributes()
{
    if (!m_text)
        return;
    if (m_text->isEmpty()) {
        QTextCursor cursor = m_item->textCursor(); // of the cursor only: a change of the text would end redoing
        cursor.setCharFormat(m_typingAttributes);
        m_item->setTextCursor(cursor);
        return;
    }
    const QTextCharFormat attributes = m_item->textCursor().charFormat();
    if (attributes == m_typingAttributes)
        return;
    m_typingAttributes = attributes;
    Q_EMIT typingAttributesChanged();
}

void TextStampEditor::changeFormat(const QTextCharFormat &change)
{
    QTextCharFormat typed = m_typingAttributes;
    typed.merge(change);
    if (m_text && m_item->textCursor().hasSelection()) {
        m_item->textCursor().mergeCharFormat(change);
        m_typingAttributes = typed;
        Q_EMIT typingAttributesChanged();
    } else {
        setTypingAttributes(typed);
    }
}

bool TextStampEditor::canUndo() const
{
    return m_text && m_text->document().isUndoAvailable();
}

bool TextStampEditor::canRedo() const
{
    return m_text && m_text->document().isRedoAvailable();
}

void TextStampEditor::undo()
{
    QTextCursor cursor = m_item->textCursor();
    if (m_text)
        m_text->document().undo(&cursor);
    m_item->setTextCursor(cursor);
}

void TextStampEditor::redo()
{
    QTextCursor cursor = m_item->textCursor();
    if (m_text)
        m_text->document().redo(&cursor);
    m_item->setTextCursor(cursor);
}

int TextStampEditor::room() const
{
    const QTextCursor cursor = m_item->textCursor();
    return maxLength - m_text->length() + (cursor.selectionEnd() - cursor.selectionStart());
}

void TextStampEditor::insertPlainText(const QString &text)
{
    if (!m_text)
        return;
    const TypedText typed = typedText(text, std::max(room(), 0));
    QTextCursor cursor = m_item->textCursor();
    if (!typed.text.isEmpty()) {
        cursor.insertText(typed.text, m_typingAttributes);
        m_item->setTextCursor(cursor);
    }
    if (typed.isCut)
        Q_EMIT refused(tr("A text can have %L1 characters. The rest was left out.").arg(maxLength));
    else if (typed.leftOut > 0)
        Q_EMIT refused(tr("%n character(s) that cannot be shown were left out.", nullptr, typed.leftOut));
}

void TextStampEditor::toggleBold()
{
    QTextCharFormat change;
    change.setFontWeight(m_typingAttributes.fontWeight() > QFont::Normal ? QFont::Normal : QFont::Bold);
    changeFormat(change);
}

void TextStampEditor::toggleItalic()
{
    QTextCharFormat change;
    change.setFontItalic(!m_typingAttributes.fontItalic());
    changeFormat(change);
}

void TextStampEditor::toggleUnderline()
{
    QTextCharFormat change;
    change.setFontUnderline(!m_typingAttributes.fontUnderline());
    changeFormat(change);
}

void TextStampEditor::commitComposition()
{
    QGuiApplication::inputMethod()->commit();
    const QTextBlock paragraph = m_item->textCursor().block();
    if (!m_text || !paragraph.isValid() || paragraph.layout()->preeditAreaText().isEmpty())
        return; // the input method has done it
    QInputMethodEvent commit;
    commit.setCommitString(paragraph.layout()->preeditAreaText());
    inputMethodEvent(&commit);
}

void TextStampEditor::paste()
{
    insertPlainText(QGuiApplication::clipboard()->text());
}

void TextStampEditor::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // scrolling is the page view's
}

void TextStampEditor::drawForeground(QPainter *painter, const QRectF &)
{
    painter->setPen(QPen(QColor(Qt::gray), TextStorage::layoutScale)); // one unit
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(QRectF(m_item->pos(), m_size * TextStorage::layoutScale));
}
