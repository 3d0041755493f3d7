// bench_view [scroll] [pages] [drag] [memory]: the page view, each figure beside its floor; all of them without
// arguments.

#include "Measure.h"

#include "V1/editing/KRPDFView.h"
#include "V1/stamps/KRImageStamp.h"
#include "V1/stamps/KRPDFDocument.h"
#include "V1/stamps/KRPDFPage.h"

#include <poppler-qt6.h>

#include <QApplication>
#include <QBuffer>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QMouseEvent>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

using namespace inkory;
using namespace inkory::bench;

namespace
{

constexpr int manyPages = 10'000;

// A window of 1200 x 900 with a document, and what is measured in it.
class Shown
{
public:
    explicit Shown(const QString &path)
    {
        m_view.awakeFromNib();
        m_view.windowDidLoad();
        m_view.resize(1200, 900);
        m_view.show();
        m_document.initWithURL(path);
        m_view.setDocument(&m_document);
        runUntil([this] { return m_document.isGeometrySettled() && m_view.isContentComplete(); });
    }
    ~Shown() { m_view.setDocument(nullptr); }

    KRPDFView &view() { return m_view; }
    KRPDFDocument &document() { return m_document; }
    void waitForContent()
    {
        m_view.viewport()->repaint(); // notices what is missing
        runUntil([this] { return m_view.isContentComplete(); });
    }

private:
    KRPDFDocument m_document;
    KRPDFView m_view;
};

// What a frame costs at least: one image as large as the viewport.
class BareImage : public QWidget
{
public:
    explicit BareImage(const QSize &size)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        resize(size);
        m_image = QImage(size * devicePixelRatioF(), QImage::Format_RGB32);
        m_image.fill(Qt::white);
        m_image.setDevicePixelRatio(devicePixelRatioF());
        show();
        runUntil([this] { return m_isPainted; });
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter(this).drawImage(0, 0, m_image);
        m_isPainted = true;
    }

private:
    QImage m_image;
    bool m_isPainted = false;
};

void reportFrames(const QString &name, const std::vector<double> &times, double floor, double medianLimit,
                  double lastLimit)
{
    reportTimes(name, times, medianLimit, lastLimit);
    std::printf("%-58s %9.2f ms\n", "  (one image of that size, median)", floor);
}

double floorOf(const QSize &size)
{
    BareImage bare(size);
    std::vector<double> times;
    for (int i = 0; i < 200; ++i)
        times.push_back(computingMillisecondsOf([&] { bare.repaint(); }));
    return median(times);
}

void scrolling(const QString &file)
{
    Shown shown(file);
    KRPDFView &view = shown.view();
    constexpr int firstPage = 5'000;
    constexpr int cachedPages = 5;
    for (int i = 0; i < cachedPages; ++i) {
        view.goToPage(firstPage + i);
        shown.waitForContent();
    }
    view.goToPage(firstPage);
    std::vector<double> times;
    int direction = 1;
    for (int i = 0; i < 1'000; ++i) {
        const int page = view.currentPageIndex();
        direction = page >= firstPage + cachedPages - 2 ? -1 : page <= firstPage ? 1 : direction;
        times.push_back(computingMillisecondsOf([&] {
            view.verticalScrollBar()->setValue(view.verticalScrollBar()->value() + 60 * direction);
            view.viewport()->repaint();
        }));
    }
    reportFrames(QStringLiteral("scroll frame, 10,000 pages"), times, floorOf(view.size()), 2, 8);

    constexpr int calls = 1'000'000;
    qint64 found = 0;
    const double milliseconds = computingMillisecondsOf([&] {
        for (int i = 0; i < calls; ++i)
            found += view.pageForPoint({static_cast<double>(i % 1200), static_cast<double>(i % 900)},
                                       PageSearch::Nearest) != nullptr;
    });
    reportNumber(QStringLiteral("page under a point"), milliseconds * 1e3 / static_cast<double>(found),
                 QStringLiteral("us"), 1);
    std::vector<double> zooms;
    for (int i = 0; i < 40; ++i)
        zooms.push_back(computingMillisecondsOf([&] { i % 2 ? view.zoomOut() : view.zoomIn(); }));
    reportNumber(QStringLiteral("zoom step, 10,000 pages, without its frame"), median(zooms), QStringLiteral("ms"), 2);
}

