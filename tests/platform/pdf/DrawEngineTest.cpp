#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/PageSource.h"
#include "platform/pdf/WriterTestFiles.h"

#include <QTest>
#include <QThread>

#include <array>
#include <cmath>
#include <optional>

using namespace inkory;

namespace
{

using test::makePdf;
using test::PageSpec;
using State = OpenOutcome::State;

const DrawRequest wholeCrookedPage{0, 0, 1, {0, 0, 200, 300}};

struct DrawEngine : testing::Test
{
    Result<std::shared_ptr<DocumentFile>> file(const QByteArray &bytes)
    {
        return DocumentFile::open(test::writeFile(m_folder.path(), QStringLiteral("a.pdf"), bytes));
    }

    template <typename Answer> static Answer awaited(const auto &start, const Answer &none)
    {
        std::optional<Answer> answer;
        start([&answer](const Answer &given) { answer = given; });
        EXPECT_FALSE(answer) << "answers come from the event loop";
        EXPECT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 10'000));
        return answer.value_or(none);
    }

    OpenOutcome open(const QByteArray &bytes, const QByteArray &password = {}) { return open(file(bytes), password); }
    OpenOutcome open(const Result<std::shared_ptr<DocumentFile>> &opened, const QByteArray &password = {})
    {
        return opened ? awaited([&](auto done) { m_source->open(*opened, password, done); }, OpenOutcome())
                      : OpenOutcome();
    }

    std::vector<QSizeF> measure()
    {
        return awaited([this](auto done) { m_source->measureAllPages(done); }, std::vector<QSizeF>());
    }

    Result<QImage> draw(const DrawRequest &request, DrawPriority priority = DrawPriority::Visible)
    {
        return awaited([&](auto done) { m_source->draw(request, priority, done); }, Result<QImage>(Error()));
    }

