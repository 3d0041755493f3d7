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

/// Looks for the glyphs that a content shows, and whether it paints at all.
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
    }

    std::vector<ShownGlyph> glyphs;
    bool isPainting = false;

private:
    void follow(const std::string &word)
    {
        static const std::set<std::string> painting{"S",  "s",  "f",  "F",  "f*", "B", "B*", "b",
                                                    "b*", "sh", "Do", "Tj", "TJ", "'", "\"", "BI"};
        isPainting = isPainting || painting.contains(word);
        if (word == "Tf")
            m_font = m_name;
        if (word == "Tj" && m_string.size() == 2)
            glyphs.push_back(
                {m_font, static_cast<unsigned char>(m_string[0]) << 8 | static_cast<unsigned char>(m_string[1])});
    }

    std::string m_name;
    std::string m_string;
    std::string m_font;
};

QPDFObjectHandle entry(QPDFObjectHandle dictionary, const std::string &key)
{
    return dictionary.isDictionary() ? dictionary.getKey(key) : QPDFObjectHandle::newNull();
}

// In thousandths of the font's size. The widths are lists, each behind the number of its first glyph.
std::optional<double> advance(QPDFObjectHandle font, int code)
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

// Readers take a text with letters that run from right to left for what stands from left to right, and turn it round.
// They do not do that with single characters that stand where they belong. The glyphs themselves are read as nothing.
std::string readInSlots(const OverlayPiece &piece, const std::string &content, const QPDFObjectHandle &resources,
                        const std::vector<ShownGlyph> &glyphs)
{
    for (const ShownGlyph &glyph : glyphs) {
        const QPDFObjectHandle font = entry(entry(resources, "/Font"), glyph.fontName);
        const double glyphAdvance = advance(font, glyph.code).value_or(0);
        if (glyphAdvance > 0)
            return beginReading({}) + content + "EMC\n" + slotsContent(piece, glyph, glyphAdvance);
    }
    return content;
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
    const std::string balanced = "q\n" + content + "Q\n";
    if (!piece.slots.empty())
        return readInSlots(piece, balanced, resources, filter.glyphs);
    return piece.text.isEmpty() ? balanced : beginReading(piece.text) + balanced + "EMC\n";
}

} // namespace inkory
