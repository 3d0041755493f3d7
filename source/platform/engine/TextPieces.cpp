#include "platform/engine/TextPieces.h"

#include "platform/pdf/EngineValues.h"

#include <QByteArray>

#include <optional>
#include <set>
#include <vector>

#include <qpdf/Pl_QPDFTokenizer.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace inkory
{

namespace
{

using Token = QPDFTokenizer::Token;

constexpr double glyphUnits = 1000; // in which a font states widths, to one unit of its size

struct ShownGlyph
{
    std::string fontName;
    int code = 0;
};

/// Looks for the glyphs that a content shows, where they begin and end, and whether it paints at all.
class GlyphFilter : public QPDFObjectHandle::TokenFilter
{
public:
    void handleToken(const Token &token) override
    {
        if (token.getType() == QPDFTokenizer::tt_name)
            m_name = token.getValue();
        else if (token.getType() == QPDFTokenizer::tt_string)
            m_string = token.getValue();
        else if (token.getType() == QPDFTokenizer::tt_word)
            follow(token.getValue());
        m_position += token.getRawValue().size();
        if (token.getType() == QPDFTokenizer::tt_word && token.getValue() == "ET")
            textEnd = m_position;
    }

    std::vector<ShownGlyph> glyphs;
    bool isPainting = false;
    std::size_t textBegin = 0; // of the first text object, in bytes of the content
    std::size_t textEnd = 0;   // behind the last one; 0 where there is none

private:
    void follow(const std::string &word)
    {
        static const std::set<std::string> painting{"S",  "s",  "f",  "F",  "f*", "B", "B*", "b",
                                                    "b*", "sh", "Do", "Tj", "TJ", "'", "\"", "BI"};
        isPainting = isPainting || painting.contains(word);
        if (word == "BT" && textEnd == 0)
            textBegin = m_position;
        if (word == "Tf")
            m_font = m_name;
        if (word == "Tj" && m_string.size() == 2)
            glyphs.push_back(
                {m_font, static_cast<unsigned char>(m_string[0]) << 8 | static_cast<unsigned char>(m_string[1])});
    }

    std::string m_name;
    std::string m_string;
    std::string m_font;
    std::size_t m_position = 0;
};

QPDFObjectHandle entry(QPDFObjectHandle dictionary, const std::string &key)
{
    return dictionary.isDictionary() ? dictionary.getKey(key) : QPDFObjectHandle::newNull();
}

// In thousandths of the font's size. The widths are lists, each behind the number of its first glyph.
std::optional<double> advance(const QPDFObjectHandle &font, int code)
{
    QPDFObjectHandle descendants = entry(font, "/DescendantFonts");
    if (!descendants.isArray() || descendants.getArrayNItems() != 1)
        return std::nullopt;
    QPDFObjectHandle widths = entry(descendants.getArrayItem(0), "/W");
    for (int i = 0; widths.isArray() && i + 1 < widths.getArrayNItems(); i += 2) {
        QPDFObjectHandle first = widths.getArrayItem(i);
        QPDFObjectHandle list = widths.getArrayItem(i + 1);
        if (!first.isInteger() || !list.isArray())
            return std::nullopt;
        const auto place = code - first.getIntValue();
        if (place >= 0 && place < list.getArrayNItems() && list.getArrayItem(static_cast<int>(place)).isNumber())
            return list.getArrayItem(static_cast<int>(place)).getNumericValue();
    }
    return std::nullopt;
}

std::string beginReading(const QString &text)
{
    std::string hex = "feff";
    for (const QChar unit : text)
        hex += QByteArray::number(unit.unicode(), 16).rightJustified(4, '0').toStdString();
    return "/Span <</ActualText <" + hex + ">>> BDC\n";
}

std::string saved(const std::string &content)
{
    return "q\n" + content + "Q\n";
}

std::string slotsContent(const OverlayPiece &piece, const ShownGlyph &glyph, double glyphAdvance)
{
    const QTransform &t = piece.lineToPage;
    std::string result = "q ";
    for (const double number : {t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy()})
        result += contentNumber(number) + ' ';
    result += "cm 3 Tr " + glyph.fontName + ' ' + contentNumber(piece.slotSize) + " Tf\n";
    const std::string code = QByteArray::number(glyph.code, 16).rightJustified(4, '0').toStdString();
    for (const TextSlot &slot : piece.slots) {
        const double percent = 100 * slot.width / (piece.slotSize * glyphAdvance / glyphUnits);
        result += beginReading(slot.text) + "BT " + contentNumber(percent) + " Tz 1 0 0 1 " + contentNumber(slot.x) +
                  " 0 Tm <" + code + "> Tj ET EMC\n";
    }
    return result + "Q\n";
}

// Says what the text objects of the content are to be read as. The mark ends before the font is forgotten: readers ask
// for its size there, to see what belongs together.
std::string readAs(const QString &text, const std::string &content, const GlyphFilter &found)
{
    return content.substr(0, found.textBegin) + beginReading(text) +
           content.substr(found.textBegin, found.textEnd - found.textBegin) + "\nEMC" + content.substr(found.textEnd);
}

// Readers take a text with letters that run from right to left for what stands from left to right, and turn it round.
// They do not do that with single characters that stand where they belong. The glyphs themselves are read as nothing.
std::string readInSlots(const OverlayPiece &piece, const std::string &content, const QPDFObjectHandle &resources,
                        const GlyphFilter &found)
{
    for (const ShownGlyph &glyph : found.glyphs) {
        const QPDFObjectHandle font = entry(entry(resources, "/Font"), glyph.fontName);
        const double glyphAdvance = advance(font, glyph.code).value_or(0);
        if (glyphAdvance > 0)
            return saved(readAs({}, content, found)) + slotsContent(piece, glyph, glyphAdvance);
    }
    return saved(content);
}

} // namespace

std::string contentNumber(double value)
{
    return QByteArray::number(value, 'f', 6).toStdString();
}

std::string pieceContent(const OverlayPiece &piece, const std::string &content, const QPDFObjectHandle &resources)
{
    GlyphFilter filter;
    Pl_QPDFTokenizer tokenizer("content", &filter);
    tokenizer.writeString(content);
    tokenizer.finish();
    if (!filter.isPainting)
        return {};
    if (filter.textEnd == 0 || (piece.slots.empty() && piece.text.isEmpty()))
        return saved(content);
    return piece.slots.empty() ? saved(readAs(piece.text, content, filter))
                               : readInSlots(piece, content, resources, filter);
}

} // namespace inkory
