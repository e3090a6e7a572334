// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Images.h"
#include "platform/linux/PosixProcessServices.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/WorkerPool.h"
#include "tests/app/FakeProgram.h"
#include "tests/support/WaitUntil.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <gtest/gtest.h>

#include <array>
#include <atomic>

namespace spotwell
{

namespace
{

struct Box {
    const char* key;
    QCheckBox* Ui::MainWindow::*control;
};

constexpr std::array<Box, 7> boxes{{{"reconnect", &MainWindow::reconnectCheckBox},
                                    {"wsprnet", &MainWindow::wsprnetCheckBox},
                                    {"dxsummit", &MainWindow::dxsummitCheckBox},
                                    {"pota", &MainWindow::potaCheckBox},
                                    {"skimmers", &MainWindow::skimmersCheckBox},
                                    {"dxsexclusive", &MainWindow::dxsExclusiveCheckBox},
                                    {"dark", &MainWindow::darkCheckBox}}};

QImage imageOf(const QIcon& icon)
{
    return icon.pixmap(64, 64).toImage();
}

const QByteArray heardSpot = "DX de N0CALL:    21205.0  X1X          CQ                             1428Z";

struct ControlsTest : testing::Test {
    [[nodiscard]] QImage bulb() const { return imageOf(window.lgwtRunningButton->icon()); }
    [[nodiscard]] QColor consoleBackground() const
    {
        return window.statusLine->palette().color(QPalette::Base);
    }
    /// What is behind the console's text on the screen.
    [[nodiscard]] QColor paintedBackground() const
    {
        const QImage image = window.statusLine->viewport()->grab().toImage();
        return image.pixelColor(image.rect().bottomRight());
    }
    /// Lets the node say a spot line and waits for nothing but its way to the logger.
    void hearSpot()
    {
        program.sockets.last().receive(heardSpot + "\r\n");
        program.runQueues();
    }

    FakeProgram program;
    MainWindow& window = program.window;
};

} // namespace

TEST_F(ControlsTest, EachBoxIsSavedUnderItsOwnKey)
{
    program.launch();
    for (const Box& on : boxes) {
        for (const Box& box : boxes)
            (window.*box.control)->setChecked(box.key == on.key);
        program.delegate.prefsChanged();
        ASSERT_EQ(program.defaults.booleans.size(), boxes.size());
        for (const Box& box : boxes) {
            EXPECT_EQ(program.defaults.booleans[QLatin1String(box.key)], box.key == on.key)
                << box.key << " with " << on.key;
        }
    }
}

TEST_F(ControlsTest, EachKeySetsItsOwnBoxAtLaunch)
{
    for (const Box& on : boxes) {
        FakeProgram other;
        other.defaults.booleans[QLatin1String(on.key)] = true;
        other.launch();
        for (const Box& box : boxes) {
            EXPECT_EQ((other.window.*box.control)->isChecked(), box.key == on.key)
                << box.key << " with " << on.key;
        }
    }
}

TEST_F(ControlsTest, OfALongTextTheBeginningShows)
{
    for (const auto& key : {QStringLiteral("dxcluster"), QStringLiteral("port"), QStringLiteral("callsign"),
                            QStringLiteral("password")})
        program.defaults.strings[key] = QString(200, u'x');
    program.launch();
    for (const QLineEdit* field : {window.dxcluster, window.port, window.callsign, window.password}) {
        EXPECT_EQ(field->text().size(), 200) << field->objectName().toStdString();
        EXPECT_EQ(field->cursorPosition(), 0) << field->objectName().toStdString();
    }
}

TEST_F(ControlsTest, TheTwoBulbsDiffer)
{
    ASSERT_FALSE(imageOf(imageNamed(QStringLiteral("green_ball"))).isNull());
    ASSERT_FALSE(imageOf(imageNamed(QStringLiteral("gray_ball"))).isNull());
    EXPECT_NE(imageOf(imageNamed(QStringLiteral("green_ball"))),
              imageOf(imageNamed(QStringLiteral("gray_ball"))));
}

TEST_F(ControlsTest, ATickShowsTheGreenBulbOrTheGreyOne)
{
    program.launch();
    program.mainQueue.advance(Seconds{5});
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("gray_ball"))));
    program.applications.add(loggerName(), QStringLiteral("6.45"));
    program.mainQueue.advance(Seconds{5});
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("green_ball"))));
    program.applications.applications.clear();
    program.mainQueue.advance(Seconds{5});
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("gray_ball"))));
}

TEST_F(ControlsTest, ALineShowsTheGreenBulbOrTheGreyOne)
{
    program.launch();
    window.connected->click();
    hearSpot();
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("gray_ball"))));
    program.applications.add(loggerName(), QStringLiteral("6.45"));
    hearSpot();
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("green_ball"))));
    program.applications.applications.clear();
    hearSpot();
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("gray_ball"))));
}

TEST_F(ControlsTest, TheLatestFindingIsShownWhoeverMadeIt)
{
    program.launch();
    window.connected->click();
    program.mainQueue.advance(Seconds{5});
    program.applications.add(loggerName(), QStringLiteral("6.45"));
    hearSpot();
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("green_ball"))));
    program.applications.applications.clear();
    program.mainQueue.advance(Seconds{5});
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("gray_ball"))));
    program.applications.add(loggerName(), QStringLiteral("6.45"));
    hearSpot();
    EXPECT_EQ(bulb(), imageOf(imageNamed(QStringLiteral("green_ball"))));
}

