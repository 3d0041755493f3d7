// bench_text: typing into a long text on a page, and drawing a text, each beside its floor.

#include "Measure.h"

#include "V1/editing/KRPDFView.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRPDFDocument.h"
#include "V1/stamps/KRTextStamp.h"
#include "platform/core/TextStorage.h"
#include "platform/widgets/ScreenDrawingContext.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QTemporaryDir>

#include <cstdio>

using namespace inkory;
using namespace inkory::bench;

namespace
{

constexpr int typedLength = 2'000;

// 25 lines.
QString longText()
{
    QString text;
    while (text.size() < typedLength)
        text += text.size() % 80 == 79 ? QLatin1Char('\n') : QLatin1Char("some words "[text.size() % 11]);
    return text;
}

// A key, and all that has to be painted after it. The floor: laying out and drawing that text once.
void typing(KRPDFView &view)
{
    view.addTextStampView({300, 700});
    TextStampEditor &editor = *view.textEditor();
    editor.insertPlainText(longText());
    editor.viewport()->repaint();
    std::vector<double> times;
    for (int i = 0; i < 500; ++i) {
        times.push_back(computingMillisecondsOf([&] {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
            QApplication::sendEvent(&editor, &press);
            editor.viewport()->repaint();
        }));
        if (i % 10 == 9)
            editor.undo(); // the text stays about as long as it is
    }
    reportTimes(QStringLiteral("key to repaint, 2,000 characters"), times, 5, 5);

    TextStorage text;
    text.setAttributedText({{{longText().replace(QLatin1Char('\n'), QChar::ParagraphSeparator),
                              TextStorage::characterFormat(QFont(QStringLiteral("DejaVu Sans"), 12))}},
                            {}});
    QImage image(900, 500, QImage::Format_ARGB32_Premultiplied);
    std::vector<double> floor;
    for (int i = 0; i < 50; ++i) {
        floor.push_back(computingMillisecondsOf([&] {
            text.document().markContentsDirty(0, text.length());
            text.layOutUnwrapped();
            QPainter painter(&image);
            painter.scale(0.1, 0.1);
            text.document().drawContents(&painter);
        }));
    }
    std::printf("%-58s %9.2f ms\n", "  (laying out and drawing it once, median)", median(floor));
    view.endTextEditing();
}

// The stamp into an image, at zoom 4. The floor: the same letters by QPainter.
void drawing(KRPDFView &view)
{
    view.addTextStampView({300, 400});
    const QStringList lines{QStringLiteral("Three lines of text"), QStringLiteral("on the page"),
                            QStringLiteral("of a contract")};
    view.textEditor()->insertPlainText(lines.join(QLatin1Char('\n')));
    view.endTextEditing();
    KRStamp &stamp = *view.stampViews().front();
    stamp.setStampMode(StampModeNormal);
    const PageRect frame = stamp.frame();
    QImage image(1200, 400, QImage::Format_RGB32);
    ScaledImages images;
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(48);
    const Pair pair = measureInTurn(
        500,
        [&] {
            QPainter painter(&image);
            painter.setTransform(QTransform(4, 0, 0, -4, -4 * frame.x, 4 * frame.maxY()));
            ScreenDrawingContext context(painter, painter.transform(), {}, images);
            const DrawingContext::Scope scope(context);
            stamp.draw();
        },
        [&] {
            QPainter painter(&image);
            painter.setFont(font);
            for (int i = 0; i < lines.size(); ++i)
                painter.drawText(20, 60 * (i + 1), lines[i]);
        });
    reportNumber(QStringLiteral("drawing a text of three lines at zoom 4"), pair.measured, QStringLiteral("ms"), 1);
    std::printf("%-58s %9.2f ms\n", "  (the same letters by QPainter, median)", pair.floor);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    prepareEnvironment(folder.path());
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("inkory"));
    KRPDFDocument document;
    KRPDFView view;
    view.awakeFromNib();
    view.windowDidLoad();
    view.resize(1200, 900);
    view.show();
    document.initWithURL(writeFile(folder.filePath(QStringLiteral("page.pdf")), textPages(1)));
    view.setDocument(&document);
    runUntil([&] { return document.isGeometrySettled() && view.isContentComplete(); });
    typing(view);
    drawing(view);
    view.setDocument(nullptr);
    return exitStatus();
}
