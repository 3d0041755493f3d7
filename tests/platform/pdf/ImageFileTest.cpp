#include "platform/pdf/ImageFile.h"
#include "platform/pdf/EngineValues.h"
#include "support/Tools.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace inkory;

TEST(ImageFile, IsReadByItsContentWhateverItsName)
{
    const QTemporaryDir folder;
    const auto read = [&](const QString &name, const QByteArray &bytes) {
        return readImageFile(test::writeFile(folder.path(), name, bytes));
    };
    EXPECT_TRUE(read(u"png.jpg"_qs, Image::fromPixels(QImage(6, 4, QImage::Format_RGB32))->pngBytes().value()));
    EXPECT_TRUE(read(u"svg.png"_qs, "<svg width='9' height='9'/>").error().message.contains(u" known kind. "_qs));
    EXPECT_TRUE(sentenceFor({ImageProblem::TooLarge, {70, 80}, {}, {}}).contains(u" it has 70 × 80 pixels. "_qs));
}
