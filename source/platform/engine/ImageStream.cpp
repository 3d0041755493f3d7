#include "platform/engine/ImageStream.h"

#include "platform/core/Image.h"

#include <QImage>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <zlib.h>

namespace inkory
{

namespace
{

/// An image taken apart into what a PDF file stores.
struct Samples
{
    int width = 0;
    int height = 0;
    /// 1 (gray) or 3 (red, green, blue) for each pixel.
    int components = 1;
    std::string colors;
    /// Empty for an opaque image.
    std::string alphas;
};

// Viewers scale colours and mask separately, so that the colour of a transparent pixel shows at the edges of its
// visible neighbours: it takes the colour of the visible pixel before it in the row, else of the one after it, else of
// the row above.
void fillTransparent(QRgb *row, const QRgb *rowAbove, int width)
{
    int firstVisible = 0;
    while (firstVisible < width && qAlpha(row[firstVisible]) == 0)
        ++firstVisible;
    const auto transparent = [](QRgb color) { return color & 0x00ffffffU; };
    for (int x = 0; x < width; ++x) {
        if (qAlpha(row[x]) != 0)
            continue;
        if (firstVisible == width)
            row[x] = rowAbove ? transparent(rowAbove[x]) : 0;
        else
            row[x] = transparent(row[x < firstVisible ? firstVisible : x - 1]);
    }
}

QRgb *row(QImage &image, int y)
{
    return reinterpret_cast<QRgb *>(image.scanLine(y));
}

bool isGray(QRgb color)
{
    return qRed(color) == qGreen(color) && qGreen(color) == qBlue(color);
}

Samples takeApart(const QImage &image)
{
    QImage pixels = image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    Samples samples{pixels.width(), pixels.height(), 1, {}, {}};
    bool isOpaque = true;
    for (int y = 0; y < samples.height; ++y) {
        QRgb *line = row(pixels, y);
        fillTransparent(line, y > 0 ? row(pixels, y - 1) : nullptr, samples.width);
        for (int x = 0; x < samples.width; ++x) {
            isOpaque = isOpaque && qAlpha(line[x]) == 255;
            samples.components = isGray(line[x]) ? samples.components : 3;
        }
    }
    const auto count = static_cast<std::size_t>(samples.width) * static_cast<std::size_t>(samples.height);
    samples.colors.reserve(count * static_cast<std::size_t>(samples.components));
    samples.alphas.reserve(isOpaque ? 0 : count);
    for (int y = 0; y < samples.height; ++y) {
        const QRgb *line = row(pixels, y);
        for (int x = 0; x < samples.width; ++x) {
            samples.colors += static_cast<char>(qRed(line[x]));
            if (samples.components == 3) {
                samples.colors += static_cast<char>(qGreen(line[x]));
                samples.colors += static_cast<char>(qBlue(line[x]));
            }
            if (!isOpaque)
                samples.alphas += static_cast<char>(qAlpha(line[x]));
        }
    }
    return samples;
}

int paeth(int left, int above, int aboveLeft)
{
    const int estimate = left + above - aboveLeft;
    const int toLeft = std::abs(estimate - left);
    const int toAbove = std::abs(estimate - above);
    const int toAboveLeft = std::abs(estimate - aboveLeft);
    if (toLeft <= toAbove && toLeft <= toAboveLeft)
        return left;
    return toAbove <= toAboveLeft ? above : aboveLeft;
}

int predicted(int filter, int left, int above, int aboveLeft)
{
    switch (filter) {
    case 1:
        return left;
    case 2:
        return above;
    case 3:
        return (left + above) / 2;
    case 4:
        return paeth(left, above, aboveLeft);
    default:
        return 0;
    }
}

// Answers the sum of the differences' absolute values, each taken as a signed byte.
long filterRow(int filter, std::string_view line, std::string_view lineAbove, int bytesPerPixel, std::string &result)
{
    const auto at = [](std::string_view bytes, std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const auto step = static_cast<std::size_t>(bytesPerPixel);
    long sum = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const int left = i >= step ? at(line, i - step) : 0;
        const int above = lineAbove.empty() ? 0 : at(lineAbove, i);
        const int aboveLeft = i >= step && !lineAbove.empty() ? at(lineAbove, i - step) : 0;
        const auto difference = static_cast<signed char>(at(line, i) - predicted(filter, left, above, aboveLeft));
        result[i] = static_cast<char>(difference);
        sum += std::abs(difference);
    }
    return sum;
}

QPDFObjectHandle addImageStream(QPDF &document, int width, int height, int components)
{
    QPDFObjectHandle image = document.newStream();
    QPDFObjectHandle dictionary = image.getDict();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/Image"));
    dictionary.replaceKey("/Width", QPDFObjectHandle::newInteger(width));
    dictionary.replaceKey("/Height", QPDFObjectHandle::newInteger(height));
    dictionary.replaceKey("/BitsPerComponent", QPDFObjectHandle::newInteger(8));
    dictionary.replaceKey("/ColorSpace", QPDFObjectHandle::newName(components == 1 ? "/DeviceGray" : "/DeviceRGB"));
    return image;
}

QPDFObjectHandle addDeflatedStream(QPDF &document, const Samples &size, int components, const std::string &samples)
{
    QPDFObjectHandle parameters = QPDFObjectHandle::newDictionary();
    parameters.replaceKey("/Predictor", QPDFObjectHandle::newInteger(15));
    parameters.replaceKey("/Colors", QPDFObjectHandle::newInteger(components));
    parameters.replaceKey("/Columns", QPDFObjectHandle::newInteger(size.width));
    QPDFObjectHandle image = addImageStream(document, size.width, size.height, components);
    image.replaceStreamData(deflated(withPngPredictor(samples, size.width * components, components)),
                            QPDFObjectHandle::newName("/FlateDecode"), parameters);
    return image;
}

} // namespace

std::string deflated(const std::string &bytes)
{
    // The last few percent take ten times as long, which nobody waits for with a photograph.
    constexpr std::size_t mediumSize = 2'000'000;
    const int level = bytes.size() <= mediumSize ? Z_BEST_COMPRESSION : Z_DEFAULT_COMPRESSION;
    z_stream stream = {};
    if (deflateInit2(&stream, level, Z_DEFLATED, MAX_WBITS, MAX_MEM_LEVEL, Z_FILTERED) != Z_OK)
        throw std::runtime_error("zlib cannot be used");
    std::string result(deflateBound(&stream, bytes.size()), '\0');
    stream.next_in = reinterpret_cast<const Bytef *>(bytes.data());
    stream.next_out = reinterpret_cast<Bytef *>(result.data());
    // Its counters have 32 bits; no image of ours comes near (see Image), and 2 GiB of text does not exist.
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.avail_out = static_cast<uInt>(result.size());
    const int outcome = deflate(&stream, Z_FINISH);
    result.resize(stream.total_out);
    deflateEnd(&stream);
    if (outcome != Z_STREAM_END)
        throw std::runtime_error("zlib failed");
    return result;
}

JpegFrame readJpegFrame(const std::string &bytes)
{
    const auto at = [&bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    if (bytes.size() < 4 || at(0) != 0xff || at(1) != 0xd8)
        return {};
    std::size_t position = 2;
    while (position + 9 < bytes.size() && at(position) == 0xff) {
        const int marker = at(position + 1);
        if (marker == 0xff) { // padding
            ++position;
            continue;
        }
        const bool isFrame = marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
        if (isFrame) {
            return {at(position + 7) << 8 | at(position + 8), at(position + 5) << 8 | at(position + 6),
                    at(position + 9), at(position + 4)};
        }
        position += 2 + static_cast<std::size_t>(at(position + 2) << 8 | at(position + 3));
    }
    return {};
}

std::string withPngPredictor(const std::string &samples, int rowBytes, int bytesPerPixel)
{
    const auto width = static_cast<std::size_t>(rowBytes);
    const std::size_t rows = width == 0 ? 0 : samples.size() / width;
    std::string result;
    result.reserve(rows * (width + 1));
    std::string attempt(width, '\0');
    std::string best(width, '\0');
    for (std::size_t y = 0; y < rows; ++y) {
        const std::string_view line(samples.data() + y * width, width);
        const std::string_view above = y == 0 ? std::string_view() : std::string_view(line.data() - width, width);
        int bestFilter = 0;
        long bestSum = filterRow(0, line, above, bytesPerPixel, best);
        for (int filter = 1; filter <= 4 && bestSum > 0; ++filter) {
            const long sum = filterRow(filter, line, above, bytesPerPixel, attempt);
            if (sum >= bestSum)
                continue;
            bestSum = sum;
            bestFilter = filter;
            best.swap(attempt);
        }
        result += static_cast<char>(bestFilter);
        result += best;
    }
    return result;
}

QPDFObjectHandle addImageObject(QPDF &document, const Image &image)
{
    const std::string jpeg = image.jpegBytes().toStdString();
    const JpegFrame frame = readJpegFrame(jpeg);
    if (frame.bitsPerComponent == 8 && (frame.components == 1 || frame.components == 3)) {
        QPDFObjectHandle object = addImageStream(document, frame.width, frame.height, frame.components);
        object.replaceStreamData(jpeg, QPDFObjectHandle::newName("/DCTDecode"), QPDFObjectHandle::newNull());
        return object;
    }
    if (image.pixels().isNull())
        throw std::runtime_error("an image has no pixels");
    const Samples samples = takeApart(image.pixels());
    QPDFObjectHandle object = addDeflatedStream(document, samples, samples.components, samples.colors);
    if (!samples.alphas.empty())
        object.getDict().replaceKey("/SMask", addDeflatedStream(document, samples, 1, samples.alphas));
    return object;
}

} // namespace inkory
