#include "platform/pdf/DocumentWriter.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <gtest/gtest.h>

namespace inkory
{

namespace
{

using test::makePdf;
using test::PageSpec;

FileStructure structureOf(const QByteArray &file, const QByteArray &password = {})
{
    return makeDocumentWriter()->readStructure(file, password);
}

struct Boxes
{
    const char *name;
    QByteArray mediaBox;
    QByteArray cropBox;
    PageRect expectedMedia;
    PageRect expectedCrop;
};

void PrintTo(const Boxes &boxes, std::ostream *stream)
{
    *stream << boxes.name;
}

class WriterBoxes : public testing::TestWithParam<Boxes>
{
};

TEST_P(WriterBoxes, AreCleanedUp)
{
    PageSpec page;
    page.mediaBox = GetParam().mediaBox;
    page.cropBox = GetParam().cropBox;
    const FileStructure structure = structureOf(makePdf({page}));
    ASSERT_EQ(structure.pages.size(), 1U);
    EXPECT_EQ(structure.pages[0].mediaBox, GetParam().expectedMedia);
    EXPECT_EQ(structure.pages[0].cropBox, GetParam().expectedCrop);
    EXPECT_EQ(structure.cannotWriteReason, QString());
}

const PageRect letter{0, 0, 612, 792};

INSTANTIATE_TEST_SUITE_P(
    Kinds, WriterBoxes,
    testing::Values(Boxes{"plain", "0 0 200.5 300", "", {0, 0, 200.5, 300}, {0, 0, 200.5, 300}},
                    Boxes{"swapped corners", "612 792 10 20", "", {10, 20, 602, 772}, {10, 20, 602, 772}},
                    Boxes{"negative origin", "-300 -400 100 200", "", {-300, -400, 400, 600}, {-300, -400, 400, 600}},
                    Boxes{"crop inside", "0 0 612 792", "100 200 400 600", letter, {100, 200, 300, 400}},
                    Boxes{"crop beyond", "0 0 612 792", "-10 700 400 900", letter, {0, 700, 400, 92}},
                    Boxes{"crop elsewhere", "0 0 612 792", "700 0 900 100", letter, letter},
                    Boxes{"crop without area", "0 0 612 792", "100 100 100 200", letter, letter},
                    Boxes{"missing", "", "", letter, letter}, Boxes{"three numbers", "0 0 100", "", letter, letter},
                    Boxes{"no area", "5 5 5 100", "", letter, letter},
                    Boxes{"no numbers", "/A /B /C /D", "", letter, letter},
                    Boxes{"past any range", "0 0 1" + QByteArray(400, '0') + ".0 100", "", letter, letter},
                    Boxes{"too large", "10 10 20010 30010", "", {10, 10, 14'400, 14'400}, {10, 10, 14'400, 14'400}}));

TEST(WriterStructure, InheritsBoxesAndRotation)
{
    PageSpec plain;
    plain.mediaBox = {};
    PageSpec own;
    own.mediaBox = "0 0 100 200";
    own.rotate = "-90";
    PageSpec odd;
    odd.mediaBox = {};
    odd.rotate = "45";
    const FileStructure structure =
        structureOf(makePdf({plain, own, odd}, "/MediaBox [0 0 500 600] /CropBox [50 50 250 350] /Rotate 450"));
    ASSERT_EQ(structure.pages.size(), 3U);
    EXPECT_EQ(structure.pages[0], (PageGeometry{{0, 0, 500, 600}, {50, 50, 200, 300}, 90}));
    EXPECT_EQ(structure.pages[1], (PageGeometry{{0, 0, 100, 200}, {50, 50, 50, 150}, 270}));
    EXPECT_EQ(structure.pages[2].rotation, 0);
}

TEST(WriterStructure, SaysWhyADamagedFileIsOnlyForReading)
{
    const QString damaged = QStringLiteral("This document is damaged: it can be read but not changed.");
    const FileStructure noFile = structureOf("no PDF file at all");
    EXPECT_EQ(noFile.cannotWriteReason, damaged);
    EXPECT_TRUE(noFile.pages.empty());
    QByteArray loop = makePdf({PageSpec()});
    const qsizetype kids = loop.indexOf("/Kids [") + 7;
    loop.insert(kids, "2 0 R ");
    EXPECT_EQ(structureOf(loop).cannotWriteReason, damaged);
    PageSpec unreadable; // the library takes a page with such a whole number for null
    unreadable.mediaBox = "0 0 1" + QByteArray(400, '0') + " 100";
    EXPECT_EQ(structureOf(makePdf({PageSpec(), unreadable})).cannotWriteReason, damaged);
}

// Each level names the next one twice: 2^30 pages in a few hundred bytes.
TEST(WriterStructure, RefusesAPageTreeThatExplodes)
{
    QByteArray file = "%PDF-1.4\n1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj\n";
    for (int level = 2; level < 32; ++level) {
        const QByteArray next = QByteArray::number(level + 1) + " 0 R ";
        file += QByteArray::number(level) + " 0 obj << /Type /Pages /Count 2 /Kids [" + next + next + "] >> endobj\n";
    }
    file += "32 0 obj << /Type /Page /MediaBox [0 0 9 9] >> endobj\ntrailer << /Root 1 0 R >>\n";
    EXPECT_EQ(structureOf(file).cannotWriteReason,
              QStringLiteral("This document is damaged: it can be read but not changed."));
}

TEST(WriterStructure, RefusesAPageTreeThatIsTooDeep)
{
    QByteArray file = "%PDF-1.4\n1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj\n";
    for (int level = 2; level < 50'000; ++level) {
        file += QByteArray::number(level) + " 0 obj << /Type /Pages /Count 1 /Kids [" + QByteArray::number(level + 1) +
                " 0 R] >> endobj\n";
    }
    file += "50000 0 obj << /Type /Page /MediaBox [0 0 9 9] >> endobj\ntrailer << /Root 1 0 R >>\n";
    EXPECT_EQ(structureOf(file).cannotWriteReason,
              QStringLiteral("This document is damaged: it can be read but not changed."));
}

TEST(WriterStructure, ObeysTheAuthorsPermissions)
{
    const auto encrypted = [](const QString &modify) {
        return test::rewriteWithQpdf(
            makePdf({PageSpec()}), {QStringLiteral("--encrypt"), QString(), QStringLiteral("owner"),
                                    QStringLiteral("256"), QStringLiteral("--modify=") + modify, QStringLiteral("--")});
    };
    const QByteArray forbidden = encrypted(QStringLiteral("none"));
    const FileStructure structure = structureOf(forbidden);
    EXPECT_EQ(structure.cannotWriteReason, QStringLiteral("The author of this document does not allow changes to it."));
    EXPECT_EQ(structure.pages.size(), 1U) << "it can still be shown";
    EXPECT_EQ(structureOf(forbidden, "owner").cannotWriteReason, QString());
    EXPECT_EQ(structureOf(encrypted(QStringLiteral("all"))).cannotWriteReason, QString());
    EXPECT_EQ(structureOf(encrypted(QStringLiteral("annotate"))).cannotWriteReason, structure.cannotWriteReason);
}

} // namespace

} // namespace inkory
