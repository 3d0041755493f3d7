#include "LibraryFixture.h"

#include "V1/library/NSFileManager+DirectoryLocations.h"

#include <QPlainTextEdit>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using inkory::Image;

namespace
{

class Library : public LibraryFixture
{
};

/// While it lives, no file of this process can grow beyond a few bytes.
class NoSpaceToWrite
{
public:
    NoSpaceToWrite()
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit few{16, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &few);
    }
    ~NoSpaceToWrite() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    NoSpaceToWrite(const NoSpaceToWrite &) = delete;
    NoSpaceToWrite &operator=(const NoSpaceToWrite &) = delete;

private:
    rlimit m_before{};
};

const QFileDevice::Permissions groupAndOthers =
    QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther | QFileDevice::WriteOther;

TEST_F(Library, FirstUseWritesAnEmptyListAndTheFlag)
{
    EXPECT_EQ(ImageStampCollection::count(), 0);
    EXPECT_TRUE(inkory::UserDefaults::standard().hasStoredValue(QStringLiteral("IMAGE_STAMP_URL_LIST")));
    EXPECT_TRUE(inkory::UserDefaults::standard().boolean(QStringLiteral("STAMPS_SANDBOX_MIGRAION_DONE")));
    EXPECT_TRUE(m_alerts.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(signaturesFolder()));
}

TEST_F(Library, AddCopiesByteForByteForTheOwnerOnly)
{
    const QString image = makeImage(QStringLiteral("my scän.PNG"));
    const QString text = makeFile(QStringLiteral("notes.txt"), "no image");
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{image, text}), 0);

    ASSERT_EQ(filesInLibrary().size(), 1);
    const QString copy = signaturesFolder() + QLatin1Char('/') + filesInLibrary().constFirst();
    EXPECT_TRUE(copy.endsWith(QStringLiteral(".PNG")));
    EXPECT_EQ(bytesOf(copy), bytesOf(image));
    EXPECT_FALSE(QFile::permissions(copy) & groupAndOthers);
    EXPECT_FALSE(QFile::permissions(signaturesFolder()) & groupAndOthers);
    EXPECT_EQ(storedList(), QStringList{key(copy)});
    ASSERT_EQ(ImageStampCollection::problems().size(), 1);
    EXPECT_TRUE(ImageStampCollection::problems().constFirst().contains(QStringLiteral("notes.txt")));
}

TEST_F(Library, PositionsKeepTheOrderOfInsertionThroughRestartsAndRemovals)
{
    const QString first = makeImage(QStringLiteral("z.png"), 11);
    const QString second = makeImage(QStringLiteral("a.png"), 12);
    EXPECT_EQ(ImageStampCollection::addImages(QList<QUrl>{QUrl::fromLocalFile(first), QUrl::fromLocalFile(second)}), 1);
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{first}), 2); // the same file again is an entry of its own
    restart();
    EXPECT_EQ(widths(), (QList<int>{11, 12, 11}));
    ImageStampCollection::removeStampImageAtIndex(0);
    EXPECT_EQ(widths(), (QList<int>{12, 11}));
    EXPECT_EQ(filesInLibrary().size(), 2);
    EXPECT_EQ(storedList(), ImageStampCollection::sharedImageStampCollection().imageStampListIndex());
    ImageStampCollection::removeStampImageAtIndex(2);
    ImageStampCollection::removeStampImageAtIndex(-1);
    EXPECT_EQ(ImageStampCollection::count(), 2);
    EXPECT_EQ(ImageStampCollection::stampImageAtIndex(2), nullptr);
}

