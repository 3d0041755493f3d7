#pragma once

#include <QByteArray>

#include <memory>

namespace inkory
{

/// A password in memory that is kept out of swap and of core dumps, and wiped when the last copy of this object goes.
/// Copies share the bytes.
class SecretBytes
{
public:
    SecretBytes() = default;
    /// Takes the bytes over and wipes what was given, if nobody else shares it.
    explicit SecretBytes(QByteArray &&bytes);

    bool isEmpty() const { return size() == 0; }
    qsizetype size() const;
    /// Not copied: valid as long as this object or a copy of it. Never null.
    const char *data() const;

private:
    class Locked;
    std::shared_ptr<const Locked> m_locked;
};

/// Overwrites the bytes so that the compiler cannot leave it out; does nothing to bytes that others share.
void wipe(QByteArray &bytes);

} // namespace inkory
