#include "tools/ProbeSession.h"

#include "V1/stamps/KRPDFPage.h"
#include "platform/pdf/ImageFile.h"
#include "platform/pdf/PageSource.h"
#include "tools/EventTimer.h"
#include "tools/ProbeDocument.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace inkory;

namespace
{

constexpr int mostPagesDrawn = 20;
constexpr double mostPixelsDrawn = 4e6;

double millisecondsOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

// A figure of this process, in kB.
qint64 statusFigure(const QByteArray &name)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).simplified().split(' ').value(0).toLongLong();
    }
    return 0;
}

void forgetPeakMemory()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

DrawRequest wholePage(const PDFPage &page)
{
    const QSizeF size = page.shownSize();
    const double scale = std::min(1.0, std::sqrt(mostPixelsDrawn / (size.width() * size.height())));
    return {page.sourceIndex(), page.extraQuarterTurns(), scale,
            QRect(0, 0, std::max(1, int(std::ceil(size.width() * scale))),
                  std::max(1, int(std::ceil(size.height() * scale))))};
}

/// One file's way through the program.
class Passage
{
public:
    Passage(EventTimer &application, QString path, QString password)
        : m_application(application), m_path(std::move(path)), m_password(std::move(password))
    {
    }

    QJsonObject run(const ImagePtr &image, const QString &output)
    {
        m_application.reset();
        forgetPeakMemory();
        const qint64 before = statusFigure("VmRSS");
        const double all = millisecondsOf([&] { pass(image, output); });
        m_line.insert(QStringLiteral("file"), m_path);
        m_line.insert(QStringLiteral("milliseconds"), std::round(all));
        m_line.insert(QStringLiteral("longestBlockMs"), std::round(m_application.longestMilliseconds() * 10) / 10);
        m_line.insert(QStringLiteral("longestBlockWas"), m_application.longestWas());
        m_line.insert(QStringLiteral("windowPeakGrowthMB"), std::round(double(statusFigure("VmHWM") - before) / 1024));
        return m_line;
    }

private:
    void pass(const ImagePtr &image, const QString &output)
    {
        auto model = std::make_unique<PDFDocumentModel>();
        set("openMs", std::round(millisecondsOf([&] { openAndSettle(*model, m_path, m_password); })));
        KRPDFDocument &document = *model->pdfDoc();
        const bool isOpen = document.state() == PDFDocument::State::Open;
        set("state", isOpen                                           ? QStringLiteral("open")
                     : document.state() == PDFDocument::State::Locked ? QStringLiteral("password")
                                                                      : QStringLiteral("error"));
        set("pages", document.pageCount());
        set("message", isOpen ? document.readOnlyReason() : document.message());
        set("repaired", document.wasRepaired());
        if (isOpen) {
            drawPages(document);
            stamp(*model, image, output);
            requestPages(document, [](bool) {}); // closed while they are being drawn
        }
        set("closeMs", std::round(millisecondsOf([&] { model.reset(); })));
    }

    static int requestPages(KRPDFDocument &document, const std::function<void(bool)> &done)
    {
        const int count = std::min(document.pageCount(), mostPagesDrawn);
        for (int i = 0; i < count; ++i)
            document.pageSource()->draw(wholePage(*document.pageAtIndex(i)), DrawPriority::Visible,
                                        [done](const Result<QImage> &image) { done(bool(image)); });
        return count;
    }

    void drawPages(KRPDFDocument &document)
    {
        auto drawn = std::make_shared<int>(0);
        auto failed = std::make_shared<int>(0);
        const int count = requestPages(document, [drawn, failed](bool isDrawn) { ++*(isDrawn ? drawn : failed); });
        waitUntil([&] { return *drawn + *failed == count; }, 1'300'000);
        set("drawn", *drawn);
        set("failedPages", *failed);
    }

    void stamp(PDFDocumentModel &model, const ImagePtr &image, const QString &output)
    {
        if (!model.pdfDoc()->canSave()) {
            set("saved", QJsonValue());
            return;
        }
        const PageRect box = model.pdfDoc()->pageAtIndex(0)->boundsForBox(DisplayBox::CropBox);
        const Result<void> saved =
            stampAndSave(model, image, 0, {box.x + box.width / 2, box.y + box.height / 2}, output);
        set("saved", bool(saved));
        set("output", output);
        if (!saved)
            set("message", saved.error().message);
    }

    void set(const char *name, const QJsonValue &value) { m_line.insert(QLatin1String(name), value); }

    EventTimer &m_application;
    QString m_path;
    QString m_password;
    QJsonObject m_line;
};

} // namespace

int runSession(EventTimer &application, const QStringList &files, const QString &imagePath, const QString &folder)
{
    QTextStream output(stdout);
    const auto image = readImageFile(imagePath);
    if (!image) {
        QTextStream(stderr) << image.error().message << '\n';
        return 0;
    }
    int count = 0;
    const auto pass = [&](const QString &entry) {
        const QString saved = QDir(folder).filePath(QStringLiteral("%1.pdf").arg(++count));
        Passage passage(application, entry.section(QLatin1Char('\t'), 0, 0), entry.section(QLatin1Char('\t'), 1));
        output << QJsonDocument(passage.run(*image, saved)).toJson(QJsonDocument::Compact) << Qt::endl;
    };
    for (const QString &file : files) {
        if (file != QLatin1String("-")) {
            pass(file);
            continue;
        }
        QTextStream input(stdin);
        for (QString line = input.readLine(); !line.isNull(); line = input.readLine())
            pass(line);
    }
    return count;
}
