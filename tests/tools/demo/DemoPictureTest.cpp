// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/WaitUntil.h"
#include "tools/spotwell-demo/Picture.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace spotwell
{
namespace
{

TEST(DemoPicture, looksForALineOfEachSource)
{
    const QStringList sources{u"teln"_qs, u"pota"_qs};
    const QChar next = QChar::ParagraphSeparator;
    EXPECT_TRUE(holdsEach(u"teln a"_qs + next + u"pota b"_qs, sources));
    EXPECT_TRUE(holdsEach(u"pota b"_qs + next + u"x"_qs + next + u"teln a"_qs, sources));
    EXPECT_FALSE(holdsEach(u"teln pota "_qs, sources));
    EXPECT_FALSE(holdsEach(u"teln a"_qs + next + u"potato"_qs, sources));
    EXPECT_FALSE(holdsEach({}, sources));
    EXPECT_TRUE(holdsEach({}, {}));
}

TEST(DemoPicture, isTakenOnce)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"picture.png"_qs);
    QPlainTextEdit console;
    Picture picture{console, {u"teln"_qs}, file};
    EXPECT_FALSE(QFile::exists(file));
    picture.takeAtLatestNow();
    EXPECT_TRUE(QFile::remove(file));
    picture.takeAtLatestNow();
    EXPECT_FALSE(QFile::exists(file));
}

TEST(DemoPicture, isTakenWhenTheConsoleShowsEverySource)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"picture.png"_qs);
    QPlainTextEdit console;
    console.resize(400, 200);
    console.show();
    console.appendPlainText(u"teln a"_qs);
    Picture picture{console, {u"teln"_qs, u"pota"_qs}, file};
    picture.startWatching();
    console.appendPlainText(u"pota b"_qs);
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(file); }));
}

} // namespace
} // namespace spotwell

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application{argc, argv};
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
