#include "platform/core/TextStorage.h"

#include <QAbstractTextDocumentLayout>
#include <QGuiApplication>
#include <QPaintDevice>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextFrame>
#include <QTextLayout>

#include <algorithm>

namespace inkory
{

namespace
{

constexpr int unitsPerInch = 72;
constexpr double tabDistance = 36; // units
// What a width or height may lose on its way from page to view and back, in layout units.
constexpr double tolerance = 0.5;

// Measures only: fonts get whole pixels of the device they are laid out on, so its pixels have to be small.
class LayoutDevice : public QPaintDevice
{
public:
    QPaintEngine *paintEngine() const override { return nullptr; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        constexpr int dotsPerInch = static_cast<int>(unitsPerInch * TextStorage::layoutScale);
        constexpr int large = 1 << 20;
        switch (metric) {
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return dotsPerInch;
        case PdmWidth:
        case PdmHeight:
            return large;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return QPaintDevice::metric(metric);
        }
    }
};

LayoutDevice &layoutDevice()
{
    static LayoutDevice device;
    return device;
}

// Margins and tab stops of a document are in pixels of the screen, whatever it is laid out on.
double inScreenPixels(double units)
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    const double dotsPerInch = screen ? screen->logicalDotsPerInchX() : unitsPerInch;
    return units * qRound(dotsPerInch) / unitsPerInch;
}

void append(std::vector<AttributedText::Run> &runs, const QString &text, const QTextCharFormat &format)
{
    if (!runs.empty() && runs.back().format == format)
        runs.back().text += text;
    else
        runs.push_back({text, format});
}

} // namespace

TextStorage::LineMetrics TextStorage::lineMetrics(const QFont &font)
{
    TextStorage line;
    QTextCursor(&line.m_document).setBlockCharFormat(characterFormat(font));
    const double height = line.layOutUnwrapped().height();
    const QTextLine first = line.m_document.firstBlock().layout()->lineAt(0);
    return {height, first.ascent() / layoutScale};
}

QFont TextStorage::layoutFont(const QFont &font)
{
    QFont result = font;
    result.setHintingPreference(QFont::PreferNoHinting);
    result.setStyleStrategy(
        static_cast<QFont::StyleStrategy>(QFont::PreferOutline | QFont::NoSubpixelAntialias | QFont::PreferAntialias));
    return result;
}

QTextCharFormat TextStorage::characterFormat(const QFont &font)
{
    QTextCharFormat format;
    format.setFont(layoutFont(font));
    return format;
}

TextStorage::TextStorage()
{
    m_document.setUndoRedoEnabled(false);
    m_document.setDocumentMargin(0);
    m_document.setDefaultFont(layoutFont(QGuiApplication::font()));
    attachLayoutDevice();
}

void TextStorage::attachLayoutDevice()
{
    m_document.documentLayout()->setPaintDevice(&layoutDevice());
    QTextFrameFormat frame = m_document.rootFrame()->frameFormat();
    const double padding = inScreenPixels(lineFragmentPadding);
    if (frame.leftMargin() != padding) {
        frame.setMargin(0);
        frame.setLeftMargin(padding);
        frame.setRightMargin(padding);
        m_document.rootFrame()->setFrameFormat(frame);
    }
    QTextOption option = m_document.defaultTextOption();
    if (option.tabStopDistance() != inScreenPixels(tabDistance)) {
        option.setTabStopDistance(inScreenPixels(tabDistance));
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        m_document.setDefaultTextOption(option);
    }
}

AttributedText TextStorage::attributedText() const
{
    AttributedText text;
    if (!isEmpty())
        text.firstParagraph = m_document.firstBlock().charFormat();
    for (QTextBlock block = m_document.firstBlock(); block.isValid(); block = block.next()) {
        if (block != m_document.firstBlock())
            append(text.runs, QString(QChar::ParagraphSeparator), block.charFormat());
        for (auto part = block.begin(); !part.atEnd(); ++part)
            append(text.runs, part.fragment().text(), part.fragment().charFormat());
    }
    return text;
}

void TextStorage::setAttributedText(const AttributedText &text)
{
    QTextCursor cursor(&m_document);
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.removeSelectedText();
    if (text.firstParagraph.isValid())
        cursor.setBlockCharFormat(text.firstParagraph);
    for (const AttributedText::Run &run : text.runs) {
        qsizetype start = 0;
        while (start <= run.text.size()) {
            const qsizetype end = run.text.indexOf(QChar::ParagraphSeparator, start);
            cursor.insertText(run.text.mid(start, end < 0 ? -1 : end - start), run.format);
            if (end < 0)
                break;
            cursor.insertBlock(cursor.blockFormat(), run.format);
            start = end + 1;
        }
    }
    cursor.endEditBlock();
}

void TextStorage::addFormat(int from, int length, const QTextCharFormat &change)
{
    const int end = std::min(from + length, this->length());
    if (from < 0 || from >= end)
        return;
    QTextCursor cursor(&m_document);
    cursor.setPosition(from);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    cursor.mergeCharFormat(change);
}

void TextStorage::layOut(double width)
{
    m_document.setTextWidth(std::max(width, 0.0) * layoutScale + tolerance);
}

QSizeF TextStorage::layOutUnwrapped()
{
    m_document.setTextWidth(-1);
    const double width = m_document.idealWidth();
    // Once more in its own width: text that runs from right to left stands at its right end.
    m_document.setTextWidth(width + tolerance);
    return {width / layoutScale, m_document.size().height() / layoutScale};
}

void TextStorage::visitLines(double height,
                             const std::function<void(const QTextBlock &, int, const QPointF &)> &visit) const
{
    const double end = height * layoutScale + tolerance;
    for (QTextBlock block = m_document.firstBlock(); block.isValid(); block = block.next()) {
        const QPointF origin = m_document.documentLayout()->blockBoundingRect(block).topLeft();
        const QTextLayout &layout = *block.layout();
        for (int i = 0; i < layout.lineCount(); ++i) {
            const QTextLine line = layout.lineAt(i);
            if (origin.y() + line.y() + line.height() > end)
                return;
            visit(block, i, origin);
        }
    }
}

} // namespace inkory
