#pragma once

#include "platform/pdf/EngineValues.h"

#include <QBuffer>
#include <QByteArray>

#include <memory>

namespace Poppler
{
class Document;
}

namespace inkory
{

/// A document in the drawing library's hands, for those that draw its pages and those that read them. One thread at a
/// time.
class OpenedDocument
{
public:
    enum class Repair { IfNeeded, First };

    OpenedDocument();
    OpenedDocument(const OpenedDocument &) = delete;
    OpenedDocument &operator=(const OpenedDocument &) = delete;
    ~OpenedDocument();

    /// Opens a document; any former one is closed. The bytes are not copied: they have to outlive this object or the
    /// next opening. With Repair::First, what the writing library makes of the file is opened instead of the file: for
    /// files over which the drawing library died. Does not throw.
    OpenReply open(const QByteArray &bytes, const QByteArray &password, Repair repair);

    /// None unless a document is open.
    Poppler::Document *library() const { return m_library.get(); }

private:
    OpenReply openOrRepair(const QByteArray &bytes, const QByteArray &password, Repair repair);
    OpenReply openAsItIs(const QByteArray &bytes, const QByteArray &password);
    void close();

    // The library copies all of a document that it is given as bytes, but not of one that it reads from a device.
    QBuffer m_source;
    std::unique_ptr<Poppler::Document> m_library; // below what it reads from
};

} // namespace inkory
