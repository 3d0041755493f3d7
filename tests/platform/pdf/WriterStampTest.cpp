#include "platform/pdf/DocumentWriter.h"
#include "platform/pdf/WriterTestFiles.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QColor>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace inkory
{

namespace
{

using test::makePdf;
using test::PageSpec;
using test::rectangleContent;
using test::stampRequest;
using test::unchangedRequest;

// As displayed: 50 to 100 points from the left, 642 to 692 from the top of a letter page.
const PageRect stampRect{50, 100, 50, 50};
const QRect shownStamp{50, 642, 50, 50};

class WriterStamp : public testing::Test
{
protected:
    /// Writes, checks that the file is sound, and answers its path.
    QString write(const WriteRequest &request)
    {
        const Result<QByteArray> bytes = makeDocumentWriter()->write(request);
        EXPECT_TRUE(bytes) << bytes.error().message.toStdString();
        m_bytes = bytes ? *bytes : QByteArray();
        const QString path = test::writeFile(m_folder.path(), QStringLiteral("out.pdf"), m_bytes);
        EXPECT_EQ(test::qpdfCheck(path, QString::fromUtf8(request.password)), QString());
        return path;
    }

    QTemporaryDir m_folder;
    QByteArray m_bytes;
};

bool isNear(const QRect &a, const QRect &b)
{
    return std::abs(a.left() - b.left()) <= 1 && std::abs(a.top() - b.top()) <= 1 &&
           std::abs(a.right() - b.right()) <= 1 && std::abs(a.bottom() - b.bottom()) <= 1;
}

testing::AssertionResult shows(const QString &path, int page, const QRect &stamp, const QString &password = {})
{
    const QRect found = test::findInkBounds(test::renderWithPdftoppm(path, page, 72, password), Qt::red);
    if (isNear(found, stamp))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the stamp covers " << found.x() << ", " << found.y() << ", " << found.width()
                                       << " x " << found.height();
}

// What the page shows but for the stamp.
QImage withoutStamp(QImage image)
{
    QPainter(&image).fillRect(shownStamp.adjusted(-2, -2, 2, 2), Qt::white);
    return image;
}

struct Turned
{
    int rotation;
    QRect shown;
};

class WriterTurns : public WriterStamp, public testing::WithParamInterface<Turned>
{
};

TEST_P(WriterTurns, PutsTheStampInPageSpace)
{
    PageSpec page;
    page.cropBox = "10 20 410 620";
    page.rotate = QByteArray::number(GetParam().rotation);
    EXPECT_TRUE(shows(write(stampRequest(makePdf({page}), 0, {100, 200, 50, 30})), 1, GetParam().shown));

    page.rotate = {};
    WriteRequest turnedNow = stampRequest(makePdf({page}), 0, {100, 200, 50, 30});
    turnedNow.pages[0].rotation = GetParam().rotation;
    EXPECT_TRUE(shows(write(turnedNow), 1, GetParam().shown)) << "turned by the user";
}

INSTANTIATE_TEST_SUITE_P(Rotations, WriterTurns,
                         testing::Values(Turned{0, {90, 390, 50, 30}}, Turned{90, {180, 90, 30, 50}},
                                         Turned{180, {260, 180, 50, 30}}, Turned{270, {390, 260, 30, 50}}));

struct Content
{
    const char *name;
    std::vector<QByteArray> streams;
    /// What it looks like: as these streams, where given. (Some viewers ignore unmatched restores, one draws nothing
    /// any more.)
    std::vector<QByteArray> sameAs = {};
};

void PrintTo(const Content &content, std::ostream *stream)
{
    *stream << content.name;
}

class WriterContent : public WriterStamp, public testing::WithParamInterface<Content>
{
};

TEST_P(WriterContent, KeepsItsLookAndDoesNotMoveTheStamp)
{
    PageSpec page;
    page.contents = GetParam().streams;
    const QByteArray original = makePdf({page});
    if (!GetParam().sameAs.empty())
        page.contents = GetParam().sameAs;
    const QString originalPath = test::writeFile(m_folder.path(), QStringLiteral("in.pdf"), makePdf({page}));
    const QString path = write(stampRequest(original, 0, stampRect));
    EXPECT_TRUE(shows(path, 1, shownStamp));
    EXPECT_EQ(test::largestDifference(withoutStamp(test::renderWithPdftoppm(path, 1)),
                                      withoutStamp(test::renderWithPdftoppm(originalPath, 1))),
              0);
    EXPECT_EQ(test::pdfText(path, 1), test::pdfText(originalPath, 1));
}

const QByteArray blueBox = rectangleContent(100, 150, 80, 40, "0 0 1");

INSTANTIATE_TEST_SUITE_P(
    Kinds, WriterContent,
    testing::Values(Content{"none", {}}, Content{"plain", {blueBox}},
                    Content{"split", {"q 1 0 0 1 30", " 60 cm", blueBox + "Q"}},
                    Content{"open saves", {"q 2 0 0 2 30 60 cm q 0 1 -1 0 400 0 cm " + blueBox}},
                    Content{"unmatched restores at the end", {"q " + blueBox + " Q Q Q"}},
                    Content{"unmatched restore in the middle",
                            {"2 0 0 2 10 10 cm Q Q q " + blueBox + " Q"},
                            {"2 0 0 2 10 10 cm " + blueBox}},
                    Content{"restores across streams",
                            {"1.5 0 0 1.5 0 0 cm Q", "q Q Q", blueBox},
                            {"1.5 0 0 1.5 0 0 cm " + blueBox}},
                    Content{"open text", {test::textContent("before") + " BT /F1 20 Tf 2 0 0 2 100 300 Tm (open) Tj"}},
                    Content{"operators inside strings", {"BT /F1 20 Tf 100 300 Td (Q Q BT q) Tj ET " + blueBox}},
                    Content{"transparent and clipped", {"0 0 10 10 re W n " + blueBox}}));

TEST_F(WriterStamp, LeavesSharedResourcesAndOtherPagesAlone)
{
    // Both pages use one indirect resource dictionary, inherited; nothing but the first may get the stamp.
    PageSpec page;
    page.resources = {};
    page.contents = {test::textContent("shared")};
    const QByteArray original = makePdf({page, page}, "/Resources << /Font << /F1 3 0 R >> >>");
    const QString originalPath = test::writeFile(m_folder.path(), QStringLiteral("in.pdf"), original);
    const QString path = write(stampRequest(original, 0, stampRect));
    EXPECT_TRUE(shows(path, 1, shownStamp));
    EXPECT_EQ(test::pdfText(path, 1), test::pdfText(originalPath, 1));
    EXPECT_EQ(test::largestDifference(test::renderWithPdftoppm(path, 2), test::renderWithPdftoppm(originalPath, 2)), 0);
    const QByteArray secondPage =
        test::runTool(QStringLiteral("qpdf"), {QStringLiteral("--show-npages"), path}).output.trimmed();
    EXPECT_EQ(secondPage, "2");
    EXPECT_EQ(
        test::runTool(QStringLiteral("qpdf"),
                      {QStringLiteral("--qdf"), QStringLiteral("--object-streams=disable"), path, QStringLiteral("-")})
            .output.count("/Stamp1 "),
        2)
        << "once in the resources, once in the content";
}

TEST_F(WriterStamp, StampsOnlyOneOfTwoPagesThatAreOneObject)
{
    QByteArray original = makePdf({PageSpec()});
    const qsizetype kids = original.indexOf("/Kids [") + 7;
    const QByteArray reference = original.mid(kids, original.indexOf(']', kids) - kids);
    original.insert(kids, reference + ' ');
    original.replace("/Count 1", "/Count 2");
    const QString path = write(stampRequest(original, 1, stampRect));
    EXPECT_TRUE(test::findInkBounds(test::renderWithPdftoppm(path, 1), Qt::red).isEmpty());
    EXPECT_TRUE(shows(path, 2, shownStamp));
}

TEST_F(WriterStamp, KeepsEncryptionAndPasswords)
{
    const QByteArray original = test::rewriteWithQpdf(
        makePdf({PageSpec()}), {QStringLiteral("--encrypt"), QStringLiteral("user"), QStringLiteral("owner"),
                                QStringLiteral("256"), QStringLiteral("--print=none"), QStringLiteral("--")});
    const QString path = write(stampRequest(original, 0, stampRect, "user"));
    EXPECT_TRUE(shows(path, 1, shownStamp, QStringLiteral("user")));
    const auto describe = [](const QString &file, const QString &password) {
        return test::runTool(QStringLiteral("qpdf"),
                             {QStringLiteral("--show-encryption"), QStringLiteral("--password=") + password, file});
    };
    const QString originalPath = test::writeFile(m_folder.path(), QStringLiteral("in.pdf"), original);
    EXPECT_EQ(describe(path, QStringLiteral("user")).output, describe(originalPath, QStringLiteral("user")).output);
    EXPECT_TRUE(describe(path, QStringLiteral("owner")).succeeded());
    EXPECT_FALSE(test::runTool(QStringLiteral("qpdf"), {QStringLiteral("--show-npages"), path}).succeeded());
}

TEST_F(WriterStamp, RefusesWhatTheAuthorForbids)
{
    const QByteArray original = test::rewriteWithQpdf(
        makePdf({PageSpec()}), {QStringLiteral("--encrypt"), QString(), QStringLiteral("owner"), QStringLiteral("256"),
                                QStringLiteral("--modify=none"), QStringLiteral("--")});
    const auto refused = makeDocumentWriter()->write(stampRequest(original, 0, stampRect));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, QStringLiteral("The author of this document does not allow changes to it."));
    EXPECT_TRUE(shows(write(stampRequest(original, 0, stampRect, "owner")), 1, shownStamp));
}

TEST_F(WriterStamp, ReordersPagesWithTheirInheritedAttributes)
{
    PageSpec first;
    first.mediaBox = {};
    first.contents = {test::textContent("first")};
    PageSpec second = first;
    second.rotate = "0";
    second.contents = {test::textContent("second")};
    PageSpec third = first;
    third.contents = {test::textContent("third")};
    WriteRequest request =
        stampRequest(makePdf({first, second, third}, "/MediaBox [0 0 612 792] /Rotate 180"), 1, stampRect);
    request.pages = {request.pages[2], request.pages[1], request.pages[0]};
    const QString path = write(request);
    EXPECT_EQ(test::pdfText(path, 1).trimmed(), QStringLiteral("third"));
    EXPECT_EQ(test::pdfText(path, 2).trimmed(), QStringLiteral("second"));
    EXPECT_EQ(test::pdfText(path, 3).trimmed(), QStringLiteral("first"));
    EXPECT_TRUE(shows(path, 2, shownStamp));
    const auto pages = test::pdfInfo(path);
    ASSERT_TRUE(pages);
    EXPECT_EQ(pages->at(0).rotation, 180);
    EXPECT_EQ(pages->at(1).rotation, 0);
    EXPECT_EQ(pages->at(2).size, QSizeF(612, 792));
}

TEST_F(WriterStamp, RefusesRequestsThatDoNotFitTheFile)
{
    const QByteArray original = makePdf({PageSpec(), PageSpec()});
    WriteRequest missing = unchangedRequest(original);
    missing.pages.pop_back();
    WriteRequest twice = unchangedRequest(original);
    twice.pages[0] = twice.pages[1];
    WriteRequest beyond = unchangedRequest(original);
    beyond.pages[0].sourcePage = 2;
    WriteRequest noOverlay = unchangedRequest(original);
    noOverlay.pages[0].overlayPage = 0;
    WriteRequest noFile = unchangedRequest(original);
    noFile.original = "no PDF file";
    for (const WriteRequest &request : {missing, twice, beyond, noOverlay, noFile}) {
        const auto refused = makeDocumentWriter()->write(request);
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().message, QStringLiteral("The changed document could not be built."));
    }
}