TEST_F(Library, LoadingDropsWhatIsNamedTwiceOrGoneOrNoImage)
{
    const QString image = makeImage(QStringLiteral("Jörg Müller.png"), 17);
    const QString folder = path(QStringLiteral("folder.png"));
    ASSERT_TRUE(QDir().mkdir(folder));
    store({key(image), key(path(QStringLiteral("gone.png"))), key(image), key(folder), QStringLiteral("no url %"),
           key(makeFile(QStringLiteral("bad.png"), "bad")), QStringLiteral("http://example.org/a.png")},
          true);
    EXPECT_EQ(widths(), QList<int>{17});
    EXPECT_EQ(storedList(), QStringList{key(image)});
    EXPECT_TRUE(storedList().constFirst().endsWith(QStringLiteral("/J%C3%B6rg%20M%C3%BCller.png")));
}

TEST_F(Library, RemovingKeepsFilesOutsideTheFolder)
{
    const QString outside = makeImage(QStringLiteral("own.png"));
    const QString sibling = makeImage(QStringLiteral("data/inkory/signatures2/own.png"));
    const QString sneaking = signaturesFolder() + QStringLiteral("/../../../own.png");
    makeImage(QStringLiteral("data/inkory/signatures/in.png"));
    store({key(outside), key(sibling), key(sneaking)}, true);
    ASSERT_EQ(ImageStampCollection::count(), 3);
    for (int i = 0; i < 3; ++i)
        ImageStampCollection::removeStampImageAtIndex(0);
    EXPECT_EQ(ImageStampCollection::count(), 0);
    EXPECT_TRUE(QFileInfo::exists(outside));
    EXPECT_TRUE(QFileInfo::exists(sibling));
}

TEST_F(Library, RemovingAnEntryWhoseFileCannotBeDeletedStillRemovesIt)
{
    ASSERT_EQ(ImageStampCollection::addImages(QStringList{makeImage(QStringLiteral("a.png"))}), 0);
    const QString copy = signaturesFolder() + QLatin1Char('/') + filesInLibrary().constFirst();
    ASSERT_TRUE(QFile::remove(copy));
    ImageStampCollection::removeStampImageAtIndex(0);
    EXPECT_EQ(ImageStampCollection::count(), 0);
    EXPECT_TRUE(wasLogged(QStringLiteral("error removing image file:\n ")));
}

// Entries of early versions.

TEST_F(Library, MigrationMapsTheFormerFolder)
{
    const QString moved = makeImage(QStringLiteral("data/inkory/signatures/A 1.png"), 21);
    store({QStringLiteral("file:///home/x/LIBRARY/Application%20Support/Inkory/signatures/A%201.png"),
           QStringLiteral("file:///home/x/Library/Application%20Support/Inkory/signatures/gone.png")},
          false);
    EXPECT_EQ(widths(), QList<int>{21});
    EXPECT_EQ(storedList(), QStringList{key(moved)});
    EXPECT_TRUE(m_alerts.isEmpty());
}

TEST_F(Library, FilesElsewhereAreDroppedWithOneNotice)
{
    const QString elsewhere = makeImage(QStringLiteral("pictures/a.png"));
    store({key(elsewhere), key(path(QStringLiteral("gone.png")))}, false);
    EXPECT_EQ(ImageStampCollection::count(), 0);
    ASSERT_EQ(m_alerts.size(), 1);
    EXPECT_EQ(m_alerts.constFirst().messageText, QStringLiteral("Notice about signature files"));
    EXPECT_EQ(m_alerts.constFirst().buttons, QStringList{QStringLiteral("OK")});
    const auto text = m_alerts.constFirst().accessoryView();
    EXPECT_EQ(text->size(), QSize(400, 100));
    EXPECT_TRUE(qobject_cast<QPlainTextEdit *>(text.get())
                    ->toPlainText()
                    .endsWith(QStringLiteral(
                        "by using the \"Add Image from Disk\" option in the signature selection window.\n\n"
                        "(this message will be only displayed once)")));
    restart();
    EXPECT_EQ(ImageStampCollection::count(), 0);
    EXPECT_EQ(m_alerts.size(), 1);
    EXPECT_TRUE(QFileInfo::exists(elsewhere));
}

// Saved drawings.

