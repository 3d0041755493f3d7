// Runs the program's own code without a window manager, for measuring from outside:
//   inkory_probe open FILE [--password P]
//   inkory_probe stamp IN IMAGE PAGE X Y OUT [--password P]
//   inkory_probe text IN PAGE X Y OUT --text TEXT [--family F] [--size S] [--password P]
//   inkory_probe draw IN PAGE SCALE OUT.png [--password P]
//   inkory_probe session --image IMAGE --out FOLDER FILE...    see ProbeSession.h
// Pages count from 1; X and Y are in the page's own space; SCALE is in pixels per point.

#include "V1/application/PDFDocumentModel.h"
#include "V1/editing/KRPDFView.h"
#include "V1/stamps/KRPDFPage.h"
#include "platform/pdf/ImageFile.h"
#include "tools/EventTimer.h"
#include "tools/ProbeDocument.h"
#include "tools/ProbeSession.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <csignal>

using namespace inkory;

namespace
{

enum ExitStatus { Success = 0, Failure = 1, Usage = 2, PasswordNeeded = 3, CannotOpen = 4 };

constexpr int listedSizes = 5;

QString usage()
{
    return QStringLiteral("inkory_probe open FILE [--password P]\n"
                          "inkory_probe stamp IN IMAGE PAGE X Y OUT [--password P]\n"
                          "inkory_probe text IN PAGE X Y OUT --text TEXT [--family F] [--size S] [--password P]\n"
                          "inkory_probe draw IN PAGE SCALE OUT.png [--password P]\n"
                          "inkory_probe session --image IMAGE --out FOLDER FILE...");
}

int fail(const QString &reason)
{
    QTextStream(stderr) << reason << '\n';
    return Failure;
}

int open(const QString &path, const QString &password)
{
    PDFDocumentModel model;
    openAndSettle(model, path, password);
    const KRPDFDocument &document = *model.pdfDoc();
    QJsonArray sizes;
    for (int i = 0; i < std::min(document.pageCount(), listedSizes); ++i) {
        const PDFPage &page = *document.pageAtIndex(i);
        const PageRect box = page.boundsForBox(DisplayBox::CropBox);
        sizes.append(QJsonArray{box.width, box.height, page.rotation()});
    }
    const bool isOpen = document.state() == PDFDocument::State::Open;
    const bool isLocked = document.state() == PDFDocument::State::Locked;
    const QJsonObject answer{
        {QStringLiteral("state"), isOpen     ? QStringLiteral("open")
                                  : isLocked ? QStringLiteral("password")
                                             : QStringLiteral("error")},
        {QStringLiteral("pages"), document.pageCount()},
        {QStringLiteral("message"), isOpen ? document.readOnlyReason() : document.message()},
        {QStringLiteral("canSave"), document.canSave()},
        {QStringLiteral("sizes"), sizes},
    };
    QTextStream(stdout) << QJsonDocument(answer).toJson(QJsonDocument::Compact) << '\n';
    return isOpen ? Success : isLocked ? PasswordNeeded : CannotOpen;
}

int stamp(const QStringList &arguments, const QString &password)
{
    PDFDocumentModel model;
    openAndSettle(model, arguments[0], password);
    const auto image = readImageFile(arguments[1]);
    if (!image)
        return fail(image.error().message);
    const Result<void> saved = stampAndSave(model, *image, arguments[2].toInt() - 1,
                                            {arguments[3].toDouble(), arguments[4].toDouble()}, arguments[5]);
    return saved ? Success : fail(saved.error().message);
}

int text(const QStringList &arguments, const QString &password, const ProbeText &written)
{
    PDFDocumentModel model;
    openAndSettle(model, arguments[0], password);
    const Result<void> saved = writeAndSave(model, written, arguments[1].toInt() - 1,
                                            {arguments[2].toDouble(), arguments[3].toDouble()}, arguments[4]);
    return saved ? Success : fail(saved.error().message);
}

// session --image IMAGE --out FOLDER FILE...
int session(EventTimer &application, const QStringList &arguments)
{
    const bool isComplete =
        arguments.size() > 4 && arguments[0] == QLatin1String("--image") && arguments[2] == QLatin1String("--out");
    if (!isComplete)
        return fail(usage());
    return runSession(application, arguments.mid(4), arguments[1], arguments[3]) > 0 ? Success : Failure;
}

int draw(const QStringList &arguments, const QString &password)
{
    PDFDocumentModel model;
    openAndSettle(model, arguments[0], password);
    KRPDFDocument &document = *model.pdfDoc();
    const int pageIndex = arguments[1].toInt() - 1;
    const double scale = arguments[2].toDouble();
    const PDFPage *page = document.pageAtIndex(pageIndex);
    if (!page || !(scale > 0))
        return fail(document.message().isEmpty() ? QStringLiteral("no such page or scale") : document.message());

    const QSize pixels(static_cast<int>(std::ceil(page->shownSize().width() * scale)),
                       static_cast<int>(std::ceil(page->shownSize().height() * scale)));
    KRPDFView view;
    view.awakeFromNib();
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setDocument(&document);
    view.resize(pixels + QSize(2, 2) * PageLayout::margin);
    view.setScaleFactor(scale);
    view.goToPage(pageIndex);
    view.show();
    if (!waitUntil([&] { return view.isContentComplete(); }))
        return fail(QStringLiteral("the page was not drawn in time"));
    const ViewRect shown = view.convertRectFromPage(page->boundsForBox(DisplayBox::CropBox), page);
    const QRect area(QPoint(qRound(shown.x), qRound(view.height() - shown.maxY())), pixels);
    const bool saved = view.viewport()->grab(area).toImage().save(arguments[3], "PNG");
    view.setDocument(nullptr);
    return saved ? Success : fail(QStringLiteral("the picture could not be written"));
}

// Takes an option with its value out of the words; the fallback where it is not there.
QString takeOption(QStringList &words, const QString &name, const QString &fallback = {})
{
    const auto place = words.indexOf(name);
    if (place <= 0 || place + 1 >= words.size())
        return fallback;
    const QString value = words[place + 1];
    words.remove(place, 2);
    return value;
}

} // namespace

int main(int argc, char **argv)
{
    signal(SIGXFSZ, SIG_IGN); // a limit on file sizes is an error of one write, as in the program itself
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    EventTimer application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("inkory"));
    QApplication::setQuitOnLastWindowClosed(false);

    // Everything is taken by its place: coordinates may be negative and are no options then.
    QStringList words = QCoreApplication::arguments();
    const QString password = takeOption(words, QStringLiteral("--password"));
    const QString family = takeOption(words, QStringLiteral("--family"));
    const QString size = takeOption(words, QStringLiteral("--size"), QStringLiteral("12"));
    const QString written = takeOption(words, QStringLiteral("--text"));
    const QString command = words.value(1);
    const QStringList arguments = words.mid(2);
    if (command == QLatin1String("open") && arguments.size() == 1)
        return open(arguments[0], password);
    if (command == QLatin1String("stamp") && arguments.size() == 6)
        return stamp(arguments, password);
    if (command == QLatin1String("text") && arguments.size() == 5 && !written.isEmpty())
        return text(arguments, password, {written, family, size.toDouble()});
    if (command == QLatin1String("draw") && arguments.size() == 4)
        return draw(arguments, password);
    if (command == QLatin1String("session"))
        return session(application, arguments);
    (void)fail(usage());
    return Usage;
}
