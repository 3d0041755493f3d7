#include "platform/engine/Passwords.h"

#include <QString>

#include <algorithm>

namespace inkory
{

std::vector<QByteArray> passwordCandidates(const QByteArray &utf8Password)
{
    constexpr int maxBytes = 127;
    const QString composed = QString::fromUtf8(utf8Password).normalized(QString::NormalizationForm_KC);
    std::vector<QByteArray> candidates{utf8Password.left(maxBytes)};
    const auto add = [&candidates](const QByteArray &candidate) {
        const QByteArray cut = candidate.left(maxBytes);
        if (std::find(candidates.begin(), candidates.end(), cut) == candidates.end())
            candidates.push_back(cut);
    };
    add(composed.toUtf8());
    if (std::all_of(composed.begin(), composed.end(), [](QChar letter) { return letter.unicode() <= 0xff; }))
        add(composed.toLatin1());
    return candidates;
}

} // namespace inkory