// A page full of text, as most are.
QByteArray fullPages(int count)
{
    QByteArray text = "BT /F1 9 Tf 11 TL 50 760 Td ";
    for (int line = 0; line < 64; ++line)
        text += "(The quick brown fox jumps over the lazy dog, and does it again on line " + QByteArray::number(line) +
                " of many lines.) ' ";
    QByteArray file = textPages(count);
    file.replace(") Tj ET", ") Tj ET " + text + "ET");
    return file; // lengths and offsets are wrong now: the caller has it repaired
}

void newPages(const QTemporaryDir &folder)
{
    const QString broken = writeFile(folder.filePath(QStringLiteral("broken.pdf")), fullPages(200));
    const QString file = folder.filePath(QStringLiteral("full.pdf"));
    QProcess::execute(QStringLiteral("qpdf"),
                      {QStringLiteral("--warning-exit-0"), QStringLiteral("--no-warn"), broken, file});
    Shown shown(file);
    KRPDFView &view = shown.view();
    view.setScaleFactor(1.6);
    shown.waitForContent();
    const QDeadlineTimer look(1'000); // a person looks at the first page; meanwhile a second helper gets ready
    QTimer tick;
    tick.start(100);
    runUntil([&] { return look.hasExpired(); });
    const auto bare = Poppler::Document::load(file);
    bare->setRenderHint(Poppler::Document::Antialiasing);
    bare->setRenderHint(Poppler::Document::TextAntialiasing);
    const auto drawBare = [&](int page) { (void)bare->page(page)->renderToImage(72 * 1.6, 72 * 1.6); };
    int page = 0;
    const auto next = [&] {
        page += 3;
        view.goToPage(page);
        shown.waitForContent();
    };
    const Pair one = measureInTurn(41, next, [&] { drawBare(page); });
    reportRatio(QStringLiteral("a new page on screen (floor: engine alone)"), one, 1.3);
    page = 1;
    const auto nextTwo = [&] {
        page += 4;
        view.goToPlace({page, {0, 300}}); // in one step: the lower part of one, the upper part of the next
        shown.waitForContent();
    };
    const Pair two = measureInTurn(41, nextTwo, [&] {
        drawBare(page);
        drawBare(page + 1);
    });
    reportRatio(QStringLiteral("two new pages on screen (floor: engine, one by one)"), two, 1.3);
}

class PaintCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

// With images of their own, as fifty people sign.
void dragging(const QString &file)
{
    Shown shown(file);
    KRPDFView &view = shown.view();
    view.setScaleFactor(1.4);
    shown.waitForContent();
    const PDFPage *page = shown.document().pageAtIndex(0);
    for (int i = 0; i < 50; ++i) {
        QImage ink(300, 120, QImage::Format_ARGB32);
        ink.fill(Qt::transparent);
        QPainter painter(&ink);
        painter.setPen(QPen(QColor::fromHsv(i * 7, 200, 120), 6));
        painter.drawEllipse(10, 10, 280, 100);
        painter.end();
        view.setStampImage(Image::fromPixels(ink));
        view.addImageStampView(view.convertPointFromPage({70.0 + 110 * (i % 5), 770.0 - 60 * (i / 5)}, page));
        const auto stamp = view.stampViews().front();
        const PagePoint center = stamp->frame().center();
        stamp->setFrame({center.x - 50, center.y - 20, 100, 40});
    }
    PaintCounter frames;
    view.viewport()->installEventFilter(&frames);
    const auto send = [&](QEvent::Type type, const QPointF &at) {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, at, view.viewport()->mapToGlobal(at), button, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(view.viewport(), &event);
        const int before = frames.count;
        if (type == QEvent::MouseMove)
            runUntil([&] { return frames.count > before; });
    };
    view.setCurrentToolType(ToolTypeSelect);
    const ViewRect shownStamp = view.convertRectFromPage(view.stampViews().front()->frame(), page);
    QPointF pointer(shownStamp.center().x, view.height() - shownStamp.center().y);
    send(QEvent::MouseButtonPress, pointer);
    const PageRect pressed = view.stampViews().front()->frame();
    std::vector<double> times;
    for (int i = 0; i < 500; ++i) {
        pointer += QPointF(i % 100 < 50 ? 2 : -2, i % 60 < 30 ? 1 : -1);
        times.push_back(computingMillisecondsOf([&] { send(QEvent::MouseMove, pointer); }));
    }
    if (view.stampViews().front()->frame() == pressed)
        std::puts("THE STAMP DID NOT MOVE");
    reportFrames(QStringLiteral("drag step, 50 stamps, pixel ratio %1").arg(view.devicePixelRatioF()), times,
                 floorOf(view.size()), 4, 4);
}

// Of one process, in bytes; of what several have, its share.
struct Memory
{
    qint64 own = 0;
    qint64 mapped = 0; // pages of files, which the system takes back when it needs them
};

Memory memoryOf(const QString &process)
{
    QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray text = file.readAll();
    const auto entry = [&](const QByteArray &name) {
        const qsizetype start = text.indexOf(name) + name.size();
        return text.mid(start, text.indexOf("kB", start) - start).trimmed().toLongLong() * 1024;
    };
    return {entry("Pss_Anon:") + entry("Pss_Shmem:"), entry("Pss_File:")};
}

QStringList helpers()
{
    QStringList found;
    const QDir tasks(QStringLiteral("/proc/self/task"));
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile children(tasks.filePath(task + QStringLiteral("/children")));
        if (children.open(QIODevice::ReadOnly))
            found += QString::fromLatin1(children.readAll()).split(u' ', Qt::SkipEmptyParts);
    }
    return found;
}

