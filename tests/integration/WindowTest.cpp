// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/VirtualScreen.h"

#include <QProcess>
#include <QRect>
#include <QSet>

namespace spotwell
{
namespace
{

class WindowTest : public ProgramFixture
{
protected:
    /// The window with the program's name as its title that is to be seen; empty when there is none.
    QRect window() const
    {
        QProcess finder;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), screen.display());
        finder.setProcessEnvironment(environment);
        finder.start(QStringLiteral("xdotool"),
                     {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                      QStringLiteral("^spotwell$"), QStringLiteral("getwindowgeometry"),
                      QStringLiteral("--shell")});
        EXPECT_TRUE(finder.waitForFinished()) << "xdotool";
        QMap<QByteArray, int> values;
        for (const QByteArray& line : finder.readAllStandardOutput().split('\n')) {
            const qsizetype sign = line.indexOf('=');
            if (sign > 0)
                values.insert(line.first(sign), line.mid(sign + 1).toInt());
        }
        return {values.value("X"), values.value("Y"), values.value("WIDTH"), values.value("HEIGHT")};
    }
    static qsizetype coloursIn(const QImage& picture, const QRect& area)
    {
        QSet<QRgb> colours;
        const QRect seen = area & picture.rect();
        for (int y = seen.top(); y <= seen.bottom(); ++y) {
            for (int x = seen.left(); x <= seen.right(); ++x)
                colours.insert(picture.pixel(x, y));
        }
        return colours.size();
    }

    VirtualScreen screen;
};

TEST_F(WindowTest, showsItself)
{
    startConnected({QStringLiteral("DISPLAY=") + screen.display()});
    say("Welcome to a node on loopback\r\n" + spotLine(1) + "\r\nlogin: ");
    ASSERT_TRUE(hears("N0CALL\n"));
    QRect area;
    ASSERT_TRUE(waitUntil([&] { return !(area = window()).isEmpty(); }));
    EXPECT_GE(area.width(), 400);
    EXPECT_GE(area.height(), 200);
    // Texts and controls have many colours for the sake of their smooth edges; an empty window has few.
    const bool drawn = waitUntil([&] { return coloursIn(screen.picture(), area) >= 16; });
    EXPECT_TRUE(screen.picture().save(screen.filePath(QStringLiteral("window.png"))));
    EXPECT_TRUE(drawn) << coloursIn(screen.picture(), area) << " colours";
}

} // namespace
} // namespace spotwell
