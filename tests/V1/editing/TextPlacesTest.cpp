#include "V1/editing/TextFixture.h"

#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>

#include <cmath>

using namespace inkory;
using namespace inkory::test;

namespace
{

struct Word
{
    QString text;
    QRectF rect; // in the upright stamp, y downward, units
};

struct Picture
{
    QImage pixels;
    QPointF origin;   // where its upper left corner stands in the view
    double scale = 1; // its pixels for one of the view's
};

// What is lighter is no ink but the trace of rounding in a picture.
constexpr int faint = 20;

// The centre of the ink in the rectangle, both in the view's pixels.
QPointF inkCenter(const Picture &picture, const QRectF &rect)
{
    QPointF center;
    double sum = 0;
    const QRectF inPicture((rect.topLeft() - picture.origin) * picture.scale, rect.size() * picture.scale);
    const QRect pixels = inPicture.toAlignedRect() & picture.pixels.rect();
    for (int row = pixels.top(); row <= pixels.bottom(); ++row) {
        for (int column = pixels.left(); column <= pixels.right(); ++column) {
            const double weight = std::max(255 - qGray(picture.pixels.pixel(column, row)) - faint, 0);
            center += weight * QPointF(column + 0.5, row + 0.5);
            sum += weight;
        }
    }
    EXPECT_GT(sum, 0);
    return sum > 0 ? center / sum / picture.scale + picture.origin : QPointF(-1000, -1000);
}

} // namespace

/// What stands where: in the editor, on the page, and in the file as an independent program draws it. A small page, so
/// that pictures of it stay small.
class TextPlacesTest : public TextFixture
{
protected:
    static constexpr int pageWidth = 200;
    static constexpr int pageHeight = 150;

    void openSmallPage(int rotation)
    {
        open(makePdf({{.mediaBox = "0 0 200 150", .rotate = QByteArray::number(rotation)}}));
        view->setScaleFactor(1);
        QCoreApplication::processEvents();
    }

    /// Two lines from the left, one from the right, in three fonts, at odd places.
    void write(PagePoint point)
    {
        place(point);
        type(QStringLiteral("Quick affine Wave \n"));
        QFont serif(QStringLiteral("Liberation Serif"));
        serif.setPointSizeF(10.5);
        view->textEditor()->changeFormat(TextStorage::characterFormat(serif));
        type(QStringLiteral("jumps over 42 \n"));
        view->textEditor()->toggleBold();
        type(QStringLiteral("שלום עולם\n"));
        key(Qt::Key_Escape);
        const PageRect frame = stamp()->frame();
        stamp()->setFrame({frame.x + 0.3, frame.y - 0.7, frame.width, frame.height});
    }

    std::vector<Word> words() const
    {
        std::vector<Word> found;
        stamp()->textStorage()->layOut(isTurnedInFrame() ? stamp()->frame().height : stamp()->frame().width);
        const auto visit = [&found](const QTextBlock &block, int index, const QPointF &origin) {
            const QTextLine line = block.layout()->lineAt(index);
            int start = line.textStart();
            for (const QString &word : block.text().mid(start, line.textLength()).split(QLatin1Char(' '))) {
                const int end = start + static_cast<int>(word.size());
                const double a = line.cursorToX(start);
                const double b = line.cursorToX(end);
                start = end + 1;
                const QRectF rect(origin.x() + std::min(a, b), origin.y() + line.y(), std::abs(a - b), line.height());
                if (!word.isEmpty())
                    found.push_back(
                        {word, QRectF(rect.topLeft() / 10, rect.size() / 10).adjusted(-1.5, 0.8, 1.5, -0.8)});
            }
        };
        stamp()->textStorage()->visitLines(1000, visit);
        EXPECT_EQ(found.size(), 8U);
        return found;
    }

    bool isTurnedInFrame() const { return stamp()->stampRotation() % 2 != 0; }

    /// From the upright stamp, y downward, to the view in pixels from its upper left corner.
    QRectF inView(const QRectF &rect) const
    {
        const PageRect frame = stamp()->frame();
        const QSizeF upright =
            isTurnedInFrame() ? QSizeF(frame.height, frame.width) : QSizeF(frame.width, frame.height);
        QTransform toPage;
        toPage.translate(frame.center().x, frame.center().y);
        toPage.rotate(stamp()->stampRotation() * 90.0);
        toPage.translate(-upright.width() / 2, upright.height() / 2);
        toPage.scale(1, -1);
        const ViewRect onScreen =
            view->convertRectFromPage(fromQRectF<PageSpace>(toPage.mapRect(rect)), stamp()->pdfPage());
        return {onScreen.x, view->height() - onScreen.maxY(), onScreen.width, onScreen.height};
    }

