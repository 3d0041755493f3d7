#include "platform/engine/WriterTestFiles.h"

#include "platform/core/EmbeddableFont.h"
#include "platform/pdf/PrintDrawingContext.h"

#include <QAbstractTextDocumentLayout>
#include <QFontDatabase>
#include <QRawFont>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextDocument>
#include <QtEndian>

#include <functional>

using namespace inkory;

namespace
{

/// Measures text only, ten units to a point.
class FineDevice : public QPaintDevice
{
public:
    QPaintEngine *paintEngine() const override { return nullptr; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        if (metric == PdmDevicePixelRatio)
            return 1;
        if (metric == PdmDevicePixelRatioScaled)
            return static_cast<int>(devicePixelRatioFScale());
        return metric == PdmWidth || metric == PdmHeight ? 1 << 20 : 720;
    }
};

constexpr double leftEdge = 40; // of all texts, in points, on a letter page as it is displayed

/// Draws the text, from 100 points below the upper edge of the page as it is displayed.
void drawText(DrawingContext &context, const PDFPage &page, const QString &text, const QFont &font)
{
    FineDevice device;
    QTextDocument document;
    document.documentLayout()->setPaintDevice(&device);
    document.setDocumentMargin(0);
    document.setDefaultFont(font);
    document.setPlainText(text);
    document.setTextWidth(5000);
    QPainter &painter = context.painter();
    painter.save();
    painter.setTransform(page.shownTransform().inverted() * context.transformForBox(page, DisplayBox::CropBox));
    painter.translate(leftEdge, 100);
    painter.scale(0.1, 0.1);
    painter.setPen(Qt::black);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        for (int line = 0; line < block.layout()->lineCount(); ++line)
            context.drawTextLine(block, line, document.documentLayout()->blockBoundingRect(block).topLeft());
    painter.fillRect(QRect(200, 4000, 1000, 500), Qt::blue); // below the text
    painter.restore();
}

QFont fontOf(const QString &family, double size)
{
    QFont font(family);
    font.setPointSizeF(size);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

struct WriterText : testing::Test
{
    /// Writes the text over the first page of a document, and answers the new file's path.
    QString write(const QString &text, const QFont &font = fontOf(u"DejaVu Sans"_qs, 14), int rotation = 0,
                  const std::function<void(QPainter &)> &prepare = {})
    {
        test::Change change{test::makePdf({test::PageSpec{}}), {}, {}};
        PageGeometry geometry = readStructure(change.original, {}).pages.at(0);
        geometry.rotation = rotation;
        const PDFPage page(geometry, 0);
        OverlayRecorder recorder;
        recorder.beginPage(page);
        if (prepare)
            prepare(recorder.painter());
        drawText(recorder, page, text, font);
        change.request.pages = {{0, rotation, recorder.endPage(), {}}};
        change.request.overlays = recorder.finish();
        change.request.images = recorder.images();
        return test::writtenFile(m_folder, change);
    }

    QTemporaryDir m_folder;
};

const QString lines[] = {u"office AVATAR fl"_qs,
                         u"x\u00B2 \u00BD \u2026 \u2122 \uFB01 \u212B"_qs,
                         u"e\u0301 \u00E9 q\u0323\u0307"_qs,
                         u"\u0417\u0434\u0440\u0430\u0432\u0441\u0442\u0432\u0443\u0439"_qs,
                         u"\u05E9\u05DC\u05D5\u05DD \u05E2\u05D5\u05DC\u05DD abc 123"_qs,
                         u"\u05D1\u05BC\u05B0\u05E8"_qs,
                         u"\u0627\u0644\u0633\u0644\u0627\u0645 \u0639\u0644\u064A\u0643\u0645"_qs,
                         u"\u0644\u0627 \u05D0 \u0644\u0627 abc"_qs,
                         u"abcdefg \u05D0\u200F\u05D1 \u0644\u0627"_qs,
                         u"\u0915\u094D\u0937\u0924\u094D\u0930\u093F\u092F"_qs,
                         u"\u4E2D\u6587\u3002"_qs,
                         u"\u65E5\u672C\u8A9E\u304B\u306A"_qs,
                         u"a    b  c"_qs,
                         u"thumb \U0001F44D up"_qs,
                         u"\U0001F44D\U0001F680"_qs,
                         u"zero\u200Bwidth\u200D"_qs};

QString withoutEmbeddingMarks(QString text)
{
    return text.remove(QRegularExpression(u"[\u202A-\u202C]"_qs));
}

TEST_F(WriterText, IsReadAsItWasTyped)
{
    for (const QString &line : lines) {
        SCOPED_TRACE(line.toStdString());
        const QString turned = test::pdfText(write(line, fontOf(u"DejaVu Sans"_qs, 9.3), 90), 1);
        const QString path = write(line);
        EXPECT_EQ(turned.toStdString(), test::pdfText(path, 1).toStdString());
        EXPECT_EQ(withoutEmbeddingMarks(test::pdfText(path, 1)).trimmed().toStdString(), line.toStdString());
        const QString fonts = QString::fromUtf8(test::runTool(u"pdffonts"_qs, {path}).output);
        EXPECT_TRUE(fonts.contains(QRegularExpression(u"\n[A-Z]{6}\\+"_qs)));
        for (const QString &font : fonts.split(u'\n', Qt::SkipEmptyParts).mid(2).filter(u"+"_qs))
            EXPECT_TRUE(font.contains(QRegularExpression(u" yes yes yes +\\d+ +\\d+ *$"_qs))) << font.toStdString();
    }
}

TEST_F(WriterText, ConsistsOfItsLinesWhereTheyAreBrokenByHand)
{
    const QString path = write(u"one\u2028\u2028two\u2028\u05D0\u2028"_qs);
    EXPECT_EQ(withoutEmbeddingMarks(test::pdfText(path, 1)).simplified(), u"one two \u05D0"_qs);
}

TEST_F(WriterText, IsTheSameFileEachTime)
{
    const QString text = u"office \u05D0\u05D1 \U0001F44D"_qs;
    const auto bytes = [this, &text] {
        QByteArray file = test::readFile(write(text));
        return file.left(file.lastIndexOf("/ID"));
    };
    const QByteArray first = bytes();
    EXPECT_GT(first.size(), 1'000);
    EXPECT_EQ(bytes(), first);
}

TEST_F(WriterText, KeepsColourfulLettersAsPictures)
{
    const QString path = write(u"I\U0001F44DI"_qs, fontOf(u"DejaVu Sans"_qs, 40));
    const QImage drawn = test::renderWithPdftoppm(path, 1, 72);
    const QRect yellow = test::findInkBounds(drawn, QColor(255, 200, 40), 60); // skin, in about this colour
    const QRect black = test::findInkBounds(drawn, Qt::black);
    EXPECT_NEAR(yellow.height(), 40, 8);
    EXPECT_GT(yellow.left(), black.left()) << "between the two letters";
    EXPECT_LT(yellow.right(), black.right());
    EXPECT_EQ(test::pdfImages(path).size(), 2U) << "a picture and its mask, once";
}

TEST_F(WriterText, KeepsClipAndOpacityFromPieceToPiece)
{
    const QString path = write(u"HHHHHH\nHHHHHH"_qs, fontOf(u"DejaVu Sans"_qs, 40), 0, [](QPainter &painter) {
        painter.setClipRect(QRectF(0, 0, 94, 792));
        painter.setOpacity(0.5);
    });
    const QImage drawn = test::renderWithPdftoppm(path, 1);
    const QRect text = test::findInkBounds(drawn, QColor(127, 127, 127), 10);
    EXPECT_GT(text.height(), 60) << "two lines";
    EXPECT_EQ(text.right(), 93) << "cuts a stem of the second letter, which ends at 96.2";
    EXPECT_EQ(test::findInkBounds(drawn, QColor(127, 127, 255), 3), QRect(60, 500, 34, 50)) << "drawn after them";
}

/// A font that may not be embedded, known as "DejaVu Nope Mono".
void installRestrictedFont(const QString &folder)
{
    QByteArray font = test::readFile(u"/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf"_qs);
    constexpr int entrySize = 16; // of the list of tables: tag, checksum, offset, length
    const auto entry = font.indexOf("OS/2");
    ASSERT_GT(entry, 0);
    ASSERT_LT(entry, 30 * entrySize);
    const auto table = qFromBigEndian<quint32>(font.constData() + entry + 8);
    font[table + 8] = 0;
    font[table + 9] = 2; // fsType: restricted
    for (const QString &name : {u"Sans Mono"_qs, u"SansMono"_qs}) {
        const QString other = QString(name).replace(u"Sans"_qs, u"Nope"_qs);
        font.replace(name.toLatin1(), other.toLatin1());
        QByteArray wide[2];
        for (int i = 0; i < 2; ++i)
            for (const QChar unit : i == 0 ? name : other)
                wide[i].append('\0').append(unit.toLatin1());
        font.replace(wide[0], wide[1]);
    }
    ASSERT_GE(QFontDatabase::addApplicationFont(test::writeFile(folder, u"nope.ttf"_qs, font)), 0);
}

TEST_F(WriterText, ShowsButDoesNotContainAFontThatMayNotBeEmbedded)
{
    ASSERT_NO_FATAL_FAILURE(installRestrictedFont(m_folder.path()));
    const QFont font = fontOf(u"DejaVu Nope Mono"_qs, 40);
    ASSERT_EQ(QFontInfo(font).family(), u"DejaVu Nope Mono"_qs);
    EXPECT_FALSE(mayBeEmbedded(QRawFont::fromFont(font)));
    const QString path = write(u"Hg"_qs, font);
    EXPECT_FALSE(test::runTool(u"pdffonts"_qs, {path}).output.contains("Nope"));
    EXPECT_EQ(test::pdfText(path, 1).trimmed(), u"Hg"_qs);
    EXPECT_EQ(test::pdfImages(path).size(), 2U) << "one picture of both letters, and its mask";
    const QRect ink = test::findInkBounds(test::renderWithPdftoppm(path, 1), Qt::black, 100);
    EXPECT_NEAR(ink.height(), 29.2 + 8.3, 2) << "from the top of H to the foot of g";

    const QFont other = embeddableFont(font);
    EXPECT_TRUE(mayBeEmbedded(QRawFont::fromFont(other)));
    EXPECT_TRUE(QFontInfo(other).fixedPitch());
    EXPECT_EQ(other.pointSizeF(), 40);
    EXPECT_EQ(embeddableFont(fontOf(u"DejaVu Serif"_qs, 9)), fontOf(u"DejaVu Serif"_qs, 9));
}

TEST_F(WriterText, ReachesPaperWithItsPictures)
{
    const QString path = m_folder.filePath(u"paper.pdf"_qs);
    {
        QPdfWriter writer(path);
        writer.setResolution(72);
        writer.setPageMargins(QMarginsF());
        writer.setPageSize(QPageSize(QPageSize::Letter));
        QPainter painter(&writer);
        const PDFPage page({}, 0);
        PrintDrawingContext context(painter, page.shownTransform());
        drawText(context, page, u"I\U0001F44DI"_qs, fontOf(u"DejaVu Sans"_qs, 40));
    }
    const QRect yellow =
        test::findInkBounds(test::renderWithPdftoppm(path, 1), QColor(255, 200, 40), 60); // skin, in about this colour
    EXPECT_NEAR(yellow.height(), 40, 8);
    EXPECT_EQ(test::pdfText(path, 1).remove(u'\n').trimmed(), u"II"_qs) << "the letters stay letters";
}

} // namespace
