#include "platform/widgets/RecentDocumentsFormat.h"

#include "platform/core/DisplayText.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <functional>

namespace inkory
{

namespace
{

const QString bookmarkNamespace = QStringLiteral("http://www.freedesktop.org/standards/desktop-bookmarks");
const QString mimeNamespace = QStringLiteral("http://www.freedesktop.org/standards/shared-mime-info");
const QString metadataOwner = QStringLiteral("http://freedesktop.org");
const QString programName = QStringLiteral("Inkory");
const QString programCommand = QStringLiteral("'inkory %u'");
const QString pdfType = QStringLiteral("application/pdf");

const QByteArray emptyList = R"(<?xml version="1.0" encoding="UTF-8"?>
<xbel version="1.0"
      xmlns:bookmark="http://www.freedesktop.org/standards/desktop-bookmarks"
      xmlns:mime="http://www.freedesktop.org/standards/shared-mime-info">
</xbel>
)";

bool isBookmarkElement(const QXmlStreamReader &reader, QLatin1String name)
{
    return reader.namespaceUri() == bookmarkNamespace && reader.name() == name;
}

bool isPlainElement(const QXmlStreamReader &reader, QLatin1String name)
{
    return reader.namespaceUri().isEmpty() && reader.name() == name;
}

bool isOwnApplication(const QXmlStreamReader &reader)
{
    return isBookmarkElement(reader, QLatin1String("application")) &&
           reader.attributes().value(QLatin1String("name")) == programName;
}

QDateTime latestTime(const QXmlStreamAttributes &attributes)
{
    QDateTime latest;
    for (const auto name : {QLatin1String("added"), QLatin1String("modified"), QLatin1String("visited")}) {
        const QDateTime time = QDateTime::fromString(attributes.value(name).toString(), Qt::ISODateWithMs);
        if (time.isValid() && (!latest.isValid() || time > latest))
            latest = time;
    }
    return latest;
}

QString entryAddress(const QXmlStreamReader &reader)
{
    return reader.attributes().value(QLatin1String("href")).toString();
}

/// The reader stands at the start of a bookmark; afterwards at its end.
RecentEntry readEntry(QXmlStreamReader &reader)
{
    RecentEntry entry;
    entry.url = QUrl(entryAddress(reader), QUrl::StrictMode);
    entry.time = latestTime(reader.attributes());
    int applications = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isEndElement() && isPlainElement(reader, QLatin1String("bookmark")))
            break;
        if (!reader.isStartElement())
            continue;
        if (reader.namespaceUri() == mimeNamespace && reader.name() == QLatin1String("mime-type"))
            entry.mimeType = reader.attributes().value(QLatin1String("type")).toString();
        else if (isBookmarkElement(reader, QLatin1String("private")))
            entry.isPrivate = true;
        else if (isBookmarkElement(reader, QLatin1String("application"))) {
            ++applications;
            entry.isOwn = entry.isOwn || isOwnApplication(reader);
        }
    }
    entry.isOnlyOwn = entry.isOwn && applications == 1;
    return entry;
}

/// Up to the end, or to the damage.
QList<RecentEntry> readEntries(QXmlStreamReader &reader)
{
    QList<RecentEntry> entries;
    while (!reader.atEnd()) {
        reader.readNext();
        if (!reader.isStartElement() || !isPlainElement(reader, QLatin1String("bookmark")))
            continue;
        const RecentEntry entry = readEntry(reader);
        if (!reader.hasError())
            entries.append(entry);
    }
    return entries;
}

Error damage(const QString &reason)
{
    return {QStringLiteral("the list of recent files is damaged: %1").arg(displayable(reason))};
}

/// The changed list, if it reads back as expected. The reader lets things pass that do not survive being written.
Result<QByteArray> verified(const QByteArray &changed,
                            const std::function<bool(const QList<RecentEntry> &)> &isExpected)
{
    QXmlStreamReader reader(changed);
    const QList<RecentEntry> entries = readEntries(reader);
    if (reader.hasError())
        return damage(reader.errorString());
    return isExpected(entries) ? Result<QByteArray>(changed) : damage(QStringLiteral("it cannot be kept as it is"));
}