    /// Four times as fine as the pixels of the screen: the program rounds base lines to its own.
    static constexpr int fineness = 4;
    Picture drawnFile(double ratio)
    {
        const QString file = writeFile(folder.path(), QStringLiteral("saved.pdf"), document.dataRepresentation());
        const double scale = ratio * fineness;
        const ViewRect rect = view->convertRectFromPage({0, 0, pageWidth, pageHeight}, stamp()->pdfPage());
        return {renderWithPdftoppm(file, 1, 72 * view->scaleFactor() * scale),
                {rect.x, view->height() - rect.maxY()},
                scale};
    }

    Picture shown(double ratio) const
    {
        QImage image((QSizeF(view->size()) * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::white);
        view->render(&image);
        return {image, {}, ratio};
    }

    /// Each word is less than a device pixel from where it is in the other picture.
    void expectSame(const char *what, const Picture &first, const Picture &second, double ratio) const
    {
        for (const Word &word : words()) {
            const QRectF rect = inView(word.rect);
            const QPointF difference = (inkCenter(first, rect) - inkCenter(second, rect)) * ratio;
            EXPECT_LE(std::max(std::abs(difference.x()), std::abs(difference.y())), 1.0)
                << what << " of " << word.text.toStdString();
        }
    }
};

// Both the screen and the independent program round base lines to whole pixels, each in its own way. What remains of
// that, as the file is drawn more finely, is half a pixel of the screen and an eighth of the file.
TEST_F(TextPlacesTest, EditorPageAndFileAgreeAtEveryZoomAndRatio)
{
    openSmallPage(0);
    write({17, 130});
    for (const double zoom : {0.5, 1.0, 1.37, 2.0, 4.0}) {
        for (const double ratio : {1.0, 1.5, 2.0}) {
            view->setScaleFactor(zoom);
            QCoreApplication::processEvents();
            view->setSelectedStampView(nullptr);
            const Picture page = shown(ratio);
            view->setSelectedStampView(stamp());
            view->startTextEditing();
            view->textEditor()->setSelectedRange(stamp()->textStorage()->length(), 0); // in a line of its own
            const Picture editor = shown(ratio);
            ASSERT_TRUE(view->isEditingText());
            view->endTextEditing();
            const Picture file = drawnFile(ratio);
            SCOPED_TRACE(testing::Message() << "zoom " << zoom << " ratio " << ratio);
            expectSame("editor - page", editor, page, ratio);
            expectSame("page - file", page, file, ratio);
            expectSame("editor - file", editor, file, ratio);
        }
    }
}

class TurnedTextPlacesTest : public TextPlacesTest, public ::testing::WithParamInterface<int>
{
};

TEST_P(TurnedTextPlacesTest, PageAndFileAgree)
{
    openSmallPage(GetParam());
    view->setScaleFactor(1.37);
    QCoreApplication::processEvents();
    write({80, 80});
    for (int turn = 0; turn < 4; ++turn) {
        view->rotateSelectedStampClockwise();
        const PageRect frame = stamp()->frame();
        stamp()->setFrame({100.3 - frame.width / 2, 74.6 - frame.height / 2, frame.width, frame.height});
        view->setSelectedStampView(nullptr);
        const Picture page = shown(1.5);
        const Picture file = drawnFile(1.5);
        SCOPED_TRACE(stamp()->stampRotation());
        expectSame("page - file", page, file, 1.5);
        view->setSelectedStampView(stamp());
    }
}

INSTANTIATE_TEST_SUITE_P(PageRotations, TurnedTextPlacesTest, ::testing::Values(0, 90, 180, 270));

// A frame goes from the page to the view and back, which costs the last bit; a line that was as wide as its frame must
// not wrap for that, nor the last one be cut off.
TEST_F(TextPlacesTest, NoLineWrapsOrIsLostAtTwoThousandZooms)
{
    openSmallPage(0);
    write({17, 130});
    int shownLines = 0;
    for (int i = 0; i < 2000; ++i) {
        view->setScaleFactor(0.25 + i * 0.0031);
        stamp()->setFrame(view->convertRectToPage(view->stampRect(*stamp()), stamp()->pdfPage()));
        stamp()->textStorage()->layOut(stamp()->frame().width);
        stamp()->textStorage()->visitLines(stamp()->frame().height,
                                           [&](const QTextBlock &, int, const QPointF &) { ++shownLines; });
    }
    EXPECT_EQ(shownLines, 4 * 2000);
}
