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
/// alter what is drawn or what the next save starts from. Owned by the document and shared with what reads it;
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

    /// Makes the private copy (by reflink where the file system can). Takes as long as copying the file does: for
    /// worker threads. A file that changed while it was copied is copied again, once.
    Result<void> makePrivateCopy();

    /// Whether makePrivateCopy() has succeeded.
    bool hasPrivateCopy() const { return m_hasCopy; }

    /// What is to be read, of the private copy once there is one, until then of the very file that was opened: a
    /// descriptor, valid as long as this object, and the size in bytes.
    struct Content
    {
        int descriptor = -1;
        qint64 size = 0;
    };
    Content content() const { return m_hasCopy ? m_copy : m_original; }

    /// Removes the private copy from the disk; it stays readable as long as this object. For a deliberate close.
    void removePrivateCopy();

private:
    DocumentFile() = default;
    Result<qint64> fill(int copy) const;

    QString m_name;
    Content m_original;
    std::mutex m_copying;
    QString m_copyPath;
    Content m_copy; // not touched any more once m_hasCopy
    std::atomic<bool> m_hasCopy = false;
};

} // namespace inkory
