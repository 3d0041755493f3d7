#pragma once

#include <QStringList>

class EventTimer;

/// Takes many files through what a person does with them, one after the other, and prints one line of JSON for each:
/// opens it, draws its pages (up to 20), places the image in the middle of page 1, saves into the folder, draws again
/// and closes meanwhile. Answers the number of files.
///
/// Each entry is a path, or a path, a tab and a password; "-" stands for lines of standard input.
int runSession(EventTimer &application, const QStringList &files, const QString &imagePath, const QString &folder);
