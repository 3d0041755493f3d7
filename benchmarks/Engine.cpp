// bench_engine FILE...: draws the first pages of every file through helper processes, by one and by two of them, and
// with the same code in this process; starts helpers; and searches a long document against extracting its text only.

#include "Measure.h"

#include "platform/core/SharedMemory.h"
#include "platform/engine/PageDrawer.h"
#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/EngineChannel.h"
#include "platform/pdf/PageSource.h"
#include "platform/pdf/ReadingMessages.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

#include <poppler-qt6.h>
#include <systemd/sd-bus.h>

using namespace inkory;
using namespace inkory::bench;

namespace
{

constexpr int mostPages = 20;
constexpr double scale = 1.45; // about what a window of usual width shows
constexpr int rounds = 5;
constexpr EngineChannel::Limits startLimits{5'000, 5'000};

DrawRequest pageRequest(int page, QSizeF size)
{
    const QSize pixels = (size * scale).toSize().expandedTo(QSize(1, 1)).boundedTo(QSize(3000, 3000));
    return {page, 0, scale, QRect(QPoint(0, 0), pixels)};
}

/// One document, ready to be drawn here and through helpers.
class Subject
{
public:
    explicit Subject(const QString &path)
    {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            m_bytes = file.readAll();
        const OpenReply reply = m_drawer.open(m_bytes, {}, PageDrawer::Repair::IfNeeded);
        if (reply.problem != OpenProblem::None)
            return;
        m_sizes = m_drawer.measureAllPages();
        m_sizes.resize(std::min<std::size_t>(m_sizes.size(), mostPages));
        if (auto opened = DocumentFile::open(path)) {
            bool isOpen = false;
            m_source->open(*opened, {}, [&isOpen](const OpenOutcome &) { isOpen = true; });
            runUntil([&] { return isOpen; });
        }
    }

    bool isOpen() const { return !m_sizes.empty(); }

    void drawHere()
    {
        for (int i = 0; i < count(); ++i) {
            const DrawRequest request = pageRequest(i, m_sizes[static_cast<std::size_t>(i)]);
            QImage target(request.region.size(), QImage::Format_RGB32);
            m_drawer.draw(request, target, [] { return false; });
        }
    }

    void drawThroughOne()
    {
        for (int i = 0; i < count(); ++i)
            drawThrough(DrawPriority::Thumbnail, i, i + 1);
    }

    // Over and over, as many files have one page only, and one page cannot keep two helpers busy. The second helper is
    // started only when visible pages wait: to be done twice before it is measured.
    void drawManyThroughTwo() { drawThrough(DrawPriority::Visible, 0, mostPages); }
    void drawManyThroughOne() { drawThrough(DrawPriority::Thumbnail, 0, mostPages); }

private:
    int count() const { return static_cast<int>(m_sizes.size()); }

    void drawThrough(DrawPriority priority, int first, int end)
    {
        int done = 0;
        for (int i = first; i < end; ++i)
            m_source->draw(pageRequest(i % count(), m_sizes[static_cast<std::size_t>(i % count())]), priority,
                           [&done](const Result<QImage> &) { ++done; });
        runUntil([&] { return done == end - first; });
    }

