#pragma once

#include "platform/pdf/EngineValues.h"

#include <QByteArray>
#include <QImage>

#include <memory>

namespace inkory
{

/// Turns one image file into pixels. The format is decided by the content, out of a list of our own; the size is looked
/// at before anything is decoded; large pictures are scaled down while they are read; EXIF orientation is applied;
/// metadata does not come along. Blocks; one thread at a time.
class ImageDecoder
{
public:
    ImageDecoder();
    ImageDecoder(const ImageDecoder &) = delete;
    ImageDecoder &operator=(const ImageDecoder &) = delete;
    ~ImageDecoder();

    /// Reads a whole file: decodes it and keeps the pixels until the next call. The bytes are used during this call
    /// only.
    ImageReply read(const QByteArray &file);

    /// Of the last file read: its pixels, in the format and size that the reply told, and its JPEG bytes.
    const QImage &pixels() const;
    const QByteArray &jpegBytes() const;

    /// Loads what the formats need from the disk, so that the process can be locked up afterwards. Starts no thread,
    /// but settles for the whole process that Qt's own pool, which converts large pictures, has one only.
    static void prepare();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace inkory
