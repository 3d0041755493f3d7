#pragma once

#include <string>

class QPDF;
class QPDFObjectHandle;

namespace inkory
{

class Image;

/// Adds the image to the document as an image XObject, and its transparency, if any, as a soft mask. Lossless but for
/// the colour of fully transparent pixels, which nobody sees: opaque 8-bit JPEG files are passed through as they are,
/// everything else is deflated with PNG predictors; gray images are stored as such. Throws std::runtime_error for an
/// image without pixels.
QPDFObjectHandle addImageObject(QPDF &document, const Image &image);

/// The bytes as a zlib stream, about as small as zlib makes it.
std::string deflated(const std::string &bytes);

/// What a JPEG file's frame header says.
struct JpegFrame
{
    int width = 0;
    int height = 0;
    int components = 0;
    int bitsPerComponent = 0;
};

/// All zero if the bytes are no JPEG file with a frame header.
JpegFrame readJpegFrame(const std::string &bytes);

/// Rows of samples behind PNG row filters: each row is preceded by the number of its filter, the one that leaves the
/// smallest sum of absolute differences. `bytesPerPixel` is 1 or 3; the rows follow each other without padding.
std::string withPngPredictor(const std::string &samples, int rowBytes, int bytesPerPixel);

} // namespace inkory