    QTemporaryDir m_folder;
    std::unique_ptr<PageSource> m_source = makePageSource();
};

// A page without any symmetry, so that each wrong turn or offset shows.
QByteArray crookedPage(const QByteArray &rotate = {})
{
    return makePdf({PageSpec{.mediaBox = "0 0 300 400",
                             .cropBox = "20 30 220 330", // 200 x 300
                             .rotate = rotate,
                             .contents = {test::rectangleContent(40, 60, 30, 50, "1 0 0"),
                                          test::rectangleContent(150, 250, 60, 20, "0 0 1"),
                                          test::textContent("abc", 60, 180, 40)}}});
}

struct EngineSamples : DrawEngine, testing::WithParamInterface<test::Sample>
{
    // Draws the stamp over the second quarter of the page's width and the third of its height, counted from below.
    void expectThatAStampCanBeWritten(const PageRect &box)
    {
        const test::Sample &sample = GetParam();
        const PageRect rect{box.x + box.width / 4, box.y + box.height / 2, box.width / 4, box.height / 4};
        const QString path =
            test::writtenFile(m_folder, test::stampRequest(sample.bytes, 0, rect, sample.password.toUtf8()));
        if (!sample.popplerAgrees)
            return;
        const int resolution = static_cast<int>(72 * 400 / std::max(box.width, box.height));
        const QImage page = test::renderWithPdftoppm(path, 1, resolution, sample.password);
        const auto turns = static_cast<std::size_t>(sample.rotation / 90);
        const double left = std::array{0.25, 0.5, 0.5, 0.25}[turns] * page.width();
        const double top = std::array{0.25, 0.25, 0.5, 0.5}[turns] * page.height();
        const QRect found = test::findInkBounds(page, Qt::green);
        EXPECT_LE(std::abs(found.x() - left) + std::abs(found.y() - top), 4);
        EXPECT_LE(std::abs(found.width() - page.width() / 4.0) + std::abs(found.height() - page.height() / 4.0), 4);
    }
};

TEST_P(EngineSamples, AreOpenedMeasuredAndWritten)
{
    const test::Sample &sample = GetParam();
    const QByteArray password = sample.password.toUtf8();
    const FileStructure structure = makeDocumentWriter()->readStructure(sample.bytes, password);
    if (sample.opens == test::Opens::No) {
        EXPECT_EQ(open(sample.bytes).state, State::Failed);
        EXPECT_TRUE(structure.pages.empty());
        return;
    }
    const OpenOutcome outcome = open(sample.bytes, password);
    EXPECT_EQ(outcome.state, State::Open);
    EXPECT_EQ(outcome.pageCount, sample.pages);
    ASSERT_EQ(structure.pages.size(), static_cast<std::size_t>(sample.pages));
    const PageRect box = structure.pages[0].cropBox;
    EXPECT_NEAR(box.width, sample.shownBox.width(), 0.01);
    EXPECT_NEAR(box.height, sample.shownBox.height(), 0.01);
    EXPECT_EQ(structure.pages[0].rotation, sample.rotation);
    EXPECT_EQ(structure.cannotWriteReason.isEmpty(), sample.name != QStringLiteral("protected-against-changes"));
    if (structure.cannotWriteReason.isEmpty())
        expectThatAStampCanBeWritten(box);
}

INSTANTIATE_TEST_SUITE_P(All, EngineSamples, testing::ValuesIn(test::troubleSamples()));

TEST_F(DrawEngine, SaysWhyAFileCannotBeShown)
{
    QByteArray locked = crookedPage();
    locked.replace("/Root", "/Encrypt << /Filter /Adobe.PubSec /V 2 /Length 128 >> /Root");
    const std::pair<QByteArray, QString> cases[] = {
        {"Dear all, this is no PDF file.\n", QStringLiteral("This file is not a PDF document.")},
        {"%PDF-1.4\n%%EOF\n", QStringLiteral("This PDF document is damaged and cannot be shown.")},
        {makePdf({}), QStringLiteral("This PDF document has no pages.")},
        {locked, QStringLiteral("This document is protected in a way that is not supported.")}};
    for (const auto &[bytes, message] : cases) {
        const OpenOutcome outcome = open(bytes);
        EXPECT_EQ(outcome.state, State::Failed) << message.toStdString();
        EXPECT_EQ(outcome.message, message);
        EXPECT_FALSE(draw(wholeCrookedPage));
        EXPECT_TRUE(measure().empty());
    }
}

// Against pdftoppm for the file's own rotation, and against a file that says the extra turn itself.
TEST_F(DrawEngine, DrawsARegionOfTheTurnedPage)
{
    for (int turns = 0; turns < 4; ++turns) {
        SCOPED_TRACE(turns);
        const QSizeF shown = turns % 2 == 0 ? QSizeF(200, 300) : QSizeF(300, 200);
        const QRect whole(QPoint(0, 0), shown.toSize() * 3);
        const QRect region(170, 90, 300, 420);
        open(crookedPage());
        const Result<QImage> extraTurned = draw({0, turns, 3, whole});
        const Result<QImage> extraPart = draw({0, turns, 3, region});

        const QByteArray turnedFile = crookedPage(QByteArray::number(90 * turns));
        EXPECT_EQ(open(turnedFile).firstPageSize, shown);
        EXPECT_EQ(measure(), std::vector<QSizeF>{shown});
        const Result<QImage> turned = draw({0, 0, 3, whole});
        const Result<QImage> part = draw({0, 0, 3, region}, DrawPriority::Thumbnail);
        ASSERT_TRUE(extraTurned && extraPart && turned && part);
        const QString path = test::writeFile(m_folder.path(), QStringLiteral("turned.pdf"), turnedFile);
        EXPECT_EQ(test::largestDifference(*turned, test::renderWithPdftoppm(path, 1, 216)), 0);
        EXPECT_EQ(test::largestDifference(*turned, *extraTurned), 0);
        EXPECT_EQ(test::largestDifference(*part, *extraPart), 0);
        // Glyphs are placed to a quarter pixel, so that edges may differ a little; an offset would differ by 255.
        EXPECT_LE(test::largestDifference(*part, turned->copy(region)), 20);
    }
}

TEST_F(DrawEngine, RefusesWhatCannotBeDrawn)
{
    open(crookedPage());
    for (const DrawRequest &request :
         {DrawRequest{1, 0, 1, {0, 0, 9, 9}}, DrawRequest{-1, 0, 1, {0, 0, 9, 9}}, DrawRequest{0, 0, 1, {0, 0, 0, 9}},
          DrawRequest{0, 0, std::nan(""), {0, 0, 9, 9}}, DrawRequest{0, 0, 200, {0, 0, 8001, 8000}},
          DrawRequest{0, 0, 200, {0, 0, 32'768, 9}}}) {
        const Result<QImage> image = draw(request);
        ASSERT_FALSE(image) << request.region.width();
        EXPECT_EQ(image.error().message, QStringLiteral("This page cannot be drawn."));
    }
    EXPECT_TRUE(draw({0, 0, 200, {0, 0, 32'767, 9}}));
}

TEST_F(DrawEngine, DoesNotAnswerWhatWasCancelledNorOnceItIsDestroyed)
{
    open(test::manyPages(40));
    int answers = 0;
    const auto count = [&answers](const auto &) { ++answers; };
    for (int page = 0; page < 40; ++page)
        m_source->cancel(m_source->draw({page, 0, 2, {0, 0, 1224, 1584}}, DrawPriority::Thumbnail, count));
    m_source->cancel(0);
    ASSERT_TRUE(draw({0, 0, 1, {0, 0, 10, 10}}, DrawPriority::Ahead)); // comes after whatever was running
    EXPECT_EQ(answers, 0);

    for (int page = 0; page < 40; ++page)
        m_source->draw({page, 0, 2, {0, 0, 1224, 1584}}, DrawPriority::Visible, count);
    m_source->measureAllPages(count);
    QThread::msleep(30); // some answers are on their way
    m_source.reset();
    QTest::qWait(30);
    EXPECT_EQ(answers, 0);
}

TEST_F(DrawEngine, DrawsFromThePrivateCopyOnceItExists)
{
    const auto opened = file(crookedPage());
    ASSERT_EQ(open(opened).state, State::Open);
    const Result<QImage> before = draw(wholeCrookedPage);
    ASSERT_TRUE((*opened)->makePrivateCopy());
    // Written into, not replaced: what was opened is this very file.
    test::writeFile(m_folder.path(), QStringLiteral("a.pdf"), "nothing");
    const Result<QImage> after = draw(wholeCrookedPage);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(*before, *after);
    EXPECT_EQ(measure().size(), 1U);
}

} // namespace
