#include "font_folder.h"

#include <sys/stat.h>

#include <gtest/gtest.h>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace qws {
namespace {

void touch(const QString &path) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}

TEST(FontFolder, OnlyRegularFilesWithAFontsSuffixCount) {
    QTemporaryDir folder;
    for (const char *name :
         {"b.ttf", "a.TTC", "c.otf", "d.pfa", "e.pfb", "f.txt", "ttf", "g.ttf.gz"}) {
        touch(folder.filePath(QLatin1String(name)));
    }
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("folder.ttf")));
    ASSERT_EQ(0, ::mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe.ttf"))), 0600));
    QStringList names;
    for (const QString &path : fontFiles(folder.path(), Depth::kFolderOnly)) {
        names << path.section(QLatin1Char('/'), -1);
    }
    EXPECT_EQ(QStringList({"a.TTC", "b.ttf", "c.otf", "d.pfa", "e.pfb"}), names);
}

TEST(FontFolder, SubfoldersCountOnlyWhereAskedFor) {
    QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("one/two")));
    touch(folder.filePath(QStringLiteral("one/two/deep.ttf")));
    EXPECT_TRUE(fontFiles(folder.path(), Depth::kFolderOnly).isEmpty());
    EXPECT_EQ(1, fontFiles(folder.path(), Depth::kWithSubfolders).size());
}

TEST(FontFolder, AMissingFolderIsEmpty) {
    EXPECT_TRUE(fontFiles(QStringLiteral("/nonexistent/folder"), Depth::kWithSubfolders).isEmpty());
    EXPECT_TRUE(fontFiles(QString(), Depth::kFolderOnly).isEmpty());
}

TEST(FontFolder, PlainFamiliesComeFirstAndOnce) {
    EXPECT_EQ(QStringList({"Alpha", "Beta", "Alpha Mono", "Beta Condensed"}),
              plainFamiliesFirst({"Alpha Mono", "Alpha", "Beta Condensed", "Alpha", "Beta"}));
    EXPECT_EQ(QStringList({"Mono"}), plainFamiliesFirst({"Mono"}));
}

}  // namespace
}  // namespace qws
