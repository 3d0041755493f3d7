#include "Fuzzing.h"
#include "platform/engine/ImageFileStructure.h"
#include "platform/engine/JpegStructure.h"

using namespace inkory;

namespace
{

// A file that breaks off in its header may count as whole: decoders refuse it, and do not fill it up.
constexpr qsizetype longestHeader = 64;

void checkJpeg(const QByteArray &file)
{
    const auto structure = readJpegStructure(file);
    if (structure) {
        fuzz::require(!structure->end || (*structure->end > 0 && *structure->end <= file.size()),
                      "a picture ends inside its file");
        fuzz::require(structure->width >= 0 && structure->width <= 0xffff && structure->height >= 0 &&
                          structure->height <= 0xffff && structure->componentCount > 0 &&
                          structure->componentCount <= 0xff,
                      "a picture has the sizes that the format can tell");
    }
    const QByteArray kept = jpegWithoutMetadata(file);
    if (kept.isEmpty())
        return;
    fuzz::require(kept.size() <= file.size(), "taking metadata out adds nothing");
    fuzz::require(jpegWithoutMetadata(kept) == kept, "nothing is left to take out");
    const auto again = readJpegStructure(kept);
    fuzz::require(again.has_value() == structure.has_value(), "the picture stays");
    if (!again)
        return;
    fuzz::require(again->end == kept.size(), "nothing stands behind the picture");
    fuzz::require(again->width == structure->width && again->height == structure->height &&
                      again->componentCount == structure->componentCount &&
                      again->bitsPerComponent == structure->bitsPerComponent &&
                      again->isDecodedAsAWhole == structure->isDecodedAsAWhole &&
                      again->horizontalDpi == structure->horizontalDpi && again->verticalDpi == structure->verticalDpi,
                  "the picture looks the same");
}

void checkKind(const QByteArray &file, ImageKind kind)
{
    if (const auto density = statedDensity(file, kind))
        fuzz::require(density->width() >= 10 && density->width() <= 5000 && density->height() >= 10 &&
                          density->height() <= 5000,
                      "a density lies between 10 and 5000 dpi");
    if (file.size() >= longestHeader && isWholeImageFile(file, kind))
        fuzz::require(isWholeImageFile(file + QByteArray(3, '\0'), kind), "bytes behind a whole file harm nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray file = fuzz::bytesFromFuzzer(data, size);
    for (const ImageKind kind : {ImageKind::Jpeg, ImageKind::Png, ImageKind::Gif, ImageKind::Bmp})
        checkKind(file, kind);
    checkJpeg(file);
    return 0;
}
