#include "LibraryFixture.h"

#include "support/FileSizeLimit.h"

#include <QLockFile>
#include <QRandomGenerator>

#include <sys/stat.h>

namespace
{

using Library = LibraryFixture;

TEST_F(Library, AddCopiesByteForByteForTheOwnerOnly)
{
    const QString image = makeImage(u"my scän.PNG"_qs);
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{image}), 0);
    const QString copy = signaturesFolder() + u'/' + filesInLibrary().constFirst();
    EXPECT_TRUE(copy.endsWith(u".PNG"_qs));
    EXPECT_EQ(inkory::test::readFile(copy), inkory::test::readFile(image));
    EXPECT_EQ(QFile::permissions(copy).toInt() & 0x0066, 0); // read or written by group or others
    EXPECT_EQ(QFile::permissions(signaturesFolder()).toInt() & 0x0066, 0);
    EXPECT_EQ(storedList(), QStringList{key(copy)});
}

TEST_F(Library, PositionsKeepTheOrderOfInsertionThroughRestartsAndRemovals)
{
    const QString first = makeImage(u"z.png"_qs, 11);
    const QString second = makeImage(u"a.png"_qs, 12);
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{first, second}), 1);
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{first}), 2); // the same file again is an entry of its own
    restart();
    EXPECT_EQ(widths(), (QList<int>{11, 12, 11}));
    for (const int index : {0, 2, -1}) // only the first is there
        ImageStampCollection::removeStampImageAtIndex(index);
    EXPECT_EQ(widths(), (QList<int>{12, 11}));
    EXPECT_EQ(filesInLibrary().size(), 2);
    EXPECT_EQ(storedList(), ImageStampCollection::sharedImageStampCollection().imageStampListIndex());
}

TEST_F(Library, LoadingDropsWhatIsNamedTwiceOrGoneOrNoImage)
{
    const QString image = makeImage(u"Jörg Müller.png"_qs, 17);
    store({key(image), key(path(u"gone.png"_qs)), key(image), key(m_home.path()), u"no url %"_qs,
           key(makeFile(u"bad.png"_qs, "bad")), u"http://example.org/a.png"_qs},
          true);
    EXPECT_EQ(widths(), QList<int>{17});
    EXPECT_EQ(storedList(), QStringList{key(image)});
}

TEST_F(Library, RemovingKeepsFilesOutsideTheFolder)
{
    const QString outside = makeImage(u"own.png"_qs);
    const QString sibling = makeImage(u"data/inkory/signatures2/own.png"_qs);
    const QString sneaking = signaturesFolder() + u"/../../../own.png"_qs;
    makeImage(u"data/inkory/signatures/in.png"_qs);
    store({key(outside), key(sibling), key(sneaking)}, true);
    for (int left = 3; left > 0; --left) {
        ASSERT_EQ(ImageStampCollection::count(), left);
        ImageStampCollection::removeStampImageAtIndex(0);
    }
    EXPECT_TRUE(QFileInfo::exists(outside));
    EXPECT_TRUE(QFileInfo::exists(sibling));
}

TEST_F(Library, MigrationMapsTheFormerFolderAndDropsFilesElsewhereWithOneNotice)
{
    const QString moved = makeImage(u"data/inkory/signatures/A 1.png"_qs, 21);
    const QString elsewhere = makeImage(u"pictures/a.png"_qs);
    store({u"file:///home/x/LIBRARY/Application%20Support/Inkory/signatures/A%201.png"_qs,
           u"file:///home/x/Library/Application%20Support/Inkory/signatures/gone.png"_qs, key(elsewhere)},
          false);
    for (int start = 1; start <= 2; ++start) {
        restart();
        EXPECT_EQ(widths(), QList<int>{21});
        EXPECT_EQ(storedList(), QStringList{key(moved)});
        ASSERT_EQ(m_alerts.size(), 1);
    }
    EXPECT_EQ(m_alerts.constFirst().messageText, u"Notice about signature files"_qs);
    EXPECT_TRUE(QFileInfo::exists(elsewhere));
}

TEST_F(Library, SavedDrawingIsTheSameObjectAndKeepsItsSize)
{
    QImage pixels(60, 20, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::transparent);
    pixels.setDevicePixelRatio(2);
    const auto drawing = inkory::Image::fromPixels(pixels);
    EXPECT_EQ(ImageStampCollection::saveImageToUserData(drawing), drawing);
    EXPECT_EQ(ImageStampCollection::stampImageAtIndex(0), drawing);
    restart();
    ASSERT_EQ(widths(), QList<int>{60});
    EXPECT_EQ(ImageStampCollection::stampImageAtIndex(0)->size(), QSizeF(30, 10));
}

