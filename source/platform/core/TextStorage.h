#pragma once

#include <QFont>
#include <QMetaType>
#include <QSizeF>
#include <QString>
#include <QTextCharFormat>
#include <QTextDocument>

#include <functional>
#include <vector>

class QTextBlock;

namespace inkory
{

/// Characters with their formats, as a value: for comparing two states of a text, and for undo steps.
struct AttributedText
{
    struct Run
    {
        QString text; ///< Paragraphs are separated by U+2029.
        QTextCharFormat format;

        bool operator==(const Run &) const = default;
    };

    std::vector<Run> runs; ///< Neighbours differ in their formats.
    /// What makes lines without characters in the first paragraph as high as they are; invalid for an empty text.
    QTextCharFormat firstParagraph;

    bool isEmpty() const { return runs.empty(); }
    bool operator==(const AttributedText &) const = default;
};

/// A text with formats that several may look at: a stamp draws it, an editor changes it in place. A QTextDocument lays
/// out in whole pixels of a screen; this one is laid out in tenths of a unit of 1/72 inch and without hinting, so that
/// it has the same lines and the same places at every zoom, in every window and in a file. Main thread only.
class TextStorage
{
public:
    /// Blank at both ends of every line, in units of 1/72 inch.
    static constexpr double lineFragmentPadding = 5;
    /// How many of the layout's units make one unit of 1/72 inch.
    static constexpr double layoutScale = 10;

    /// Where a line of a font stands: its height, and how far below its top its baseline is. In units of 1/72 inch.
    struct LineMetrics
    {
        double height = 0;
        double baseline = 0;
    };
    static LineMetrics lineMetrics(const QFont &font);

    /// The font as texts here have to use it: what differs from it only in hinting would be laid out differently.
    static QFont layoutFont(const QFont &font);
    /// What characters typed in the font have as their format; with no colour the text is black.
    static QTextCharFormat characterFormat(const QFont &font);

    TextStorage();
    TextStorage(const TextStorage &) = delete;
    TextStorage &operator=(const TextStorage &) = delete;

    /// For an editor, which may change it, but has to give it back with its paint device (see attachLayoutDevice()).
    QTextDocument &document() { return m_document; }

    bool isEmpty() const { return length() == 0; }
    /// In UTF-16 code units, a paragraph's end counting as one.
    int length() const { return m_document.characterCount() - 1; }

    AttributedText attributedText() const;
    /// Replaces all characters and formats.
    void setAttributedText(const AttributedText &text);
    /// Changes the given properties of these characters; positions outside of the text are left out.
    void addFormat(int from, int length, const QTextCharFormat &change);

    /// Wraps at this width (with the padding at both ends), in units of 1/72 inch. Costs nothing when neither text nor
    /// width changed. A line that was as wide as this before it was rounded still fits.
    void layOut(double width);
    /// Lays out without wrapping. Answers the size of that, padding included, in units of 1/72 inch: laid out in this
    /// width the lines are the same.
    QSizeF layOutUnwrapped();
    /// Visits the lines that fit into the height (in units of 1/72 inch) from the top: the paragraph, the line's index
    /// in its layout, and where that layout stands, in its own units.
    void visitLines(double height, const std::function<void(const QTextBlock &, int, const QPointF &)> &visit) const;

    /// Some editors take the layout's device away when they let go of a document: gives it back. Also renews what
    /// depends on the screen's resolution.
    void attachLayoutDevice();

private:
    QTextDocument m_document;
};

} // namespace inkory

Q_DECLARE_METATYPE(inkory::AttributedText)