TEST_F(Library, SavedDrawingIsTheSameObjectAndKeepsItsSize)
{
    QImage pixels(60, 20, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::transparent);
    pixels.setDevicePixelRatio(2);
    const auto drawing = Image::fromPixels(pixels);
    EXPECT_EQ(ImageStampCollection::saveImageToUserData(drawing), drawing);
    EXPECT_EQ(ImageStampCollection::stampImageAtIndex(0), drawing);
    restart();
    ASSERT_EQ(ImageStampCollection::count(), 1);
    const QSizeF size = ImageStampCollection::stampImageAtIndex(0)->size();
    EXPECT_NEAR(size.width(), 30, 0.01);
    EXPECT_NEAR(size.height(), 10, 0.01);
    EXPECT_FALSE(QFile::permissions(signaturesFolder() + QLatin1Char('/') + filesInLibrary().constFirst()) &
                 groupAndOthers);
}

// Places that cannot be used.

TEST_F(Library, PlainFileInTheFoldersPlace)
{
    makeFile(QStringLiteral("data/inkory/signatures"), "in the way");
    QImage pixels(8, 8, QImage::Format_RGB32);
    pixels.fill(Qt::black);
    EXPECT_EQ(ImageStampCollection::saveImageToUserData(Image::fromPixels(pixels)), nullptr);
    EXPECT_TRUE(wasLogged(QStringLiteral("Location '%1' exists but isn't a directory!").arg(signaturesFolder())));
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{makeImage(QStringLiteral("a.png"))}), -1);
    EXPECT_EQ(ImageStampCollection::problems().size(), 1);
    EXPECT_EQ(ImageStampCollection::count(), 0);
    EXPECT_EQ(bytesOf(signaturesFolder()), "in the way");
}

TEST_F(Library, SupportFolderThatCannotBeMadeIsTriedAgain)
{
    const QString blocker = makeFile(QStringLiteral("data"), "in the way");
    const QString image = makeImage(QStringLiteral("a.png"));
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{image}), -1);
    EXPECT_TRUE(wasLogged(QStringLiteral("Unable to find or create application support directory:\n")));
    ASSERT_TRUE(QFile::remove(blocker));
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{image}), 0);
}

TEST_F(Library, UnknownKindOfFolder)
{
    const auto found =
        inkory::findOrCreateDirectory(static_cast<inkory::SearchPathDirectory>(99), inkory::SearchPathDomain::User);
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().message, QStringLiteral("No path found for directory in domain."));
}

TEST_F(Library, FullDiskLosesNothingAndLeavesNothing)
{
    ASSERT_EQ(ImageStampCollection::addImages(QStringList{makeImage(QStringLiteral("a.png"), 71)}), 0);
    const QStringList before = filesInLibrary();
    const QString image = makeImage(QStringLiteral("b.png"), 72);
    {
        const NoSpaceToWrite noSpace;
        EXPECT_EQ(ImageStampCollection::addImages(QStringList{image}), -1);
        EXPECT_EQ(ImageStampCollection::saveImageToUserData(ImageStampCollection::stampImageAtIndex(0)), nullptr);
    }
    EXPECT_EQ(ImageStampCollection::problems().size(), 1);
    EXPECT_TRUE(wasLogged(QStringLiteral("Unable to copy image %1 to user Application").arg(key(image))));
    EXPECT_TRUE(wasLogged(QStringLiteral("Unable to save image to '%1/").arg(signaturesFolder())));
    EXPECT_EQ(filesInLibrary(), before);
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{image}), 1);
    restart();
    EXPECT_EQ(widths(), (QList<int>{71, 72}));
}

// The second copy of the list.

enum class Loss { Deleted, RandomBytes, NeverWritten };

class LostSettings : public LibraryFixture, public ::testing::WithParamInterface<Loss>
{
};

