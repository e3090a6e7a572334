// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/MainWindow.h"
#include "tests/fakes/FakeTime.h"
#include "tests/support/WaitUntil.h"
#include "tests/window/Contrast.h"
#include "util/ConsoleView.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHash>
#include <QImage>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QStyleOptionButton>
#include <QTextCursor>
#include <QToolTip>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace spotwell
{
namespace
{

/// How far the part of a picture that differs most stands out from what most of it has.
double paintedContrast(const QImage& picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    QRgb ground = 0;
    int most = 0;
    for (auto colour = counts.cbegin(); colour != counts.cend(); ++colour) {
        if (colour.value() > most) {
            most = colour.value();
            ground = colour.key();
        }
    }
    double best = 1;
    for (auto colour = counts.cbegin(); colour != counts.cend(); ++colour)
        best = std::max(best, contrast(QColor(colour.key()), QColor(ground)));
    return best;
}

class PaintedContrastTest : public testing::TestWithParam<Wanted>
{
protected:
    void SetUp() override
    {
        window.setAppearance(desiredAppearanceObject(GetParam().dark, GetParam().contrast));
        window.show();
        ASSERT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
    }
    void TearDown() override { window.setAppearance(lightAppearnace()); }

    static double of(QWidget* control, const QRect& part)
    {
        return paintedContrast(control->grab(part).toImage());
    }
    /// Without a frame.
    static double inside(QWidget* control) { return of(control, control->rect().adjusted(5, 4, -5, -4)); }
    static double wordsOf(QCheckBox* box)
    {
        QStyleOptionButton option;
        option.initFrom(box);
        return of(box, box->style()->subElementRect(QStyle::SE_CheckBoxContents, &option, box));
    }

    const double text = leastOfText(GetParam());
    const double disabledText = leastOfDisabledText(GetParam());
    MainWindow window;
};

TEST_P(PaintedContrastTest, LabelsBoxesAndButtons)
{
    EXPECT_GE(of(window.feedsLabel, window.feedsLabel->rect()), text);
    EXPECT_GE(wordsOf(window.potaCheckBox), text);
    EXPECT_GE(inside(window.connected), text);
    window.connected->setChecked(true);
    EXPECT_GE(inside(window.connected), text);
    window.skimmersCheckBox->setEnabled(false);
    EXPECT_GE(wordsOf(window.skimmersCheckBox), disabledText);
    window.showDebugLogButton->setEnabled(false);
    EXPECT_GE(inside(window.showDebugLogButton), disabledText);
}

TEST_P(PaintedContrastTest, FieldsTheirPlaceholdersAndWhatIsSelected)
{
    window.potaCheckBox->setFocus();
    ASSERT_FALSE(window.callsign->placeholderText().isEmpty());
    EXPECT_GE(inside(window.callsign), text);
    window.callsign->setText(QStringLiteral("N0CALL"));
    EXPECT_GE(inside(window.callsign), text);
    window.callsign->setFocus();
    window.callsign->selectAll();
    // So narrow that what is selected is most of it.
    EXPECT_GE(of(window.callsign, QRect(7, 5, 30, window.callsign->height() - 10)), text);
    window.callsign->setEnabled(false);
    EXPECT_GE(inside(window.callsign), disabledText);
}

TEST_P(PaintedContrastTest, TheConsoleAndWhatIsSelectedThere)
{
    FakeClock clock;
    FakeMainQueue queue(clock);
    ConsoleView view(*window.statusLine, queue);
    view.appendText(QString(60, u'W'));
    view.flush();
    EXPECT_GE(of(window.statusLine->viewport(), window.statusLine->viewport()->rect()), text);
    window.statusLine->selectAll();
    const QRect line = window.statusLine->cursorRect().adjusted(-200, 2, -20, -2);
    for (QWidget* focused :
         {static_cast<QWidget*>(window.statusLine), static_cast<QWidget*>(window.callsign)}) {
        focused->setFocus();
        EXPECT_GE(of(window.statusLine->viewport(), line), text) << focused->objectName().toStdString();
    }
}

TEST_P(PaintedContrastTest, ToolTipsAndTheQuestion)
{
    QToolTip::showText(window.mapToGlobal(QPoint(20, 20)), window.dxcluster->toolTip(), &window);
    QWidget* tip = nullptr;
    ASSERT_TRUE(waitUntil([&] {
        for (QWidget* candidate : QApplication::topLevelWidgets()) {
            if (candidate->inherits("QTipLabel") && candidate->isVisible())
                tip = candidate;
        }
        return tip != nullptr;
    }));
    EXPECT_GE(inside(tip), text);
    QToolTip::hideText();

    QMessageBox question(&window);
    question.setText(QStringLiteral("Do you want to quit spotwell ?"));
    QWidget* const quit = question.addButton(QStringLiteral("Quit"), QMessageBox::AcceptRole);
    (void)question.grab();
    EXPECT_GE(inside(quit), text);
    EXPECT_GE(inside(question.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))), text);
}

TEST_P(PaintedContrastTest, TheConsolesMenu)
{
    window.statusLine->setPlainText(QStringLiteral("some text"));
    const QPoint place = window.statusLine->viewport()->rect().center();
    QContextMenuEvent asked(QContextMenuEvent::Mouse, place, window.statusLine->mapToGlobal(place));
    QApplication::sendEvent(window.statusLine->viewport(), &asked);
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    const QColor outline = menu->palette().color(QPalette::Dark);
    const QImage picture = menu->grab().toImage();
    EXPECT_EQ(picture.pixelColor(0, picture.height() / 2), outline);
    EXPECT_EQ(picture.pixelColor(picture.width() / 2, picture.height() - 1), outline);
    EXPECT_GE(contrast(outline, window.statusLine->palette().color(QPalette::Base)), 3.0);

    double leastEnabled = 21;
    std::optional<double> disabled;
    for (QAction* action : menu->actions()) {
        if (action->isSeparator())
            continue;
        const QRect words = menu->actionGeometry(action).adjusted(5, 2, -5, -2);
        const double read = of(menu, words);
        if (action->isEnabled()) {
            EXPECT_GE(read, text);
            leastEnabled = std::min(leastEnabled, read);
            menu->setActiveAction(action);
            EXPECT_GE(of(menu, words), text) << "the current one";
        } else {
            disabled = read;
        }
    }
    ASSERT_TRUE(disabled);
    EXPECT_GE(*disabled, disabledText);
    EXPECT_LT(*disabled, leastEnabled);
    menu->close();
}

TEST_P(PaintedContrastTest, ScrollBarsShowWhereTheyAre)
{
    QScrollBar* const bar = window.statusLine->horizontalScrollBar();
    window.statusLine->setPlainText(QString(300, u'W'));
    ASSERT_TRUE(waitUntil([&] { return bar->maximum() > 0; }));
    EXPECT_GE(of(bar, bar->rect()), 3.0);
    const QColor outline = window.palette().color(QPalette::Dark);
    const QImage picture = bar->grab().toImage();
    int found = 0;
    for (int x = 0; x < picture.width(); ++x)
        found += picture.pixelColor(x, picture.height() / 2) == outline ? 1 : 0;
    EXPECT_GE(found, 2) << "the slider's ends";
}

INSTANTIATE_TEST_SUITE_P(Appearance, PaintedContrastTest, eachWantedAppearance(), nameOfWanted);

} // namespace
} // namespace spotwell