void scrollThrough(const QString &name, const QString &file, double limit)
{
    Shown shown(file);
    KRPDFView &view = shown.view();
    const int count = shown.document().pageCount();
    Memory most;
    Memory mostInWindow;
    Memory mostInHelper;
    const auto raise = [](Memory &highest, const Memory &found) {
        highest = {std::max(highest.own, found.own), std::max(highest.mapped, found.mapped)};
    };
    const auto look = [&](int page) {
        view.goToPage(page);
        shown.waitForContent();
        if (page % 10 != 0 && count > 100)
            return;
        Memory sum = memoryOf(QStringLiteral("self"));
        raise(mostInWindow, sum);
        for (const QString &helper : helpers()) {
            const Memory found = memoryOf(helper);
            sum = {sum.own + found.own, sum.mapped + found.mapped};
            raise(mostInHelper, found);
        }
        raise(most, sum);
    };
    for (int page = 0; page < count; ++page)
        look(page);
    for (int page = count - 1; page >= 0; --page)
        look(page);
    const auto megabytes = [](qint64 bytes) { return static_cast<double>(bytes) / 1e6; };
    reportNumber(name, megabytes(most.own), QStringLiteral("MB"), limit);
    std::printf(
        "  (the window %.0f MB, one helper %.0f MB; and up to %.0f MB of files' pages, the document's among them)\n",
        megabytes(mostInWindow.own), megabytes(mostInHelper.own), megabytes(most.mapped));
}