TEST_F(WriterStamp, RefusesContentThatExplodes)
{
    // 300 MB of spaces, twice deflated to a few hundred bytes.
    const QByteArray spaces = qCompress(qCompress(QByteArray(300'000'000, ' '), 9).mid(4), 9).mid(4);
    QByteArray original = makePdf({PageSpec{.contents = {spaces}}});
    original.replace("<< /Length ", "<< /Filter [/FlateDecode /FlateDecode] /Length ");
    EXPECT_FALSE(makeDocumentWriter()->write(stampRequest(original, 0, stampRect)));
    EXPECT_TRUE(makeDocumentWriter()->write(unchangedRequest(original))) << "nobody has to decode it";
}

TEST_F(WriterStamp, KeepsTheFirstHalfOfTheIdentifier)
{
    QByteArray original = makePdf({PageSpec()});
    original.replace("/Root ", "/ID [<00112233445566778899aabbccddeeff> <00112233445566778899aabbccddeeff>] /Root ");
    write(stampRequest(original, 0, stampRect));
    EXPECT_TRUE(m_bytes.contains("/ID [<00112233445566778899aabbccddeeff><"));
    EXPECT_FALSE(m_bytes.contains("<00112233445566778899aabbccddeeff>]"));
}

TEST_F(WriterStamp, GrowsTheFileByLittleMoreThanTheImage)
{
    const QByteArray original = makePdf({PageSpec()});
    write(unchangedRequest(original));
    const qsizetype bare = m_bytes.size();
    write(stampRequest(original, 0, stampRect));
    EXPECT_LE(m_bytes.size() - bare, 3000); // the image itself is less than 100 bytes
}

} // namespace

} // namespace inkory
