// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/MainWindow.h"

#include "app/Images.h"
#include "tests/fakes/FakeTime.h"
#include "tests/support/WaitUntil.h"
#include "util/ConsoleView.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QScrollBar>
#include <QSet>
#include <QToolTip>
#include <gtest/gtest.h>

#include <algorithm>

namespace spotwell
{
namespace
{

QString mnemonicOf(const QString& text)
{
    return QKeySequence::mnemonic(text).toString();
}

class MainWindowTest : public testing::Test
{
protected:
    /// In the order the tab key visits them.
    [[nodiscard]] std::vector<QWidget*> controls() const
    {
        return {window.dxcluster,         window.port,
                window.callsign,          window.password,
                window.connected,         window.reconnectCheckBox,
                window.potaCheckBox,      window.skimmersCheckBox,
                window.dxsummitCheckBox,  window.dxsExclusiveCheckBox,
                window.wsprnetCheckBox,   window.darkCheckBox,
                window.lgwtRunningButton, window.showDebugLogButton,
                window.statusLine};
    }
    void showWindow()
    {
        window.show();
        ASSERT_TRUE(waitUntil([this] { return window.isVisible() && window.isActiveWindow(); }));
    }

    MainWindow window;
};

TEST_F(MainWindowTest, HasEachControlUnderItsName)
{
    EXPECT_TRUE(window.findChild<QLineEdit*>(QStringLiteral("dxcluster")));
    EXPECT_TRUE(window.findChild<QLineEdit*>(QStringLiteral("port")));
    EXPECT_TRUE(window.findChild<QLineEdit*>(QStringLiteral("callsign")));
    EXPECT_TRUE(window.findChild<QLineEdit*>(QStringLiteral("password")));
    EXPECT_TRUE(window.findChild<QPlainTextEdit*>(QStringLiteral("statusLine")));
    EXPECT_TRUE(window.findChild<QAbstractButton*>(QStringLiteral("connected")));
    EXPECT_TRUE(window.findChild<QAbstractButton*>(QStringLiteral("lgwtRunningButton")));
    EXPECT_TRUE(window.findChild<QAbstractButton*>(QStringLiteral("showDebugLogButton")));
    for (const QString& name : {QStringLiteral("reconnectCheckBox"), QStringLiteral("wsprnetCheckBox"),
                                QStringLiteral("dxsummitCheckBox"), QStringLiteral("potaCheckBox"),
                                QStringLiteral("skimmersCheckBox"), QStringLiteral("dxsExclusiveCheckBox"),
                                QStringLiteral("darkCheckBox")}) {
        const auto* box = window.findChild<QCheckBox*>(name);
        ASSERT_TRUE(box) << name.toStdString();
        EXPECT_FALSE(box->isChecked());
        EXPECT_FALSE(box->isTristate());
    }
    EXPECT_EQ(window.windowTitle(), QStringLiteral("spotwell"));
    EXPECT_FALSE(window.windowIcon().isNull());
}

TEST_F(MainWindowTest, EachControlSaysWhatItIs)
{
    QSet<QString> names;
    for (const QWidget* control : controls()) {
        EXPECT_FALSE(control->toolTip().isEmpty()) << control->objectName().toStdString();
        EXPECT_FALSE(control->accessibleName().isEmpty()) << control->objectName().toStdString();
        names.insert(control->accessibleName());
    }
    EXPECT_EQ(names.size(), static_cast<qsizetype>(controls().size()));
}

TEST_F(MainWindowTest, EachControlHasAMnemonicOfItsOwn)
{
    QSet<QString> used;
    const auto claim = [&used](const QString& text, const QWidget* control) {
        const QString mnemonic = mnemonicOf(text);
        EXPECT_FALSE(mnemonic.isEmpty()) << control->objectName().toStdString();
        EXPECT_FALSE(used.contains(mnemonic)) << mnemonic.toStdString();
        used.insert(mnemonic);
    };
    const auto labels = window.findChildren<QLabel*>();
    for (const QWidget* control : controls()) {
        const auto label = std::find_if(labels.begin(), labels.end(), [control](const QLabel* candidate) {
            return candidate->buddy() == control;
        });
        if (label != labels.end())
            claim((*label)->text(), control);
        else
            claim(qobject_cast<const QAbstractButton*>(control)->text(), control);
    }
    const QString off = mnemonicOf(window.connected->text());
    window.connected->setChecked(true);
    EXPECT_EQ(mnemonicOf(window.connected->text()), off);
}

TEST_F(MainWindowTest, TheTabKeyVisitsEachControlInReadingOrder)
{
    showWindow();
    window.dxcluster->setFocus();
    for (QWidget* control : controls()) {
        EXPECT_EQ(QApplication::focusWidget(), control) << control->objectName().toStdString();
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QApplication::sendEvent(QApplication::focusWidget(), &tab);
    }
    EXPECT_EQ(QApplication::focusWidget(), window.dxcluster);
}

TEST_F(MainWindowTest, TheFieldsSuitWhatIsTypedThere)
{
    EXPECT_EQ(window.password->echoMode(), QLineEdit::Password);
    EXPECT_EQ(window.dxcluster->echoMode(), QLineEdit::Normal);
    EXPECT_EQ(window.port->placeholderText(), QStringLiteral("23"));
    EXPECT_EQ(window.dxcluster->placeholderText(), QStringLiteral("Host name"));
    EXPECT_EQ(window.callsign->placeholderText(), QStringLiteral("Yours"));
    EXPECT_EQ(window.password->placeholderText(), QStringLiteral("Optional"));
    // At the window's smallest, too.
    window.resize(window.minimumSizeHint());
    (void)window.grab();
    for (const QLineEdit* field : {window.dxcluster, window.port, window.callsign, window.password}) {
        EXPECT_EQ(field->validator(), nullptr) << field->objectName().toStdString();
        EXPECT_EQ(field->inputMask(), QString()) << field->objectName().toStdString();
        constexpr int frameAndMargins = 12;
        EXPECT_LE(field->fontMetrics().horizontalAdvance(field->placeholderText()) + frameAndMargins,
                  field->width())
            << field->objectName().toStdString();
    }
}

TEST_F(MainWindowTest, OptionsStandInTheFrameOfTheirFeed)
{
    EXPECT_EQ(window.skimmersCheckBox->parentWidget(), window.potaCheckBox->parentWidget());
    EXPECT_EQ(window.dxsExclusiveCheckBox->parentWidget(), window.dxsummitCheckBox->parentWidget());
    EXPECT_NE(window.potaCheckBox->parentWidget(), window.dxsummitCheckBox->parentWidget());
    EXPECT_NE(window.wsprnetCheckBox->parentWidget(), window.dxsummitCheckBox->parentWidget());
}

TEST_F(MainWindowTest, TheConnectToggleReadsWellInBothStates)
{
    EXPECT_TRUE(window.connected->isCheckable());
    EXPECT_FALSE(window.connected->isChecked());
    EXPECT_EQ(window.connected->text(), QStringLiteral("Co&nnect"));
    const QString toolTip = window.connected->toolTip();
    const QSize size = window.connected->minimumSizeHint().expandedTo(window.connected->minimumSize());
    window.connected->setChecked(true);
    EXPECT_EQ(window.connected->text(), QStringLiteral("Co&nnected"));
    EXPECT_NE(window.connected->toolTip(), toolTip);
    EXPECT_EQ(window.connected->minimumSizeHint().expandedTo(window.connected->minimumSize()), size);
    window.connected->setChecked(false);
    EXPECT_EQ(window.connected->text(), QStringLiteral("Co&nnect"));
    EXPECT_EQ(window.connected->toolTip(), toolTip);
}

TEST_F(MainWindowTest, TheBulbSaysInWordsWhatItShows)
{
    const auto says = [this](const QString& words) {
        EXPECT_EQ(window.lgwtRunningButton->toolTip(), words);
        EXPECT_EQ(window.lgwtRunningButton->accessibleDescription(), words);
    };
    says(QStringLiteral("Not yet known whether Logwright runs"));
    EXPECT_TRUE(window.lgwtRunningButton->icon().isNull());
    window.setLogwrightRunning(true);
    says(QStringLiteral("Logwright is running"));
    window.setLogwrightRunning(false);
    says(QStringLiteral("Logwright is not running"));
}

TEST_F(MainWindowTest, NothingMovesWhenTheBulbGetsItsImage)
{
    showWindow();
    const QRect before = window.lgwtRunningButton->geometry();
    EXPECT_GE(before.width(), window.lgwtRunningButton->iconSize().width());
    window.lgwtRunningButton->setIcon(imageNamed(QStringLiteral("green_ball")));
    window.centralWidget()->layout()->activate();
    EXPECT_EQ(window.lgwtRunningButton->geometry(), before);
}

TEST_F(MainWindowTest, FitsASmallScreenAndShowsAWholeSpot)
{
    ASSERT_EQ(window.screen()->size(), QSize(1024, 768));
    FakeClock clock;
    FakeMainQueue queue(clock);
    ConsoleView view(*window.statusLine, queue);
    showWindow();
    EXPECT_LE(window.width(), 1024);
    EXPECT_LE(window.height(), 768);
    // A cluster line takes 80 columns, a spot with a park's reference ten more.
    for (int i = 0; i < 100; ++i)
        view.appendText(QString(90, u'W'));
    view.flush();
    ASSERT_GT(window.statusLine->verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(window.statusLine->horizontalScrollBar()->maximum(), 0);
    EXPECT_LE(window.minimumSizeHint().width(), 800);
    EXPECT_LE(window.minimumSizeHint().height(), 300);
}

TEST(FirstSize, LeavesRoomForTheWindowsFrame)
{
    EXPECT_EQ(firstSize({966, 620}, {1920, 1080}), QSize(966, 620));
    // A screen of 1920 x 1080 at 200 %.
    EXPECT_EQ(firstSize({966, 620}, {960, 540}), QSize(946, 500));
    EXPECT_EQ(firstSize({800, 620}, {814, 660}), QSize(800, 620));
    EXPECT_EQ(firstSize({800, 620}, {813, 659}), QSize(799, 619));
    EXPECT_EQ(firstSize({2000, 2000}, {3000, 3000}), QSize(1010, 680));
}

TEST_F(MainWindowTest, TheConsoleTakesWhatIsLeft)
{
    showWindow();
    const int height = window.statusLine->height();
    const int top = window.statusLine->y();
    EXPECT_GT(height, window.height() * 2 / 3);
    window.resize(window.width(), window.height() + 60);
    ASSERT_TRUE(waitUntil([&] { return window.statusLine->height() == height + 60; }));
    EXPECT_EQ(window.statusLine->y(), top);
}

TEST_F(MainWindowTest, ClosesOnlyWhenItsOwnerAgrees)
{
    showWindow();
    int asked = 0;
    bool answer = false;
    window.shouldClose = [&] {
        ++asked;
        return answer;
    };
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    answer = true;
    EXPECT_TRUE(window.close());
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(asked, 2);
}

TEST_F(MainWindowTest, ClosesWhenNobodyIsAsked)
{
    showWindow();
    EXPECT_TRUE(window.close());
}

/// How many pixels of `image` have exactly this colour.
int count(const QImage& image, const QColor& colour)
{
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            found += image.pixelColor(x, y) == colour ? 1 : 0;
    }
    return found;
}

TEST_F(MainWindowTest, OldConsoleLinesFollowTheAppearance)
{
    FakeClock clock;
    FakeMainQueue queue(clock);
    ConsoleView view(*window.statusLine, queue);
    window.setAppearance(lightAppearnace());
    showWindow();
    // Full blocks: glyphs whose inside has the text's colour and nothing else.
    for (int i = 0; i < 5; ++i)
        view.appendText(QString(40, QChar(0x2588)));
    view.flush();
    const int area = window.statusLine->viewport()->width() * window.statusLine->viewport()->height();
    for (const bool dark : {false, true, false}) {
        const Appearance appearance = desiredAppearanceObject(dark);
        window.setAppearance(appearance);
        const QImage image = window.statusLine->viewport()->grab().toImage();
        const QColor text = appearance.palette.color(QPalette::Text);
        const QColor base = appearance.palette.color(QPalette::Base);
        EXPECT_GT(count(image, text), 1000) << dark;
        EXPECT_GT(count(image, base), area / 2) << dark;
        EXPECT_EQ(count(image, desiredAppearanceObject(!dark).palette.color(QPalette::Base)), 0) << dark;
    }
}

TEST_F(MainWindowTest, DialogsAndToolTipsFollowTheAppearance)
{
    QMessageBox dialog(&window);
    for (const bool dark : {true, false}) {
        const Appearance appearance = desiredAppearanceObject(dark);
        window.setAppearance(appearance);
        const QColor background = appearance.palette.color(QPalette::Window);
        EXPECT_TRUE(waitUntil([&] { return dialog.palette().color(QPalette::Window) == background; }));
        for (const auto role : {QPalette::Window, QPalette::WindowText, QPalette::Button, QPalette::Base}) {
            EXPECT_EQ(dialog.palette().color(role), appearance.palette.color(role));
            EXPECT_EQ(window.palette().color(role), appearance.palette.color(role));
            EXPECT_EQ(window.dxcluster->palette().color(role), appearance.palette.color(role));
        }
        EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipText),
                  appearance.palette.color(QPalette::ToolTipText));
    }
}

TEST_F(MainWindowTest, OutlinesAreDrawnInTheirColour)
{
    showWindow();
    window.reconnectCheckBox->setFocus();
    for (const bool dark : {true, false}) {
        const Appearance appearance = desiredAppearanceObject(dark);
        window.setAppearance(appearance);
        const QColor outline = appearance.palette.color(QPalette::Dark);
        for (QWidget* control :
             {static_cast<QWidget*>(window.dxcluster), static_cast<QWidget*>(window.potaCheckBox),
              static_cast<QWidget*>(window.showDebugLogButton)})
            EXPECT_GE(count(control->grab().toImage(), outline), 40) << control->objectName().toStdString();
        const QColor focus = appearance.palette.color(QPalette::Highlight);
        window.callsign->setFocus();
        EXPECT_GE(count(window.callsign->grab().toImage(), focus), 40);
        window.statusLine->setFocus();
        EXPECT_EQ(count(window.callsign->grab().toImage(), focus), 0);
        EXPECT_GE(count(window.statusLine->grab().toImage(), focus), 200);
    }
}

} // namespace
} // namespace spotwell
