#include "platform/engine/PageDrawer.h"
#include "platform/engine/WriterTestFiles.h"

#include <array>
#include <cmath>

using namespace inkory;

namespace
{

using test::makePdf;
using test::PageSpec;
using Repair = PageDrawer::Repair;

struct Drawing : testing::Test
{
    OpenReply open(const QByteArray &bytes, const QByteArray &password = {}, Repair repair = Repair::IfNeeded)
    {
        m_bytes = bytes;
        return m_drawer.open(m_bytes, password, repair);
    }

    /// A null image where it fails.
    QImage draw(const DrawRequest &request)
    {
        QImage target(request.region.size(), QImage::Format_RGB32);
        return m_drawer.draw(request, target, [] { return false; }) ? target : QImage();
    }

    QTemporaryDir m_folder;
    QByteArray m_bytes;
    PageDrawer m_drawer;
};

const DrawRequest wholeCrookedPage{0, 0, 1, {0, 0, 200, 300}};

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

// Draws the stamp over the second quarter of the page's width and the third of its height, counted from below.
void expectThatAStampCanBeWritten(const test::Sample &sample, const PageRect &box)
{
    const QTemporaryDir folder;
    const PageRect rect{box.x + box.width / 4, box.y + box.height / 2, box.width / 4, box.height / 4};
    const QString path = test::writtenFile(folder, test::stampChange(sample.bytes, 0, rect, sample.password.toUtf8()));
    if (!sample.popplerAgrees)
        return;
    const int resolution = static_cast<int>(72 * 400 / std::max(box.width, box.height));
    const QImage page = test::renderWithPdftoppm(path, 1, resolution, sample.password);
    const auto turns = static_cast<std::size_t>(sample.rotation / 90);
    const double left = std::array{0.25, 0.5, 0.5, 0.25}[turns] * page.width();
    const double top = std::array{0.25, 0.25, 0.5, 0.5}[turns] * page.height();
    const QRect found = test::findInkBounds(page, Qt::green);
    test::expectNear(found, {left, top, page.width() / 4.0, page.height() / 4.0}, 4);
}

struct DrawingSamples : Drawing, testing::WithParamInterface<test::Sample>
{
};

TEST_P(DrawingSamples, AreOpenedMeasuredAndWritten)
{
    const test::Sample &sample = GetParam();
    const QByteArray password = sample.password.toUtf8();
    const FileStructure structure = readStructure(sample.bytes, password);
    if (sample.opens == test::Opens::No) {
        EXPECT_NE(open(sample.bytes).problem, OpenProblem::None);
        EXPECT_TRUE(structure.pages.empty());
        return;
    }
    const OpenReply reply = open(sample.bytes, password);
    EXPECT_EQ(reply.problem, OpenProblem::None);
    EXPECT_EQ(reply.pageCount, sample.pages);
    EXPECT_FALSE(reply.isRepaired);
    ASSERT_EQ(structure.pages.size(), static_cast<std::size_t>(sample.pages));
    const PageRect box = structure.pages[0].cropBox;
    EXPECT_NEAR(box.width, sample.shownBox.width(), 0.01);
    EXPECT_NEAR(box.height, sample.shownBox.height(), 0.01);
    EXPECT_EQ(structure.pages[0].rotation, sample.rotation);
    EXPECT_EQ(structure.isRepaired, sample.name == QStringLiteral("no-cross-references"));
    EXPECT_EQ(structure.problem == WriteProblem::None, sample.name != QStringLiteral("protected-against-changes"));
    if (structure.problem == WriteProblem::None)
        expectThatAStampCanBeWritten(sample, box);
}

INSTANTIATE_TEST_SUITE_P(All, DrawingSamples, testing::ValuesIn(test::troubleSamples()));

TEST_F(Drawing, TellsWhyAFileCannotBeShown)
{
    QByteArray unknown = crookedPage();
    unknown.replace("/Root", "/Encrypt << /Filter /Adobe.PubSec /V 2 /Length 128 >> /Root");
    const QByteArray locked = test::troubleSample(QStringLiteral("encrypted-with-password")).bytes;
    const std::tuple<QByteArray, QByteArray, OpenProblem> cases[] = {
        {"Dear all, this is no PDF file.\n", {}, OpenProblem::NotPdf},
        {"%PDF-1.4\n%%EOF\n", {}, OpenProblem::Damaged},
        {makePdf({}), {}, OpenProblem::NoPages},
        {unknown, {}, OpenProblem::ProtectionUnknown},
        {locked, {}, OpenProblem::PasswordNeeded},
        {locked, QByteArray(1000, 'x'), OpenProblem::PasswordWrong}};
    for (const auto &[bytes, password, problem] : cases) {
        open(crookedPage());
        EXPECT_EQ(open(bytes, password).problem, problem);
        EXPECT_TRUE(draw(wholeCrookedPage).isNull()) << "the former document is closed";
        EXPECT_TRUE(m_drawer.measureAllPages().empty());
    }
    EXPECT_EQ(open(locked, "pass", Repair::First).problem, OpenProblem::PasswordWrong);
    EXPECT_EQ(open(locked, "secret", Repair::First).pageCount, 3);
}

TEST_F(Drawing, ShowsWhatTheWritingLibraryMakesOfAFile)
{
    QByteArray uncounted = crookedPage();
    uncounted.replace("/Count 1", "");
    open(crookedPage());
    const QImage healthy = draw(wholeCrookedPage);
    for (const auto &[bytes, repair] : {std::pair(uncounted, Repair::IfNeeded), {crookedPage(), Repair::First}}) {
        const OpenReply reply = open(bytes, {}, repair);
        EXPECT_TRUE(reply.isRepaired);
        EXPECT_EQ(reply.pageCount, 1);
        EXPECT_EQ(draw(wholeCrookedPage), healthy);
    }
}

// Against pdftoppm for the file's own rotation, and against a file that says the extra turn itself.
TEST_F(Drawing, DrawsARegionOfTheTurnedPage)
{
    for (int turns = 0; turns < 4; ++turns) {
        SCOPED_TRACE(turns);
        const QSizeF shown = turns % 2 == 0 ? QSizeF(200, 300) : QSizeF(300, 200);
        const QRect whole(QPoint(0, 0), shown.toSize() * 3);
        const QRect region(170, 90, 300, 420);
        open(crookedPage());
        const QImage extraTurned = draw({0, turns, 3, whole});
        const QImage extraPart = draw({0, turns, 3, region});

        const QByteArray turnedFile = crookedPage(QByteArray::number(90 * turns));
        EXPECT_EQ(open(turnedFile).firstPageSize, shown);
        EXPECT_EQ(m_drawer.measureAllPages(), std::vector<QSizeF>{shown});
        const QImage turned = draw({0, 0, 3, whole});
        const QImage part = draw({0, 0, 3, region});
        const QString path = test::writeFile(m_folder.path(), QStringLiteral("turned.pdf"), turnedFile);
        EXPECT_EQ(test::largestDifference(turned, test::renderWithPdftoppm(path, 1, 216)), 0);
        EXPECT_EQ(test::largestDifference(turned, extraTurned), 0);
        EXPECT_EQ(test::largestDifference(part, extraPart), 0);
        // Glyphs are placed to a quarter pixel, so that edges may differ a little; an offset would differ by 255.
        EXPECT_LE(test::largestDifference(part, turned.copy(region)), 20);
    }
}

TEST_F(Drawing, RefusesWhatCannotBeDrawn)
{
    open(crookedPage());
    for (const DrawRequest &request :
         {DrawRequest{1, 0, 1, {0, 0, 9, 9}}, DrawRequest{-1, 0, 1, {0, 0, 9, 9}}, DrawRequest{0, 0, 1, {0, 0, 0, 9}},
          DrawRequest{0, 0, std::nan(""), {0, 0, 9, 9}}, DrawRequest{0, 0, -1, {0, 0, 9, 9}},
          DrawRequest{0, 0, 200, {0, 0, 8001, 8000}}, DrawRequest{0, 0, 200, {0, 0, 32'768, 9}}}) {
        EXPECT_TRUE(draw(request).isNull()) << request.region.width();
    }
    EXPECT_FALSE(draw({0, 0, 200, {0, 0, 32'767, 9}}).isNull());
    for (QImage target : {QImage(200, 299, QImage::Format_RGB32), QImage(200, 300, QImage::Format_Grayscale8)})
        EXPECT_FALSE(m_drawer.draw(wholeCrookedPage, target, [] { return false; }));
}

TEST_F(Drawing, IsGivenUpOnceItIsCancelled)
{
    QImage target(200, 300, QImage::Format_RGB32);
    for (const auto &[operators, cancelledAt] : {std::pair(0, 1), {1000, 1}, {1000, 5}}) {
        open(makePdf({PageSpec{.contents = {QByteArray("0 0 9 9 re f ").repeated(operators)}}}));
        int asked = 0;
        EXPECT_FALSE(m_drawer.draw(wholeCrookedPage, target, [&] { return ++asked == cancelledAt; }));
        EXPECT_EQ(asked, cancelledAt) << "asked no more";
    }
}

} // namespace