    QByteArray m_bytes;
    PageDrawer m_drawer;
    std::vector<QSizeF> m_sizes;
    std::unique_ptr<PageSource> m_source = makePageSource();
};

// From nothing to an answer, of a helper that locks itself up in between.
double millisecondsToStart()
{
    return millisecondsOf([] {
        auto channel = EngineChannel::start(EngineKind::Documents);
        const auto memory = SharedMemory::create(1);
        BusMessage call = channel ? (*channel)->newCall(engineBus::survey) : nullptr;
        if (!call || !append(call.get(), DocumentMessage{(*memory)->descriptor(), 1, {}}) ||
            (*channel)->call(std::move(call), startLimits).ending != EngineChannel::Ending::Answered)
            qFatal("a helper did not start");
    });
}

void findEverywhere(PageSource &source, int pages)
{
    int next = 0;
    std::size_t hits = 0;
    while (next < pages) {
        std::optional<FindReply> reply;
        source.find({QStringLiteral("PAGE"), next, pages}, [&](const Result<FindReply> &answer) {
            reply = answer ? *answer : FindReply{{}, pages};
        });
        runUntil([&] { return reply.has_value(); });
        next = reply->nextPage;
        hits += reply->hits.size();
    }
    if (hits != static_cast<std::size_t>(pages))
        qFatal("not everything was found");
}

void compareFinding(const QString &folder)
{
    constexpr int pages = 2'000;
    constexpr int linesPerPage = 45;
    const QString path = folder + QStringLiteral("/text.pdf");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(textPages(pages, linesPerPage)) <= 0)
        qFatal("the document could not be written");
    file.close();
    const auto source = makePageSource();
    bool isOpen = false;
    if (auto opened = DocumentFile::open(path))
        source->open(*opened, {}, [&isOpen](const OpenOutcome &) { isOpen = true; });
    runUntil([&] { return isOpen; });
    const auto document = Poppler::Document::load(path);
    const auto extractAll = [&] {
        for (int page = 0; page < pages; ++page)
            document->page(page)->textList();
    };
    constexpr int findRounds = 3;
    reportRatio(QStringLiteral("finding on 2000 pages / extracting their text in this process"),
                measureInTurn(
                    findRounds, [&] { findEverywhere(*source, pages); }, extractAll),
                1.2);
}

// What the window's thread does with the longest text.
void reportReading()
{
    const PageText longest{QString(PageText::mostCharacters, QLatin1Char('a')),
                           std::vector(PageText::mostCharacters, QRectF(1, 2, 3, 4))};
    auto channel = EngineChannel::start(EngineKind::Documents);
    const BusMessage message = channel ? (*channel)->newCall(engineBus::readText) : nullptr;
    if (!message || !append(message.get(), longest) || sd_bus_message_seal(message.get(), 1, 0) < 0)
        qFatal("no message could be made");
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        sd_bus_message_rewind(message.get(), 1);
        std::optional<PageText> text;
        times.push_back(millisecondsOf([&] { text = readPageText(message.get()); }));
        if (text != longest)
            qFatal("the text was not read");
    }
    reportNumber(QStringLiteral("reading a text of 100,000 characters from its message"), median(times),
                 QStringLiteral("ms"), 5);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    prepareEnvironment(folder.path());
    const QGuiApplication application(argc, argv);

    constexpr int startCount = 21;
    std::vector<double> starts;
    starts.reserve(startCount);
    for (int i = 0; i < startCount; ++i)
        starts.push_back(millisecondsToStart());
    reportNumber(QStringLiteral("start of a helper, until it answers"), median(starts), QStringLiteral("ms"), 30);

    std::vector<std::unique_ptr<Subject>> subjects;
    const QStringList files = QGuiApplication::arguments().mid(1);
    for (const QString &file : files) {
        auto subject = std::make_unique<Subject>(file);
        if (subject->isOpen())
            subjects.push_back(std::move(subject));
    }
    const auto all = [&](void (Subject::*draw)()) {
        return [&subjects, draw] {
            for (const auto &subject : subjects)
                ((*subject).*draw)();
        };
    };
    for (int i = 0; i < 2; ++i)
        all (&Subject::drawManyThroughTwo)();
    const auto name = [&](const char *what) {
        return QStringLiteral("%1, %2 files").arg(QLatin1String(what)).arg(subjects.size());
    };
    reportRatio(name("pages through one helper / in this process"),
                measureInTurn(rounds, all(&Subject::drawThroughOne), all(&Subject::drawHere)), 1.15);
    reportRatio(name("pages through two helpers / through one"),
                measureInTurn(rounds, all(&Subject::drawManyThroughTwo), all(&Subject::drawManyThroughOne)), 1 / 1.7);
    compareFinding(folder.path());
    reportReading();
    return exitStatus();
}