TEST_F(ControlsTest, TheConsoleHasTheAppearancesBackground)
{
    const QColor light = lightAppearnace().palette.color(QPalette::Base);
    const QColor dark = darkAppearnace().palette.color(QPalette::Base);
    ASSERT_NE(light, dark);
    program.launch();
    EXPECT_EQ(consoleBackground(), light);
    EXPECT_EQ(paintedBackground(), light);
    window.darkCheckBox->click();
    EXPECT_EQ(consoleBackground(), dark);
    EXPECT_EQ(paintedBackground(), dark);
    window.darkCheckBox->click();
    EXPECT_EQ(consoleBackground(), light);
    EXPECT_EQ(paintedBackground(), light);
}

TEST_F(ControlsTest, TheConsoleIsDarkFromTheStartWhenItWasSavedSo)
{
    program.defaults.booleans[QStringLiteral("dark")] = true;
    program.launch();
    EXPECT_EQ(consoleBackground(), darkAppearnace().palette.color(QPalette::Base));
}

TEST_F(ControlsTest, TheWindowTakesTheContrastThatTheDesktopWants)
{
    const auto background = [](bool dark, Contrast contrast) {
        return desiredAppearanceObject(dark, contrast).palette.color(QPalette::Window);
    };
    const auto shown = [this] { return window.palette().color(QPalette::Window); };
    program.launch();
    EXPECT_EQ(shown(), background(false, Contrast::normal));
    ASSERT_EQ(program.desktopContrast.asked.size(), 1U);
    const auto answer = program.desktopContrast.asked.front();
    answer(true);
    EXPECT_EQ(shown(), background(false, Contrast::high));
    window.darkCheckBox->click();
    EXPECT_EQ(shown(), background(true, Contrast::high));
    answer(false);
    EXPECT_EQ(shown(), background(true, Contrast::normal));
    window.darkCheckBox->click();
    EXPECT_EQ(shown(), background(false, Contrast::normal));
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationInactive);
    EXPECT_EQ(program.desktopContrast.asked.size(), 1U);
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_EQ(program.desktopContrast.asked.size(), 2U);
}

TEST_F(ControlsTest, TheWindowTakesTheContrastOfTheDesktopsColours)
{
    window.setAppearance(desiredAppearanceObject(true, Contrast::high));
    program.launch();
    const Appearance expected = desiredAppearanceObject(false, Contrast::high);
    EXPECT_EQ(window.palette().color(QPalette::Window), expected.palette.color(QPalette::Window));
    window.setAppearance(lightAppearnace());
}

TEST_F(ControlsTest, TheUrlSessionCanBeReplaced)
{
    program.launch();
    auto other = std::make_unique<FakeUrlSession>();
    const UrlSession* const expected = other.get();
    program.delegate.setTb_medium_timeout_session(std::move(other));
    EXPECT_EQ(program.delegate.tb_medium_timeout_session(), expected);
    program.delegate.setTb_medium_timeout_session(nullptr);
    EXPECT_EQ(program.delegate.tb_medium_timeout_session(), nullptr);
}

TEST_F(ControlsTest, AnotherViewScrollsByTheConsolesLength)
{
    QPlainTextEdit widget;
    ConsoleView other(widget, program.mainQueue);
    widget.resize(400, 200);
    widget.show();
    ASSERT_TRUE(waitUntil([&] { return widget.isVisible() && widget.viewport()->height() > 100; }));
    for (int i = 0; i < 100; ++i)
        program.delegate.appendText(QStringLiteral("line"), &other);
    other.flush();
    ASSERT_GT(widget.verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(widget.verticalScrollBar()->value(), 0) << "the console is empty before the launch";
    program.launch();
    program.delegate.appendText(QStringLiteral("line"), &other);
    other.flush();
    EXPECT_EQ(widget.verticalScrollBar()->value(), widget.verticalScrollBar()->maximum());
    EXPECT_EQ(other.text(), QStringLiteral("\nline").repeated(101));
}

TEST(ThreadCheck, WarnsWithTheStackOfARealQueue)
{
    const FakeClock clock;
    const QtMainQueue mainQueue;
    PosixProcessServices process;
    FakeLog log;
    const DiagnosticsLog diagnostics(log, clock, mainQueue, process, QStringLiteral("1.2.3"));
    diagnostics.threadCheckWarning();
    EXPECT_TRUE(log.lines.isEmpty());

    std::atomic<bool> done = false;
    PooledSerialQueue queue(std::make_shared<WorkerPool>(QStringLiteral("workers")),
                            QStringLiteral("a queue"));
    queue.async([&] {
        diagnostics.threadCheckWarning();
        done = true;
    });
    ASSERT_TRUE(waitUntil([&] { return done.load(); }));
    ASSERT_EQ(log.lines.size(), 1);
    const QString begin = QStringLiteral("threadCheckWarning: called on background thread:\n");
    EXPECT_EQ(log.lines[0].left(begin.size()), begin);
    const QStringList frames = log.lines[0].mid(begin.size()).split(QLatin1Char('\n'));
    EXPECT_GE(frames.size(), 4) << "the check itself, the task, the queue, the thread";
    for (const QString& frame : frames)
        EXPECT_TRUE(frame.contains(QLatin1String("[0x"))) << frame.toStdString();
}

} // namespace spotwell
