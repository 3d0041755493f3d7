// The samples and the witnesses are what every other test leans on: here the ones are checked by the others.

#include "support/PdfSamples.h"
#include "support/Tools.h"

#include "platform/core/Log.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>

namespace inkory::test
{
namespace
{

class Witness : public ::testing::Test
{
protected:
    QString write(const QByteArray &bytes) const { return writeFile(m_folder.path(), QStringLiteral("a.pdf"), bytes); }
    QString write(const char *name) const { return write(troubleSample(QString::fromLatin1(name)).bytes); }

private:
    QTemporaryDir m_folder;
};

TEST_F(Witness, SeesEverySampleAsItIsDescribed)
{
    std::set<QString> names;
    for (const Sample &sample : troubleSamples()) {
        SCOPED_TRACE(sample.name.toStdString());
        EXPECT_TRUE(names.insert(sample.name).second) << "two samples have this name";
        const auto pages = pdfInfo(write(sample.bytes), sample.password);
        if (!sample.popplerAgrees)
            continue;
        if (sample.pages == 0) {
            EXPECT_TRUE(!pages || pages->empty());
            continue;
        }
        ASSERT_TRUE(pages.has_value());
        ASSERT_EQ(pages->size(), static_cast<std::size_t>(sample.pages));
        const ListedPage &first = pages->front();
        EXPECT_NEAR(first.size.width(), sample.shownBox.width(), 0.01);
        EXPECT_NEAR(first.size.height(), sample.shownBox.height(), 0.01);
        EXPECT_EQ(first.rotation, sample.rotation);
    }
}

TEST_F(Witness, IsRefusedWithoutThePassword)
{
    const Sample locked = troubleSample(QStringLiteral("encrypted-with-password"));
    const QString path = write(locked.bytes);
    EXPECT_FALSE(pdfInfo(path).has_value());
    EXPECT_TRUE(pdfInfo(path, locked.password).has_value());
    EXPECT_NE(qpdfCheck(path), QString());
    EXPECT_EQ(qpdfCheck(path, locked.password), QString());
}

TEST_F(Witness, TellsHealthyFromDamaged)
{
    EXPECT_EQ(qpdfCheck(write("plain")), QString());
    EXPECT_EQ(qpdfCheck(write("inherited-entries")), QString());
    EXPECT_NE(qpdfCheck(write("wrong-startxref")), QString());
    EXPECT_NE(qpdfCheck(write("truncated")), QString());
}

TEST_F(Witness, FindsTheRedSquareWhereItIs)
{
    // (100, 500) to (200, 600) on a page of 612 x 792, seen from the upper left.
    const QImage plain = renderWithPdftoppm(write("plain"), 1);
    EXPECT_EQ(plain.size(), QSize(612, 792));
    EXPECT_EQ(findInkBounds(plain, Qt::red), QRect(100, 192, 100, 100));

    // Turned clockwise by 90 degrees, x is the distance from the top and y the one from the left.
    const QImage turned = renderWithPdftoppm(write("rotate-90"), 1);
    EXPECT_EQ(turned.size(), QSize(792, 612));
    EXPECT_EQ(findInkBounds(turned, Qt::red), QRect(500, 100, 100, 100));

    // The crop box begins at (50, 150) and ends at (500, 700).
    const QImage cropped = renderWithPdftoppm(write("crop-offset"), 1);
    EXPECT_EQ(cropped.size(), QSize(450, 550));
    EXPECT_EQ(findInkBounds(cropped, Qt::red), QRect(50, 100, 100, 100));

    EXPECT_TRUE(findInkBounds(plain, Qt::blue).isEmpty());
    EXPECT_EQ(largestDifference(plain, plain), 0);
    EXPECT_EQ(largestDifference(plain, turned), 255);
}

TEST_F(Witness, ReadsTheTextOfOnePage)
{
    const QString path = write(manyPages(12));
    EXPECT_EQ(pdfText(path, 11).trimmed(), QStringLiteral("Page 11"));
    EXPECT_EQ(pdfInfo(path).value().size(), 12U);
}

TEST_F(Witness, ListsImages)
{
    PageSpec page;
    page.resources = "<< >>";
    page.contents = {"q 50 0 0 25 10 20 cm BI /W 2 /H 1 /CS /RGB /BPC 8 /F /AHx ID FF00000000FF> EI Q\n"};
    const QString path = write(makePdf({page}));
    const std::vector<ListedImage> images = pdfImages(path);
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(images.front().width, 2);
    EXPECT_EQ(images.front().color, QStringLiteral("rgb"));
    const std::vector<QImage> pixels = pdfImagePixels(path);
    ASSERT_EQ(pixels.size(), 1U);
    EXPECT_EQ(pixels.front().pixelColor(1, 0), QColor(Qt::blue));
}

TEST(Tools, AProgramThatHangsIsEnded)
{
    const ToolOutcome outcome = runTool(QStringLiteral("sleep"), {QStringLiteral("30")}, {}, 1);
    EXPECT_EQ(outcome.exitCode, -1);
    EXPECT_EQ(runTool(QStringLiteral("no-such-program"), {}).exitCode, -1);
    EXPECT_EQ(runTool(QStringLiteral("cat"), {}, "through").output, QByteArray("through"));
}

TEST(Tools, TheLogIsCaughtAsLongAsTheCatcherLives)
{
    {
        const LogCatcher log;
        logLine(QStringLiteral("caught"));
        EXPECT_TRUE(log.contains(QStringLiteral("caught")));
    }
    const LogCatcher other;
    EXPECT_TRUE(other.lines().isEmpty());
}

} // namespace
} // namespace inkory::test
