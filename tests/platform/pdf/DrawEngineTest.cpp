#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/PageSource.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace inkory
{

namespace
{

using test::makePdf;
using test::PageSpec;
using test::rectangleContent;

class DrawEngine : public testing::Test
{
protected:
    std::shared_ptr<DocumentFile> file(const QByteArray &bytes)
    {
        const auto opened = DocumentFile::open(test::writeFile(m_folder.path(), QStringLiteral("a.pdf"), bytes));
        EXPECT_TRUE(opened) << bytes.size();
        return opened ? *opened : nullptr;
    }

    OpenOutcome open(const QByteArray &bytes, const QByteArray &password = {}) { return open(file(bytes), password); }
    OpenOutcome open(const std::shared_ptr<DocumentFile> &opened, const QByteArray &password = {})
    {
        std::optional<OpenOutcome> outcome;
        m_source->open(opened, password, [&](const OpenOutcome &answer) {
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
            outcome = answer;
        });
        EXPECT_FALSE(outcome) << "answers come from the event loop";
        EXPECT_TRUE(QTest::qWaitFor([&] { return outcome.has_value(); }, 10'000));
        return outcome.value_or(OpenOutcome());
    }

    std::vector<QSizeF> measure()
    {
        std::optional<std::vector<QSizeF>> sizes;
        m_source->measureAllPages([&](const std::vector<QSizeF> &answer) { sizes = answer; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return sizes.has_value(); }, 10'000));
        return sizes.value_or(std::vector<QSizeF>());
    }

    Result<QImage> draw(const DrawRequest &request, DrawPriority priority = DrawPriority::Visible)
    {
        std::optional<Result<QImage>> image;
        m_source->draw(request, priority, [&](const Result<QImage> &answer) { image = answer; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return image.has_value(); }, 10'000));
        return image.value_or(Error{QStringLiteral("no answer")});
    }

    QTemporaryDir m_folder;
    std::unique_ptr<PageSource> m_source = makePageSource();
};

// A page without any symmetry, so that each wrong turn or offset shows.
QByteArray crookedPage(const QByteArray &rotate)
{
    PageSpec page;
    page.mediaBox = "0 0 300 400";
    page.cropBox = "20 30 220 330"; // 200 x 300
    page.rotate = rotate;
    page.contents = {rectangleContent(40, 60, 30, 50, "1 0 0"), rectangleContent(150, 250, 60, 20, "0 0 1"),
                     test::textContent("abc", 60, 180, 40)};
    return makePdf({page});
}

TEST_F(DrawEngine, OpensAndMeasures)
{
    PageSpec turned;
    turned.mediaBox = "0 0 300 500.5";
    turned.rotate = "90";
    const OpenOutcome outcome = open(makePdf({turned, PageSpec()}));
    EXPECT_EQ(outcome.state, OpenOutcome::State::Open);
    EXPECT_EQ(outcome.message, QString());
    EXPECT_EQ(outcome.pageCount, 2);
    EXPECT_EQ(outcome.firstPageSize, QSizeF(500.5, 300));
    EXPECT_EQ(measure(), (std::vector<QSizeF>{{500.5, 300}, {612, 792}}));
}

struct Failing
{
    const char *name;
    QByteArray bytes;
    const char *message;
};

TEST_F(DrawEngine, SaysWhyAFileCannotBeShown)
{
    const QByteArray whole = makePdf({PageSpec()});
    const Failing cases[] = {
        {"text", "Dear all, this is no PDF file.\n", "This file is not a PDF document."},
        {"header only", "%PDF-1.4\n%%EOF\n", "This PDF document is damaged and cannot be shown."},
        {"no pages", makePdf({}), "This PDF document has no pages."},
    };
    for (const Failing &failing : cases) {
        const OpenOutcome outcome = open(failing.bytes);
        EXPECT_EQ(outcome.state, OpenOutcome::State::Failed) << failing.name;
        EXPECT_EQ(outcome.message, QLatin1String(failing.message)) << failing.name;
        EXPECT_FALSE(draw({0, 0, 1, {0, 0, 10, 10}})) << failing.name;
        EXPECT_TRUE(measure().empty()) << failing.name;
    }
}

TEST_F(DrawEngine, ShowsWhatTheWritingLibraryFindsInADamagedFile)
{
    QByteArray countless = crookedPage("0");
    countless.replace("/Count", "/Cxunt");
    EXPECT_EQ(open(countless).pageCount, 1);
    const Result<QImage> image = draw({0, 0, 1, {0, 0, 200, 300}});
    ASSERT_TRUE(image);
    EXPECT_EQ(test::findInkBounds(*image, Qt::red), QRect(20, 220, 30, 50));
}

TEST_F(DrawEngine, SaysThatTheKindOfProtectionIsUnknown)
{
    QByteArray bytes = makePdf({PageSpec()});
    bytes.replace("/Root", "/Encrypt << /Filter /Adobe.PubSec /V 2 /Length 128 >> /Root");
    const OpenOutcome outcome = open(bytes);
    EXPECT_EQ(outcome.state, OpenOutcome::State::Failed);
    EXPECT_EQ(outcome.message, QStringLiteral("This document is protected in a way that is not supported."));
}

TEST_F(DrawEngine, AsksForThePassword)
{
    const QByteArray plain = crookedPage("0");
    const auto locked =
        file(test::rewriteWithQpdf(plain, {QStringLiteral("--encrypt"), QStringLiteral("geheim"),
                                           QStringLiteral("owner"), QStringLiteral("256"), QStringLiteral("--")}));
    OpenOutcome outcome = open(locked);
    EXPECT_EQ(outcome.state, OpenOutcome::State::PasswordNeeded);
    EXPECT_EQ(outcome.message, QStringLiteral("This document is protected by a password."));
    outcome = open(locked, "wrong");
    EXPECT_EQ(outcome.state, OpenOutcome::State::PasswordNeeded);
    EXPECT_EQ(outcome.message, QStringLiteral("That password is not right. Try again."));
    outcome = open(locked, QByteArray(3000, 'x')); // one of 128 bytes has crashed the library
    EXPECT_EQ(outcome.state, OpenOutcome::State::PasswordNeeded);
    EXPECT_EQ(open(locked, "owner").state, OpenOutcome::State::Open);
    EXPECT_EQ(open(locked, "geheim").state, OpenOutcome::State::Open);
    const DrawRequest whole{0, 0, 1, {0, 0, 200, 300}};
    const Result<QImage> image = draw(whole);
    ASSERT_TRUE(image);
    open(plain);
    const Result<QImage> plainImage = draw(whole);
    ASSERT_TRUE(plainImage);
    EXPECT_EQ(*image, *plainImage);
}

TEST_F(DrawEngine, TriesPasswordsInLatin1)
{
    const QString password = QStringLiteral("h\u00f4tel");
    const QByteArray bytes = test::rewriteWithQpdf(
        crookedPage("0"), {QStringLiteral("--allow-weak-crypto"), QStringLiteral("--password-mode=unicode"),
                           QStringLiteral("--encrypt"), password, QStringLiteral("owner"), QStringLiteral("128"),
                           QStringLiteral("--use-aes=y"), QStringLiteral("--")});
    EXPECT_EQ(open(bytes, password.toUtf8()).state, OpenOutcome::State::Open);
}

class DrawnTurns : public DrawEngine, public testing::WithParamInterface<int>
{
};

// Against pdftoppm for the file's own rotation, and against a file that says the extra turn itself.
TEST_P(DrawnTurns, DrawsARegionOfTheTurnedPage)
{
    const int turns = GetParam();
    const double scale = 3;
    const QSize size = turns % 2 == 0 ? QSize(600, 900) : QSize(900, 600);
    open(crookedPage("0"));
    const Result<QImage> extraTurned = draw({0, turns, scale, QRect(QPoint(0, 0), size)});
    ASSERT_TRUE(extraTurned);

    const QByteArray turnedFile = crookedPage(QByteArray::number(90 * turns));
    open(turnedFile);
    const Result<QImage> whole = draw({0, 0, scale, QRect(QPoint(0, 0), size)});
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->size(), size);
    EXPECT_EQ(whole->devicePixelRatio(), 1);
    EXPECT_EQ(test::largestDifference(*whole, *extraTurned), 0);
    const QString path = test::writeFile(m_folder.path(), QStringLiteral("turned.pdf"), turnedFile);
    EXPECT_EQ(test::largestDifference(*whole, test::renderWithPdftoppm(path, 1, 216)), 0);

    const QRect region(170, 90, 300, 420);
    const Result<QImage> part = draw({0, 0, scale, region}, DrawPriority::Thumbnail);
    ASSERT_TRUE(part);
    // Glyphs are placed to a quarter pixel, so that edges may differ a little; an offset would differ by 255.
    EXPECT_LE(test::largestDifference(*part, whole->copy(region)), 20);
    const Result<QImage> extraPart = [&] {
        open(crookedPage("0"));
        return draw({0, turns, scale, region});
    }();
    ASSERT_TRUE(extraPart);
    EXPECT_EQ(test::largestDifference(*part, *extraPart), 0);
}

INSTANTIATE_TEST_SUITE_P(Turns, DrawnTurns, testing::Values(0, 1, 2, 3));

TEST_F(DrawEngine, DrawsWhiteBesideThePage)
{
    open(crookedPage("0"));
    const Result<QImage> image = draw({0, 0, 1, {-50, -50, 300, 400}});
    ASSERT_TRUE(image);
    // The red square is at 20 to 50 points from the crop box's left, 220 to 270 from its top.
    EXPECT_EQ(test::findInkBounds(*image, Qt::red), QRect(70, 270, 30, 50));
    EXPECT_EQ(image->pixelColor(0, 0), QColor(Qt::white));
}

TEST_F(DrawEngine, RefusesWhatCannotBeDrawn)
{
    open(crookedPage("0"));
    const DrawRequest refused[] = {
        {1, 0, 1, {0, 0, 10, 10}},        {-1, 0, 1, {0, 0, 10, 10}},         {0, 0, 1, {0, 0, 0, 10}},
        {0, 0, 0, {0, 0, 10, 10}},        {0, 0, std::nan(""), {0, 0, 9, 9}}, {0, 0, 200, {0, 0, 8001, 8000}},
        {0, 0, 200, {0, 0, 32'768, 100}},
    };
    for (const DrawRequest &request : refused) {
        const Result<QImage> image = draw(request);
        ASSERT_FALSE(image) << request.region.width();
        EXPECT_EQ(image.error().message, QStringLiteral("This page cannot be drawn."));
    }
    EXPECT_TRUE(draw({0, 0, 200, {0, 0, 32'767, 100}}));
}

TEST_F(DrawEngine, DoesNotAnswerWhatWasCancelled)
{
    open(test::manyPages(40));
    int answers = 0;
    std::vector<DrawToken> tokens;
    for (int page = 0; page < 40; ++page) {
        tokens.push_back(m_source->draw({page, 0, 2, {0, 0, 1224, 1584}}, DrawPriority::Thumbnail,
                                        [&](const auto &) { ++answers; }));
    }
    for (const DrawToken token : tokens)
        m_source->cancel(token);
    m_source->cancel(0);
    ASSERT_TRUE(draw({0, 0, 1, {0, 0, 10, 10}}, DrawPriority::Ahead)); // comes after whatever was running
    EXPECT_EQ(answers, 0);
}

TEST_F(DrawEngine, DoesNotAnswerOnceItIsDestroyed)
{
    int answers = 0;
    open(test::manyPages(40));
    for (int page = 0; page < 40; ++page)
        m_source->draw({page, 0, 1, {0, 0, 612, 792}}, DrawPriority::Visible, [&](const auto &) { ++answers; });
    m_source->measureAllPages([&](const auto &) { ++answers; });
    QThread::msleep(30); // some answers are on their way
    m_source.reset();
    QTest::qWait(30);
    EXPECT_EQ(answers, 0);
}

TEST_F(DrawEngine, AnswersOnlyTheLastOfTwoOpenings)
{
    int first = 0;
    m_source->open(file(crookedPage("0")), {}, [&](const auto &) { ++first; });
    EXPECT_EQ(open(test::manyPages(2)).pageCount, 2);
    EXPECT_EQ(first, 0);
}

TEST_F(DrawEngine, MayBeDestroyedByItsAnswer)
{
    bool answered = false;
    m_source->open(file(crookedPage("0")), {}, [&](const auto &) {
        m_source.reset();
        answered = true;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return answered; }, 10'000));
}

TEST_F(DrawEngine, DrawsFromThePrivateCopyOnceItExists)
{
    const auto opened = file(crookedPage("0"));
    ASSERT_EQ(open(opened).state, OpenOutcome::State::Open);
    const DrawRequest whole{0, 0, 1, {0, 0, 200, 300}};
    const Result<QImage> before = draw(whole);
    ASSERT_TRUE(opened->makePrivateCopy());
    // Written into, not replaced: what was opened is this very file.
    QFile file(m_folder.filePath(QStringLiteral("a.pdf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("nothing");
    file.close();
    const Result<QImage> after = draw(whole);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(*before, *after);
    EXPECT_EQ(measure().size(), 1U);
}

} // namespace

} // namespace inkory