// Pages that are one JPEG image each, as a scanner makes them.
QByteArray scan(int count)
{
    QImage image(2480, 3508, QImage::Format_Grayscale8);
    QRandomGenerator random(1);
    for (int y = 0; y < image.height(); ++y)
        random.fillRange(reinterpret_cast<quint32 *>(image.scanLine(y)), image.bytesPerLine() / 4);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 75);
    QByteArray file = "%PDF-1.7\n";
    QByteArrayList table{"0000000000 65535 f \n"};
    const auto add = [&](const QByteArray &body) {
        table += QByteArray::number(file.size()).rightJustified(10, '0') + " 00000 n \n";
        file += QByteArray::number(table.size() - 1) + " 0 obj\n" + body + "\nendobj\n";
    };
    QByteArray kids;
    for (int i = 0; i < count; ++i)
        kids += QByteArray::number(4 + 2 * i) + " 0 R ";
    const QByteArray content = "595 0 0 842 0 0 cm /I Do";
    add("<< /Type /Catalog /Pages 2 0 R >>");
    add("<< /Type /Pages /Count " + QByteArray::number(count) + " /Kids [ " + kids + "] >>");
    add("<< /Length " + QByteArray::number(content.size()) + " >>\nstream\n" + content + "\nendstream");
    for (int i = 0; i < count; ++i) {
        add("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 3 0 R /Resources << /XObject << /I " +
            QByteArray::number(5 + 2 * i) + " 0 R >> >> >>");
        add("<< /Type /XObject /Subtype /Image /Width 2480 /Height 3508 /BitsPerComponent 8 /ColorSpace /DeviceGray "
            "/Filter /DCTDecode /Length " +
            QByteArray::number(jpeg.size()) + " >>\nstream\n" + jpeg + "\nendstream");
    }
    const QByteArray place = QByteArray::number(file.size());
    return file + "xref\n0 " + QByteArray::number(table.size()) + "\n" + table.join() +
           "trailer\n<< /Root 1 0 R /Size " + QByteArray::number(table.size()) + " >>\nstartxref\n" + place +
           "\n%%EOF\n";
}

void memory(const QTemporaryDir &folder, const QString &manyPagesFile)
{
    const QByteArray onePage = scan(1);
    const int pages = static_cast<int>(210'000'000 / onePage.size());
    const QString scanned = writeFile(folder.filePath(QStringLiteral("scan.pdf")), scan(pages));
    scrollThrough(QStringLiteral("all processes, a scan of %1 MB").arg(QFile(scanned).size() / 1'000'000), scanned,
                  300);
    scrollThrough(QStringLiteral("all processes, 10,000 pages there and back"), manyPagesFile, 300);
}

void layout(const QTemporaryDir &folder)
{
    constexpr int count = 100'000;
    const QString file = writeFile(folder.filePath(QStringLiteral("layout.pdf")), textPages(count));
    Shown shown(file);
    std::vector<double> times;
    for (int i = 0; i < 20; ++i)
        times.push_back(millisecondsOf([&] { shown.view().layoutDocumentView(); }));
    reportNumber(QStringLiteral("layout of %1 pages").arg(shown.document().pageCount()), median(times),
                 QStringLiteral("ms"), 100);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    prepareEnvironment(folder.path());
    const QByteArrayList wanted(argv + 1, argv + argc);
    const auto isWanted = [&](const char *name) { return wanted.isEmpty() || wanted.contains(name); };
    if (wanted.contains("drag"))
        qputenv("QT_SCALE_FACTOR", "2");
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("inkory"));
    QApplication::setQuitOnLastWindowClosed(false);

    const QString file = writeFile(folder.filePath(QStringLiteral("many.pdf")), textPages(manyPages));
    if (isWanted("scroll"))
        scrolling(file);
    if (isWanted("layout"))
        layout(folder);
    if (isWanted("pages"))
        newPages(folder);
    if (wanted.contains("drag"))
        dragging(file);
    else if (wanted.isEmpty()) // the pixel ratio is a process's
        QProcess::execute(QApplication::applicationFilePath(), {QStringLiteral("drag")});
    if (isWanted("memory"))
        memory(folder, file);
    return exitStatus();
}
