#include "V1/stamps/KRPDFDocument.h"
#include "V1/stamps/StampFixture.h"
#include "support/PdfSamples.h"

#include <QFile>

using namespace inkory;
using namespace inkory::test;

namespace
{

class Saving : public StampFixture
{
protected:
    void open(const QByteArray &bytes)
    {
        path = writeFile(folder.path(), QStringLiteral("a.pdf"), bytes);
        document.initWithURL(path);
        ASSERT_TRUE(QTest::qWaitFor([&] { return document.isGeometrySettled(); }, 10000));
    }

    KRPDFPage &page(int index) { return dynamic_cast<KRPDFPage &>(*document.pageAtIndex(index)); }

    QString save(const QString &name) { return writeFile(folder.path(), name, document.dataRepresentation()); }

    QTemporaryDir folder;
    QString path;
    KRPDFDocument document;
};

TEST_F(Saving, StartsFromTheOriginalEvenIfItIsGoneAndDrawsEachStampOnce)
{
    open(threePages());
    const auto first = stampOn(page(0));
    const auto second = stampOn(page(2), 200, 200);
    second->setStampMode(StampModeDragging); // no selection look in a file
    const QString once = save(QStringLiteral("once.pdf"));
    writeFile(folder.path(), QStringLiteral("a.pdf"), readFile(once)); // as a save over the open file does
    ASSERT_EQ(document.dataRepresentation().size(), readFile(once).size());
    ASSERT_TRUE(QFile::remove(path));
    const QString twice = save(QStringLiteral("twice.pdf"));
    EXPECT_EQ(qpdfCheck(twice), QString());
    const auto images = pdfImages(twice);
    ASSERT_EQ(images.size(), 2U) << "two pages, each stamp once";
    EXPECT_NE(images[0].object, 0);
    // Frame (250, 380, 100, 40): from 792 - 420 = 372 down; black ink on pages whose text begins elsewhere.
    const QImage drawn = renderWithPdftoppm(twice, 1, 72);
    EXPECT_EQ(qGray(drawn.pixel(251, 373)), 0);
    EXPECT_EQ(qGray(drawn.pixel(348, 410)), 0);
    EXPECT_EQ(qGray(drawn.pixel(248, 373)), 255);
    EXPECT_EQ(qGray(drawn.pixel(300, 414)), 255);
    EXPECT_EQ(qGray(renderWithPdftoppm(twice, 3, 72).pixel(200, 592)), 0);
    EXPECT_EQ(pdfText(twice, 2).trimmed(), QStringLiteral("Second page"));
}

TEST_F(Saving, WritesTurnsAndOrder)
{
    open(textPages({"one", "two", "three"}));
    page(1).setRotation(90);
    const auto stamp = stampOn(page(1));
    document.exchangePages(0, 2);
    const QString saved = save(QStringLiteral("turned.pdf"));
    EXPECT_EQ(pdfText(saved, 1).trimmed(), QStringLiteral("three"));
    EXPECT_EQ(pdfText(saved, 3).trimmed(), QStringLiteral("one"));
    EXPECT_EQ(pdfRotations(saved), (std::vector{0, 90, 0}));
    const QRect ink = findInkBounds(renderWithPdftoppm(saved, 2, 72).copy(350, 250, 100, 150), Qt::black);
    EXPECT_NEAR(ink.width(), 100, 1) << "upright on the turned page";
    EXPECT_NEAR(ink.height(), 40, 1);
}

TEST_F(Saving, AsksForThePasswordAgainAndKeepsTheEncryption)
{
    const Sample locked = troubleSample(QStringLiteral("encrypted-with-password"));
    document.initWithURL(writeFile(folder.path(), QStringLiteral("a.pdf"), locked.bytes));
    ASSERT_TRUE(QTest::qWaitFor([&] { return document.state() == PDFDocument::State::Locked; }, 10000));
    const QString firstMessage = document.message();
    document.unlock(QStringLiteral("wrong"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return document.state() == PDFDocument::State::Locked; }, 10000));
    EXPECT_NE(document.message(), firstMessage);
    document.unlock(locked.password);
    ASSERT_TRUE(QTest::qWaitFor([&] { return document.isGeometrySettled(); }, 10000));
    const auto stamp = stampOn(page(0));
    const QString saved = save(QStringLiteral("saved.pdf"));
    EXPECT_FALSE(pdfRotations(saved)) << "still protected";
    EXPECT_EQ(pdfImages(saved, locked.password).size(), 1U);
}

TEST_F(Saving, WithoutAWorkingCopyPagesAreShownAsTheyAreAndOnlyRead)
{
    const QByteArray stateFolder = qgetenv("XDG_STATE_HOME");
    qputenv("XDG_STATE_HOME", writeFile(folder.path(), QStringLiteral("no-folder"), "x").toLocal8Bit());
    document.initWithURL(
        writeFile(folder.path(), QStringLiteral("a.pdf"), makePdf({PageSpec{}, PageSpec{.rotate = "90"}})));
    EXPECT_TRUE(QTest::qWaitFor([&] { return document.isGeometrySettled(); }, 10000));
    qputenv("XDG_STATE_HOME", stateFolder);
    EXPECT_FALSE(document.canSave());
    ASSERT_EQ(document.pageCount(), 2);
    EXPECT_EQ(document.pageAtIndex(1)->shownSize(), QSizeF(792, 612));
}

TEST_F(Saving, WhatCannotBeSavedSaysWhyAndYieldsNothing)
{
    document.initWithURL(folder.filePath(QStringLiteral("missing.pdf")));
    EXPECT_EQ(document.state(), PDFDocument::State::Failed);
    EXPECT_FALSE(document.message().isEmpty());
    EXPECT_TRUE(document.dataRepresentation().isEmpty());
    EXPECT_FALSE(document.snapshotForWriting()());
}

} // namespace