TEST_F(Library, FullDiskLosesNothingAndLeavesNothing)
{
    addSignatures({71});
    // Noise cannot be compressed: 72 × 72 × 4 = 20,736 bytes, which reading may take from shared memory, and more than
    // that as a file.
    QImage noise(72, 72, QImage::Format_ARGB32);
    QRandomGenerator(1).fillRange(reinterpret_cast<quint32 *>(noise.bits()), 72LL * 72);
    const QString image = path(u"b.png"_qs);
    ASSERT_TRUE(noise.save(image));
    {
        const inkory::test::FileSizeLimit noSpace(20'736);
        EXPECT_EQ(ImageStampCollection::addImages(QStringList{image}), -1);
        EXPECT_EQ(ImageStampCollection::saveImageToUserData(inkory::Image::fromPixels(noise)), nullptr);
    }
    EXPECT_EQ(ImageStampCollection::problems().size(), 1);
    EXPECT_TRUE(m_log.contains(u"Unable to copy image %1 to user Application"_qs.arg(key(image))));
    EXPECT_EQ(filesInLibrary().size(), 1);
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{image}), 1);
    restart();
    EXPECT_EQ(widths(), (QList<int>{71, 72}));
}

TEST_F(Library, LostOrDamagedSettingsLoseNoSignature)
{
    addSignatures({41, 42, 43});
    ASSERT_TRUE(QFile::remove(path(u"settings.json"_qs)));
    restart();
    EXPECT_EQ(widths(), (QList<int>{41, 42, 43})) << "lost";
    const QByteArray key = "{\"IMAGE_STAMP_URL_LIST\": ";
    for (const QByteArray &settings :
         {QByteArray("\x00\xff{]\x13", 5), key + "5}", key + "\"x\"}", key + "[\"x\", 5]}"}) {
        makeFile(u"settings.json"_qs, settings);
        restart();
        EXPECT_EQ(widths(), (QList<int>{41, 42, 43})) << settings.constData();
    }
    restart();
    EXPECT_EQ(storedList().size(), 3);
    EXPECT_TRUE(m_alerts.isEmpty());
}

TEST_F(Library, ChangesOfAnotherProcessAreKept)
{
    addSignatures({41, 42});
    inkory::UserDefaults other(path(u"settings.json"_qs));
    const auto setByOther = [&](const QStringList &keys) {
        other.setStringList(u"IMAGE_STAMP_URL_LIST"_qs, keys);
        ASSERT_TRUE(other.synchronize());
    };
    const QString theirs = key(makeImage(u"theirs.png"_qs, 50));
    setByOther({storedList().at(1), theirs}); // the first is removed
    addSignatures({43});
    EXPECT_EQ(widths(), (QList<int>{42, 50, 43}));
    const QString unreadable = key(makeFile(u"new.png"_qs, "of a kind that only another version can read"));
    setByOther(storedList() + QStringList{unreadable, key(makeImage(u"last.png"_qs, 51))});
    QLockFile lock(path(u"data/inkory/signatures.json.lock"_qs)); // of a process that hangs
    ASSERT_TRUE(lock.tryLock());
    ImageStampCollection::removeStampImageAtIndex(0);
    EXPECT_TRUE(m_log.contains(u"without the lock"_qs));
    EXPECT_EQ(widths(), (QList<int>{50, 43, 51}));
    EXPECT_EQ(storedList().indexOf(unreadable), 2);
}

TEST_F(Library, SettingsWinOverTheSecondCopyAndADamagedCopyIsIgnored)
{
    addSignatures({41});
    store({}, true);
    restart();
    EXPECT_EQ(ImageStampCollection::count(), 0);
    makeFile(u"data/inkory/signatures.json"_qs, "[1, {");
    ASSERT_TRUE(QFile::remove(path(u"settings.json"_qs)));
    restart();
    EXPECT_EQ(ImageStampCollection::count(), 0);
    EXPECT_TRUE(m_log.contains(u"Unable to read the list of signatures"_qs));
}

TEST_F(Library, WhatIsNoImageIsRefusedAndLeavesNothing)
{
    const QByteArray png = inkory::test::readFile(makeImage(u"good.png"_qs, 200));
    makeFile(u"image.txt"_qs, png);
    makeFile(u"text.png"_qs, "This is no image.");
    makeFile(u"cut.png"_qs, png.first(png.size() / 2));
    makeFile(u"empty.png"_qs, {});
    ASSERT_TRUE(QDir().mkdir(path(u"folder.png"_qs)));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"pipe.png"_qs)).constData(), 0600), 0);
    for (const char *each : {"image.txt", "text.png", "cut.png", "empty.png", "folder.png", "pipe.png", "none.png"}) {
        const QString name = QLatin1String(each);
        EXPECT_EQ(ImageStampCollection::addImages(QStringList{path(name)}), -1) << each;
        EXPECT_TRUE(filesInLibrary().isEmpty()) << each;
        ASSERT_EQ(ImageStampCollection::problems().size(), 1) << each;
        EXPECT_TRUE(ImageStampCollection::problems().constFirst().startsWith(u"“%1” could not"_qs.arg(name)));
    }
}

} // namespace
