#include "platform/core/SharedMemory.h"
#include "platform/core/SecretBytes.h"

#include "support/Tools.h"

#include <QFile>

#include <sys/mman.h>
#include <unistd.h>

using namespace inkory;

TEST(SharedMemoryTest, BothSidesSeeTheSameBytesAndNeitherCanShortenThem)
{
    const std::shared_ptr<SharedMemory> ours = *SharedMemory::create(5000);
    const std::shared_ptr<SharedMemory> theirs = *SharedMemory::open(ours->descriptor(), 5000);
    EXPECT_EQ(theirs->data()[4999], 0);
    ours->data()[4999] = 7;
    EXPECT_EQ(theirs->data()[4999], 7);
    EXPECT_NE(::ftruncate(ours->descriptor(), 4096), 0);
    EXPECT_NE(::ftruncate(ours->descriptor(), 8192), 0);
    EXPECT_FALSE(SharedMemory::open(ours->descriptor(), 4999));
    EXPECT_FALSE(SharedMemory::open(ours->descriptor(), 5001));
    EXPECT_EQ((*SharedMemory::create(0))->size(), 1);
    const int unsealed = ::memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    ASSERT_EQ(::ftruncate(unsealed, 100), 0);
    EXPECT_FALSE(SharedMemory::open(unsealed, 100));
    ::close(unsealed);
}

TEST(SharedMemoryTest, AnImageLiesInTheMemoryAndKeepsIt)
{
    EXPECT_EQ(imageBytes({5, 3}, QImage::Format_Grayscale8), 24);              // rows of 5 bytes take 8
    EXPECT_EQ(imageBytes({0x7fffffff, 0x7fffffff}, QImage::Format_RGBA64), 0); // 2^65 bytes

    std::shared_ptr<SharedMemory> memory = *SharedMemory::create(60); // 5 * 3 pixels of 4 bytes
    const std::weak_ptr<SharedMemory> watched = memory;
    EXPECT_TRUE(imageInMemory(memory, {5, 4}, QImage::Format_RGB32).isNull());
    QImage image = imageInMemory(memory, {5, 3}, QImage::Format_RGB32);
    image.setPixel(4, 2, 0xff010203);
    EXPECT_EQ(memory->data()[56], 3); // blue comes first, at 2 * 20 + 4 * 4
    memory.reset();
    EXPECT_FALSE(watched.expired());
    image = {};
    EXPECT_TRUE(watched.expired());
}

TEST(SharedMemoryTest, AMappedFileIsReadInPlace)
{
    const QTemporaryDir folder;
    QFile file(test::writeFile(folder.path(), u"file"_qs, "0123456789"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ((*MappedFile::map(file.handle(), 4))->bytes(), "0123");
    EXPECT_FALSE(MappedFile::map(file.handle(), 11));
    EXPECT_FALSE(MappedFile::map(file.handle(), 0));
}

TEST(SecretBytesTest, StayOutOfDumpsAndSwapUntilTheLastCopyGoes)
{
    QByteArray shared("secret");
    QByteArray given = shared;
    SecretBytes first(std::move(given));
    SecretBytes second = first;
    first = {};
    EXPECT_EQ(QByteArray(second.data()), shared);
    // The kernel lists how it treats the memory that begins there: "dd" is not dumped, "lo" is locked.
    const QByteArray place = '\n' + QByteArray::number(reinterpret_cast<quintptr>(second.data()), 16) + '-';
    const QByteArray list = test::readFile(u"/proc/self/smaps"_qs);
    const QByteArray flags = list.mid(list.indexOf("VmFlags:", list.indexOf(place))).split('\n').first();
    EXPECT_TRUE(flags.contains(" dd")) << flags.constData();
#ifndef __SANITIZE_ADDRESS__ // which makes locking do nothing
    EXPECT_TRUE(flags.contains(" lo")) << flags.constData();
#endif
    second = {};
    EXPECT_FALSE(test::readFile(u"/proc/self/smaps"_qs).contains(place));

    wipe(shared);
    EXPECT_EQ(shared, QByteArray(6, '\0'));
    QByteArray constant = QByteArray::fromRawData("fixed", 5);
    wipe(constant);
    EXPECT_EQ(constant, "fixed");
}
