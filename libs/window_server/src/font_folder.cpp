#include "font_folder.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <iterator>

namespace qws {
namespace {

const char *const kSuffixes[] = {"*.ttf", "*.ttc", "*.otf", "*.pfa", "*.pfb"};
/// Enough for any system's folder; a bound on the time of a start.
constexpr int kMostFiles = 512;
constexpr char kFallbackFolder[] = "/usr/share/fonts/truetype";

/// Parts of the names of families that no text should fall back to while there are others.
const char *const kSpecial[] = {"Mono", "Condensed", "Light", "Symbol", "Emoji", "Math"};

bool isSpecial(const QString &family) {
    return std::any_of(std::begin(kSpecial), std::end(kSpecial), [&family](const char *part) {
        return family.contains(QLatin1String(part));
    });
}

}  // namespace

QStringList fontFiles(const QString &folder, Depth depth) {
    // Qt would take the current folder.
    if (folder.isEmpty()) return {};
    QStringList filters;
    for (const char *suffix : kSuffixes)
        filters << QLatin1String(suffix);
    const auto flags = depth == Depth::kWithSubfolders ? QDirIterator::Subdirectories
                                                       : QDirIterator::NoIteratorFlags;
    QStringList files;
    QDirIterator entries(folder, filters, QDir::Files, flags);
    while (entries.hasNext() && files.size() < kMostFiles) {
        const QString path = entries.next();
        if (QFileInfo(path).isFile()) files << path;
    }
    files.sort();
    return files;
}

void FontFolderDatabase::populateFontDatabase() {
    add(fontFiles(fontDir(), Depth::kFolderOnly));
    if (m_families.isEmpty()) {
        const QString fallback =
            qEnvironmentVariable("APP_GUI_FONTDIR_FALLBACK", QLatin1String(kFallbackFolder));
        add(fontFiles(fallback, Depth::kWithSubfolders));
    }
    m_families = plainFamiliesFirst(m_families);
}

QString FontFolderDatabase::fontDir() const {
    return qEnvironmentVariable("QT_QWS_FONTDIR");
}

QFont FontFolderDatabase::defaultFont() const {
    return m_families.isEmpty() ? QFreeTypeFontDatabase::defaultFont() : QFont(m_families.first());
}

QStringList FontFolderDatabase::fallbacksForFamily(const QString &family, QFont::Style,
                                                   QFont::StyleHint, QChar::Script) const {
    QStringList others = m_families;
    others.removeAll(family);
    return others;
}

void FontFolderDatabase::add(const QStringList &files) {
    for (const QString &file : files) {
        m_families << QFreeTypeFontDatabase::addTTFile(QByteArray(), QFile::encodeName(file));
    }
}

QStringList plainFamiliesFirst(QStringList families) {
    families.removeDuplicates();
    std::stable_partition(families.begin(), families.end(),
                          [](const QString &family) { return !isSpecial(family); });
    return families;
}

}  // namespace qws