QXmlStreamAttributes withValue(const QXmlStreamAttributes &attributes, const QString &name, const QString &value)
{
    QXmlStreamAttributes changed;
    for (const QXmlStreamAttribute &attribute : attributes) {
        if (attribute.qualifiedName() != name)
            changed.append(attribute);
    }
    changed.append(name, value);
    return changed;
}

/// Copies a list token by token, and changes one entry or adds it on the way.
class EntryUpdate
{
public:
    EntryUpdate(const QByteArray &bytes, const QUrl &url, const QDateTime &time)
        : m_reader(bytes), m_writer(&m_bytes), m_url(url), m_time(time.toUTC().toString(Qt::ISODateWithMs))
    {
    }

    Result<QByteArray> run()
    {
        while (!m_reader.atEnd()) {
            m_reader.readNext();
            if (m_reader.isStartElement())
                startElement();
            else {
                if (m_reader.isEndElement())
                    beforeEndElement();
                if (!m_reader.hasError())
                    m_writer.writeCurrentToken(m_reader);
            }
        }
        if (m_reader.hasError() || !m_isSound)
            return damage(m_reader.errorString());
        return m_bytes;
    }

private:
    void startElement()
    {
        if (m_depth++ == 0)
            m_isSound = isPlainElement(m_reader, QLatin1String("xbel"));
        if (isPlainElement(m_reader, QLatin1String("bookmark")))
            startEntry();
        QXmlStreamAttributes attributes = m_reader.attributes();
        if (m_isInEntry)
            attributes = changedAttributes();
        m_writer.writeStartElement(m_reader.namespaceUri().toString(), m_reader.name().toString());
        for (const QXmlStreamNamespaceDeclaration &declaration : m_reader.namespaceDeclarations())
            m_writer.writeNamespace(declaration.namespaceUri().toString(), declaration.prefix().toString());
        m_writer.writeAttributes(attributes);
    }

    void startEntry()
    {
        m_isSound = m_isSound && m_entryDepth == 0; // entries inside of entries are nothing that could be kept right
        m_entryDepth = m_depth;
        m_isInEntry = QUrl(entryAddress(m_reader), QUrl::StrictMode) == m_url;
        m_isRegistered = false;
        m_hasType = false;
        m_isFound = m_isFound || m_isInEntry;
    }

    QXmlStreamAttributes changedAttributes()
    {
        const QXmlStreamAttributes attributes = m_reader.attributes();
        if (isPlainElement(m_reader, QLatin1String("bookmark")))
            return withValue(withValue(attributes, QStringLiteral("modified"), m_time), QStringLiteral("visited"),
                             m_time);
        if (m_reader.namespaceUri() == mimeNamespace && m_reader.name() == QLatin1String("mime-type")) {
            m_hasType = true;
            return withValue(attributes, QStringLiteral("type"), pdfType);
        }
        if (!isOwnApplication(m_reader))
            return attributes;
        m_isRegistered = true;
        const int count = attributes.value(QLatin1String("count")).toInt() + 1;
        return withValue(withValue(attributes, QStringLiteral("modified"), m_time), QStringLiteral("count"),
                         QString::number(count));
    }

    /// Adds what is missing at the innermost place where it may stand.
    void beforeEndElement()
    {
        if (m_isInEntry && isBookmarkElement(m_reader, QLatin1String("applications")) && !m_isRegistered)
            writeApplication();
        if (m_isInEntry && (!m_isRegistered || !m_hasType)) {
            if (isPlainElement(m_reader, QLatin1String("info")))
                writeMetadata();
            else if (m_depth == m_entryDepth)
                writeInfo();
        }
        if (m_depth == m_entryDepth) {
            m_isInEntry = false;
            m_entryDepth = 0;
        }
        if (--m_depth == 0 && !m_isFound)
            writeEntry();
    }

    void writeApplication()
    {
        m_isRegistered = true;
        m_writer.writeEmptyElement(bookmarkNamespace, QStringLiteral("application"));
        m_writer.writeAttribute(QStringLiteral("name"), programName);
        m_writer.writeAttribute(QStringLiteral("exec"), programCommand);
        m_writer.writeAttribute(QStringLiteral("modified"), m_time);
        m_writer.writeAttribute(QStringLiteral("count"), QStringLiteral("1"));
    }

