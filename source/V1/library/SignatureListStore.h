#pragma once

#include "platform/core/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace inkory
{

/// Which image files belong to the library, as it is kept on disk: in the user defaults, and a second time in a file
/// beside the images, because settings are what people delete, lose and damage.
class SignatureListStore
{
public:
    struct Contents
    {
        /// Fully percent-encoded file URLs in the library's order.
        QStringList urls;
        /// Whether the entries of early versions have been brought into today's folder.
        bool migrationDone = false;

        bool operator==(const Contents &) const = default;
    };

    /// What the file of the second copy says.
    struct Copy
    {
        Contents contents;
        /// Whether the last change reached the copy only.
        bool isNewerThanSettings = false;

        bool operator==(const Copy &) const = default;
    };

    /// Nothing for bytes that are no such file.
    static std::optional<Copy> copyFromBytes(const QByteArray &bytes);
    static QByteArray bytesOfCopy(const Copy &copy);

    /// `copyPath` is the file of the second copy; empty: there is none.
    explicit SignatureListStore(QString copyPath) : m_copyPath(std::move(copyPath)) {}

    /// The settings' list and flag. The second copy takes the place of both where the settings hold no list, or where
    /// the last change reached the copy only. Nothing where neither holds a list.
    std::optional<Contents> read() const;

    /// Keeps, in both copies, what the caller has added and removed between `before` and `urls`, together with what
    /// other processes have added and removed meanwhile; notes that the migration is done. `urls` becomes the whole
    /// list, on failure, too. Fails, with the reason, when neither copy could be written; every failure is logged.
    Result<void> writeChange(const QStringList &before, QStringList &urls) const;

private:
    std::optional<Copy> readCopy() const;
    Result<void> write(const Contents &contents) const;

    QString m_copyPath;
};

} // namespace inkory
