#include "platform/engine/WriterTestFiles.h"

using namespace inkory;

namespace
{

using test::makePdf;
using test::PageSpec;
using test::stampChange;

// As displayed: 50 to 100 points from the left, 642 to 692 from the top of a letter page.
const PageRect stampRect{50, 100, 50, 50};
const QRect shownStamp{50, 642, 50, 50};

struct WriterStamp : testing::Test
{
    QString input(const QByteArray &file) const { return test::writeFile(m_folder.path(), u"in.pdf"_qs, file); }
    QString write(const test::Change &change) const { return test::writtenFile(m_folder, change); }

    QTemporaryDir m_folder;
};

QRect stampOn(const QString &path, int page)
{
    // That program draws images larger than they are by a pixel at the right and at the bottom.
    return test::findInkBounds(test::renderWithPdftoppm(path, page), Qt::green).adjusted(0, 0, -1, -1);
}

TEST_F(WriterStamp, StandsInPageSpaceHoweverThePageIsTurned)
{
    const std::pair<int, QRect> cases[] = {
        {0, {90, 390, 50, 30}}, {90, {180, 90, 30, 50}}, {180, {260, 180, 50, 30}}, {270, {390, 260, 30, 50}}};
    for (const auto &[rotation, shown] : cases) {
        PageSpec page{.cropBox = "10 20 410 620"};
        test::Change turnedNow = stampChange(makePdf({page}), 0, {100, 200, 50, 30});
        turnedNow.request.pages[0].rotation = rotation;
        EXPECT_EQ(stampOn(write(turnedNow), 1), shown) << rotation << " degrees, turned by the user";
        page.rotate = QByteArray::number(rotation);
        EXPECT_EQ(stampOn(write(stampChange(makePdf({page}), 0, {100, 200, 50, 30})), 1), shown) << rotation;
    }
}

const QByteArray blueBox = test::rectangleContent(100, 150, 80, 40, "0 0 1");

/// A page's content streams.
using Content = std::vector<QByteArray>;

// What each content looks like, where it is not the same: viewers ignore unmatched restores, but one draws nothing any
// more.
const std::pair<Content, Content> contents[] = {
    {{}, {}},
    {{"q 1 0 0 1 30", " 60 cm", blueBox + "Q"}, {}},
    {{"q 2 0 0 2 30 60 cm q 0 1 -1 0 400 0 cm " + blueBox}, {}},
    {{"q " + blueBox + " Q Q Q"}, {}},
    {{"2 0 0 2 10 10 cm Q Q q " + blueBox + " Q"}, {"2 0 0 2 10 10 cm " + blueBox}},
    {{"1.5 0 0 1.5 0 0 cm Q", "q Q Q", blueBox}, {"1.5 0 0 1.5 0 0 cm " + blueBox}},
    {{test::textContent("before") + " BT /F1 20 Tf 2 0 0 2 100 300 Tm (open) Tj"}, {}},
    {{"BT /F1 20 Tf 100 300 Td (Q Q BT q) Tj ET " + blueBox}, {}},
    {{"0 0 10 10 re W n " + blueBox}, {}},
    // What is appended to these would become a part of their last object.
    {{test::textContent("before") + blueBox + "q BT (never ended"}, {}},
    {{"2 0 0 2 10 10 cm", blueBox + "<0123"}, {}},
    {{blueBox + "[ 1 2"}, {}},
    {{blueBox + "/Span << /MCID 0"}, {}},
    {{blueBox + "/Span << [ >> ] BDC"}, {}},
    {{blueBox + "BI /W 1 /H 1"}, {}},
    {{blueBox + "BI /W 1 /H 1 /CS /G /BPC 8 ID abc"}, {}},
    {{"\xF5\xB1 65\"JX )<>a \xCD(\x10 4LA {[1e<< \x8D%u7 [/p(\\"}, {}},
};

TEST_F(WriterStamp, IsNotMovedByAnyContentAndLeavesItsLook)
{
    for (const auto &[content, sameAs] : contents) {
        SCOPED_TRACE(content.empty() ? "none" : content.front().constData());
        const PageSpec looks{.contents = sameAs.empty() ? content : sameAs};
        const QString originalPath = input(makePdf({looks}));
        const QString path = write(stampChange(makePdf({PageSpec{.contents = content}}), 0, stampRect));
        EXPECT_EQ(stampOn(path, 1), shownStamp);
        const QRect aboveStamp(0, 0, 612, 642);
        EXPECT_EQ(test::largestDifference(test::renderWithPdftoppm(path, 1).copy(aboveStamp),
                                          test::renderWithPdftoppm(originalPath, 1).copy(aboveStamp)),
                  0);
        EXPECT_EQ(test::pdfText(path, 1), test::pdfText(originalPath, 1));
    }
}

TEST_F(WriterStamp, LeavesAloneWhatAnotherPageShares)
{
    for (const char *name : {"shared-resources-and-contents", "same-page-twice"}) {
        const QByteArray bytes = test::troubleSample(QLatin1String(name)).bytes;
        const QString originalPath = input(bytes);
        const QString path = write(stampChange(bytes, 1, stampRect));
        EXPECT_EQ(stampOn(path, 2), shownStamp) << name;
        EXPECT_EQ(test::pdfText(path, 2), test::pdfText(originalPath, 2));
        EXPECT_EQ(test::largestDifference(test::renderWithPdftoppm(path, 1), test::renderWithPdftoppm(originalPath, 1)),
                  0);
        const QByteArray plain = test::rewriteWithQpdf(
            test::readFile(path), {QStringLiteral("--qdf"), QStringLiteral("--object-streams=disable")});
        EXPECT_EQ(plain.count("/Stamp1 "), 2) << "once in the resources, once in the content";
    }
}

TEST_F(WriterStamp, RefusesWhatTheAuthorForbidsAndKeepsItForbidden)
{
    const QByteArray original = test::troubleSample(QStringLiteral("protected-against-changes")).bytes;
    EXPECT_EQ(readStructure(original, {}).problem, WriteProblem::ChangesForbidden);
    EXPECT_EQ(readStructure(original, "owner").problem, WriteProblem::None);
    EXPECT_EQ(test::write(stampChange(original, 0, stampRect)).problem, WriteProblem::ChangesForbidden);
    const QString path = write(stampChange(original, 0, stampRect, "owner"));
    EXPECT_EQ(stampOn(path, 1), shownStamp);
    EXPECT_EQ(readStructure(test::readFile(path), {}).problem, WriteProblem::ChangesForbidden);
    EXPECT_EQ(readStructure(test::readFile(path), "owner").problem, WriteProblem::None);
}

TEST_F(WriterStamp, EnclosesContentThatExplodesAsItIs)
{
    // 300 MB of spaces, twice deflated to a few hundred bytes.
    const QByteArray spaces = qCompress(qCompress(QByteArray(300'000'000, ' '), 9).mid(4), 9).mid(4);
    QByteArray original = makePdf({PageSpec{.contents = {spaces}}});
    original.replace("<< /Length ", "<< /Filter [/FlateDecode /FlateDecode] /Length ");
    const WrittenDocument written = test::write(stampChange(original, 0, stampRect));
    EXPECT_EQ(written.problem, WriteProblem::None);
    EXPECT_LT(written.bytes.size(), 10'000) << "nobody has to decode it";
    EXPECT_EQ(test::write(test::drawingChange(original, {})).problem, WriteProblem::None);
}

// Boxes that no viewer complains about are among the samples.
TEST(WriterStructure, ReplacesSenselessBoxes)
{
    const PageRect letter{0, 0, 612, 792};
    const std::pair<QByteArray, PageRect> cases[] = {{"", letter},
                                                     {"0 0 100", letter},
                                                     {"/A /B /C /D", letter},
                                                     {"0 0 1" + QByteArray(400, '0') + ".0 100", letter},
                                                     {"10 10 20010 30010", {10, 10, 14'400, 14'400}}};
    for (const auto &[mediaBox, expected] : cases) {
        const FileStructure structure = readStructure(makePdf({PageSpec{.mediaBox = mediaBox}}), {});
        EXPECT_EQ(structure.pages, (std::vector{PageGeometry{expected, expected, 0}})) << mediaBox.constData();
        EXPECT_EQ(structure.problem, WriteProblem::None);
    }
}

// 2^30 pages in a few hundred bytes, where each level names the next one twice; or one page, very far down.
TEST(WriterStructure, RefusesAPageTreeThatIsTooLargeOrTooDeep)
{
    for (const auto &[levels, kids] : {std::pair(32, 2), std::pair(50'000, 1)}) {
        QByteArray file = "%PDF-1.4\n1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj\n";
        for (int level = 2; level < levels; ++level) {
            file += QByteArray::number(level) + " 0 obj << /Type /Pages /Count 1 /Kids [" +
                    (QByteArray::number(level + 1) + " 0 R ").repeated(kids) + "] >> endobj\n";
        }
        file += QByteArray::number(levels) +
                " 0 obj << /Type /Page /MediaBox [0 0 9 9] >> endobj\ntrailer << /Root 1 0 R >>\n";
        EXPECT_EQ(readStructure(file, {}).problem, WriteProblem::Damaged);
    }
}

} // namespace
