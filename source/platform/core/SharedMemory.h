#pragma once

#include "platform/core/Result.h"

#include <QByteArray>
#include <QImage>
#include <QtGlobal>

#include <memory>

namespace inkory
{

/// A block of memory that two processes see. It is created by the one that has most to lose, sealed against shrinking
/// and growing so that no access to it can fail, and handed to the other as a descriptor.
class SharedMemory
{
public:
    /// Zeroed memory, at least one byte, which only processes that are given the descriptor can see.
    static Result<std::shared_ptr<SharedMemory>> create(qint64 size);

    /// Maps memory that came as a descriptor (which stays the caller's), readable and writable. Fails unless it is
    /// sealed and exactly that large.
    static Result<std::shared_ptr<SharedMemory>> open(int descriptor, qint64 size);

    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;
    ~SharedMemory();

    uchar *data() const { return m_data; }
    qint64 size() const { return m_size; }
    /// Of the creator: to be handed on. -1 where the memory was opened.
    int descriptor() const { return m_descriptor; }

private:
    SharedMemory() = default;

    uchar *m_data = nullptr;
    qint64 m_size = 0;
    int m_descriptor = -1;
};

/// An image whose pixels are the memory's first bytes, row after row without gaps between rows of 4-byte pixels (rows
/// of others are padded to 4 bytes); it keeps the memory mapped. Null if the memory is too small or the size is empty.
QImage imageInMemory(const std::shared_ptr<SharedMemory> &memory, QSize size, QImage::Format format);

/// How many bytes imageInMemory() needs; 0 for an empty size.
qint64 imageBytes(QSize size, QImage::Format format);

/// A file's content, mapped for reading as long as this object lives. Reading it kills the process when somebody
/// shortens the file meanwhile: for processes that may die, and for files that nobody else knows.
class MappedFile
{
public:
    /// The descriptor stays the caller's. Fails on an empty file and on one that is shorter than the size.
    static Result<std::shared_ptr<MappedFile>> map(int descriptor, qint64 size);

    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;
    ~MappedFile();

    /// Not copied: valid as long as this object.
    QByteArray bytes() const;

    /// Lets the system have the memory of what has been read; reading it again brings it back.
    void forgetWhatWasRead() const;

private:
    MappedFile() = default;

    void *m_data = nullptr;
    qint64 m_size = 0;
};

} // namespace inkory
