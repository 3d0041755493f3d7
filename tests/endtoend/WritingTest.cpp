#include "endtoend/Desktop.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace inkory::test;

namespace
{

const QColor markerColor(255, 0, 160); // nothing else on the screen has it
const QColor wordColor(0, 160, 60);

} // namespace

// T, a click, two lines with an accent composed of two keys, one word in another colour, the end with a click
// elsewhere, undo, redo, save, close without a question.
TEST(Writing, PutsATextWhereTheClickWas)
{
    const QTemporaryDir folder;
    const QString path = writeFile(folder.path(), QStringLiteral("form.pdf"),
                                   makePdf({{.contents = {rectangleContent(250, 600, 20, 20, "1 0 0.6274509804")}}}));
    Desktop desktop;
    ASSERT_TRUE(desktop.open(path)) << desktop.output().toStdString();
    const QRect marker = Desktop::waitForColor(markerColor);
    ASSERT_FALSE(marker.isEmpty());
    const QPoint place = marker.center() + QPoint(0, 100);

    desktop.press(QStringLiteral("t"));
    desktop.click(place);
    desktop.type(QStringLiteral("Jos"));
    for (const char *key : {"Multi_key", "apostrophe", "e", "Return"})
        desktop.press(QLatin1String(key));
    desktop.type(QStringLiteral("of Malta"));
    desktop.press(QStringLiteral("ctrl+shift+Left"));
    desktop.press(QStringLiteral("alt+o"));
    desktop.press(QStringLiteral("c"));
    ASSERT_TRUE(desktop.activate(QStringLiteral("Colors")));
    desktop.press(QStringLiteral("alt+h"));
    desktop.press(QStringLiteral("ctrl+a"));
    desktop.type(QStringLiteral("#00a03c"));
    desktop.press(QStringLiteral("Return"));
    desktop.press(QStringLiteral("Escape"));
    ASSERT_TRUE(desktop.waitUntilGone(QStringLiteral("Colors")));
    ASSERT_TRUE(desktop.activate(QStringLiteral("form.pdf")));
    desktop.press(QStringLiteral("Right")); // the keys are the editor's again: the selection goes
    desktop.click(place + QPoint(0, 200));
    desktop.press(QStringLiteral("Escape")); // of the empty text there, which leaves nothing
    EXPECT_FALSE(Desktop::waitForColor(wordColor).isEmpty());

    desktop.press(QStringLiteral("ctrl+z"));
    desktop.press(QStringLiteral("ctrl+shift+z"));
    ASSERT_TRUE(desktop.saveAndQuit(path)) << desktop.output().toStdString();

    EXPECT_EQ(qpdfCheck(path), QString());
    EXPECT_EQ(pdfText(path, 1).trimmed(), QStringLiteral("José\nof Malta"));
    const QImage drawn = renderWithPdftoppm(path, 1, 288); // four pixels are one point
    const QRectF word = findInkBounds(drawn, wordColor, 60);
    const QRectF mark = findInkBounds(drawn, markerColor, 8);
    // The click was 99 below the marker's middle, which lies between two pixels; the first base line is 11 below that,
    // the second one 14 further on.
    EXPECT_NEAR((word.bottom() - mark.center().y()) / 4, 99 + 11 + 14, 0.5);
    EXPECT_NEAR(word.height() / 4, 8.75, 0.6) << "the capital M of 12 points";
}