TEST_P(LostSettings, LoseNoSignature)
{
    if (GetParam() == Loss::NeverWritten) // the settings' folder is a file: only the copy learns of the signatures
        inkory::UserDefaults::setStandardFilePath(makeFile(QStringLiteral("file"), "") + QStringLiteral("/settings"));
    for (int width : {41, 42, 43})
        ASSERT_GE(ImageStampCollection::addImages(QStringList{makeImage(QStringLiteral("a.png"), width)}), 0);
    if (GetParam() == Loss::Deleted) {
        ASSERT_TRUE(QFile::remove(settingsPath()));
    }
    if (GetParam() == Loss::RandomBytes)
        makeFile(QStringLiteral("settings.json"), QByteArray("\x00\xff{]\x13", 5));
    if (GetParam() == Loss::NeverWritten)
        makeFile(QStringLiteral("settings.json"), "{\"IMAGE_STAMP_URL_LIST\": []}");
    restart();
    EXPECT_EQ(widths(), (QList<int>{41, 42, 43}));
    EXPECT_TRUE(m_alerts.isEmpty());
    restart();
    EXPECT_EQ(storedList().size(), 3);
}

INSTANTIATE_TEST_SUITE_P(Kinds, LostSettings, ::testing::Values(Loss::Deleted, Loss::RandomBytes, Loss::NeverWritten));

TEST_F(Library, SettingsWinOverTheSecondCopyAndADamagedCopyIsIgnored)
{
    ASSERT_EQ(ImageStampCollection::addImages(QStringList{makeImage(QStringLiteral("a.png"))}), 0);
    store({}, true);
    restart();
    EXPECT_EQ(ImageStampCollection::count(), 0);
    makeFile(QStringLiteral("data/inkory/signatures.json"), "[1, {");
    ASSERT_TRUE(QFile::remove(settingsPath()));
    restart();
    EXPECT_EQ(ImageStampCollection::count(), 0);
    EXPECT_TRUE(wasLogged(QStringLiteral("Unable to read the list of signatures")));
}

// What is no image.

struct BadSource
{
    const char *fileName;
    bool validates;
    const char *content = nullptr;
};

class BadImages : public LibraryFixture, public ::testing::WithParamInterface<BadSource>
{
};

TEST_P(BadImages, AreRefusedAndLeaveNothing)
{
    const QString name = QLatin1String(GetParam().fileName);
    const QString file = path(name);
    if (name == QStringLiteral("folder.png")) {
        ASSERT_TRUE(QDir().mkdir(file));
    } else if (name == QStringLiteral("pipe.png")) {
        ASSERT_EQ(::mkfifo(QFile::encodeName(file).constData(), 0600), 0);
    } else if (GetParam().content) {
        makeFile(name, GetParam().content);
    } else if (name != QStringLiteral("missing.png")) {
        const QByteArray png = bytesOf(makeImage(QStringLiteral("good.png"), 200));
        makeFile(name, name == QStringLiteral("cut.png") ? png.first(png.size() / 2) : png);
    }

    EXPECT_EQ(ImageStampCollection::validateImageUrl(QUrl::fromLocalFile(file)), GetParam().validates);
    EXPECT_EQ(ImageStampCollection::addImages(QStringList{file}), -1);
    EXPECT_TRUE(filesInLibrary().isEmpty());
    ASSERT_EQ(ImageStampCollection::problems().size(), 1);
    EXPECT_TRUE(ImageStampCollection::problems().constFirst().startsWith(QStringLiteral("“%1” could not").arg(name)));
}

INSTANTIATE_TEST_SUITE_P(Kinds, BadImages,
                         ::testing::Values(BadSource{"missing.png", false}, BadSource{"folder.png", false},
                                           BadSource{"pipe.png", false}, BadSource{"mixed.Png", false},
                                           BadSource{"image.txt", false}, BadSource{"noextension", false},
                                           BadSource{"text.png", true, "This is no image."}, BadSource{"cut.png", true},
                                           BadSource{"empty.png", true, ""}),
                         [](const auto &tested) {
                             return QString::fromLatin1(tested.param.fileName).replace(u'.', u'_').toStdString();
                         });

} // namespace
