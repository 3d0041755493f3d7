#pragma once

#include "platform/core/Result.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>
#include <mutex>

namespace inkory
{

/// The file that a document was opened from, and the document's private copy of it. The copy is a file of its own
/// (mode 0600) in the program's state folder, so that neither our own save nor anybody else's change to the file can
/// alter what is drawn or what the next save starts from. Owned by the document and shared with the engine's workers;
/// the copy is removed when the last of them lets go.
class DocumentFile
{
public:
    /// Opens the file for reading. Fails, with a sentence for the person, when it does not exist, is a folder or
    /// another thing that is no file, cannot be read, is empty, or is larger than 2 GiB - 1. Quick: reads no content.
    static Result<std::shared_ptr<DocumentFile>> open(const QString &path);

    DocumentFile(const DocumentFile &) = delete;
    DocumentFile &operator=(const DocumentFile &) = delete;
    ~DocumentFile();

    /// A path under which this process reads the very file that was opened, also after it was renamed or deleted.
    QString descriptorPath() const;

    /// Makes the private copy (by reflink where the file system can) and maps it into memory. Takes as long as copying
    /// the file does: for worker threads. A file that changed while it was copied is copied again, once.
    Result<void> makePrivateCopy();

    /// Whether makePrivateCopy() has succeeded.
    bool hasPrivateCopy() const { return m_mapped.load() != nullptr; }

    /// The private copy's bytes, without copying them; valid as long as this object. Only once hasPrivateCopy().
    QByteArray bytes() const;

    /// Removes the private copy from the disk; its bytes stay readable as long as this object. For a deliberate close.
    void removePrivateCopy();

    /// Size of the file in bytes when it was opened.
    qint64 size() const { return m_size; }

private:
    DocumentFile() = default;
    Result<void> fillAndMap(int copy);

    QString m_name;
    int m_descriptor = -1;
    qint64 m_size = 0;
    std::mutex m_copying;
    QString m_copyPath;
    qint64 m_mappedSize = 0;
    std::atomic<void *> m_mapped = nullptr;
};

} // namespace inkory