    void writeMetadata()
    {
        m_writer.writeStartElement(QStringLiteral("metadata"));
        m_writer.writeAttribute(QStringLiteral("owner"), metadataOwner);
        if (!m_hasType) {
            m_hasType = true;
            m_writer.writeEmptyElement(mimeNamespace, QStringLiteral("mime-type"));
            m_writer.writeAttribute(QStringLiteral("type"), pdfType);
        }
        if (!m_isRegistered) {
            m_writer.writeStartElement(bookmarkNamespace, QStringLiteral("applications"));
            writeApplication();
            m_writer.writeEndElement();
        }
        m_writer.writeEndElement();
    }

    void writeInfo()
    {
        m_writer.writeStartElement(QStringLiteral("info"));
        writeMetadata();
        m_writer.writeEndElement();
    }

    void writeEntry()
    {
        m_writer.writeCharacters(QStringLiteral("  "));
        m_writer.writeStartElement(QStringLiteral("bookmark"));
        m_writer.writeAttribute(QStringLiteral("href"), QString::fromLatin1(m_url.toEncoded(QUrl::FullyEncoded)));
        for (const QString &name : {QStringLiteral("added"), QStringLiteral("modified"), QStringLiteral("visited")})
            m_writer.writeAttribute(name, m_time);
        writeInfo();
        m_writer.writeEndElement();
        m_writer.writeCharacters(QStringLiteral("\n"));
    }

    QXmlStreamReader m_reader;
    QByteArray m_bytes;
    QXmlStreamWriter m_writer;
    QUrl m_url;
    QString m_time;
    int m_depth = 0;      // of open elements
    int m_entryDepth = 0; // where the open entry stands; 0 outside of entries
    bool m_isSound = false;
    bool m_isFound = false;
    bool m_isInEntry = false; // in the one that is changed; the next two tell what it has
    bool m_isRegistered = false;
    bool m_hasType = false;
};

} // namespace

QList<RecentEntry> readRecentEntries(const QByteArray &bytes)
{
    QXmlStreamReader reader(bytes);
    return readEntries(reader);
}

Result<QByteArray> recentListWithDocument(const QByteArray &bytes, const QUrl &url, const QDateTime &time)
{
    const Result<QByteArray> changed = EntryUpdate(bytes.trimmed().isEmpty() ? emptyList : bytes, url, time).run();
    if (!changed)
        return changed;
    const auto withoutDocument = [&url](QList<RecentEntry> entries) {
        entries.removeIf([&url](const RecentEntry &entry) { return entry.url == url; });
        return entries;
    };
    const auto isRegistered = [&url](const RecentEntry &entry) {
        return entry.url == url && entry.isOwn && entry.mimeType == pdfType;
    };
    return verified(*changed, [&](const QList<RecentEntry> &entries) {
        return std::any_of(entries.begin(), entries.end(), isRegistered) &&
               withoutDocument(entries) == withoutDocument(readRecentEntries(bytes));
    });
}

Result<QByteArray> recentListWithoutOwnDocuments(const QByteArray &bytes)
{
    const QList<RecentEntry> entries = readRecentEntries(bytes);
    QList<RecentEntry> expected;
    for (RecentEntry entry : entries) {
        entry.isOwn = false;
        if (!entry.isOnlyOwn)
            expected.append(entry);
    }

    QByteArray kept;
    QXmlStreamWriter writer(&kept);
    QXmlStreamReader reader(bytes);
    qsizetype next = 0; // of the entries
    while (!reader.atEnd()) {
        reader.readNext();
        const bool isEntry = reader.isStartElement() && isPlainElement(reader, QLatin1String("bookmark"));
        if ((isEntry && entries.value(next++).isOnlyOwn) || (reader.isStartElement() && isOwnApplication(reader)))
            reader.skipCurrentElement();
        else if (!reader.hasError())
            writer.writeCurrentToken(reader);
    }
    if (reader.hasError())
        return damage(reader.errorString());
    return verified(kept, [&](const QList<RecentEntry> &left) { return left == expected; });
}

} // namespace inkory
