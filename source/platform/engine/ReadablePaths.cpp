#include "platform/engine/Containment.h"

#include <QFile>

#include <fontconfig/fontconfig.h>
#include <memory>
#include <sys/stat.h>

namespace inkory
{

namespace
{

/// Where the drawing library looks for the tables that text in Chinese, Japanese and Korean needs.
const QString drawingTables = QStringLiteral("/usr/share/poppler");

/// Takes over the list.
QStringList paths(FcStrList *list)
{
    QStringList found;
    if (!list)
        return found;
    while (const FcChar8 *path = ::FcStrListNext(list))
        found << QFile::decodeName(reinterpret_cast<const char *>(path));
    ::FcStrListDone(list);
    return found;
}

/// After this, fontconfig has read its settings and caches, and knows the language and the program's name.
void matchAnyFont()
{
    const std::unique_ptr<FcPattern, decltype(&::FcPatternDestroy)> wanted(
        ::FcNameParse(reinterpret_cast<const FcChar8 *>("sans")), &::FcPatternDestroy);
    ::FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    ::FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    const std::unique_ptr<FcPattern, decltype(&::FcPatternDestroy)> match(::FcFontMatch(nullptr, wanted.get(), &result),
                                                                          &::FcPatternDestroy);
}

/// Fonts that lie elsewhere, and of which the fonts' folders have only links.
QStringList linkedFonts()
{
    QStringList found;
    const FcFontSet *fonts = ::FcConfigGetFonts(nullptr, FcSetSystem);
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcChar8 *name = nullptr;
        if (::FcPatternGetString(fonts->fonts[i], FC_FILE, 0, &name) != FcResultMatch)
            continue;
        const auto *file = reinterpret_cast<const char *>(name);
        struct stat status = {};
        if (::lstat(file, &status) == 0 && S_ISLNK(status.st_mode))
            found << QFile::decodeName(file);
    }
    return found;
}

} // namespace

QStringList readablePathsForDrawing()
{
    QStringList found = {drawingTables};
    if (::FcInit()) {
        matchAnyFont();
        found << paths(::FcConfigGetFontDirs(nullptr)) << paths(::FcConfigGetConfigFiles(nullptr))
              << paths(::FcConfigGetCacheDirs(nullptr)) << paths(::FcConfigGetConfigDirs(nullptr)) << linkedFonts();
    }
    found.removeDuplicates();
    return found;
}

} // namespace inkory
