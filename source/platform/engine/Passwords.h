#pragma once

#include <QByteArray>

#include <vector>

namespace inkory
{

/// The byte strings that a password may be in a file, the likeliest first: as it was typed (UTF-8), with its letters
/// composed, and in Latin-1 as old files have it. Each at most 127 bytes, because a longer one crashes a library; the
/// format counts no more of them either. One empty string for an empty password.
std::vector<QByteArray> passwordCandidates(const QByteArray &utf8Password);

} // namespace inkory
