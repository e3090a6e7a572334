// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Appearance.h"

#include <QBrush>
#include <QCheckBox>
#include <QColor>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>

namespace spotwell
{

namespace
{

/// The colours an appearance is made of. All text colours keep 4.5:1 against what they stand on, outlines and
/// the highlight 3:1, and disabled text 3:1 (WCAG 2.1 AA; of disabled text it asks nothing).
struct Colours {
    QRgb window, base, alternateBase, button, toolTip;
    QRgb text, disabledText, placeholder, brightText;
    QRgb highlight, highlightedText, inactiveHighlight, disabledHighlight;
    QRgb link, visitedLink;
    QRgb light, midlight, mid, outline, shadow, disabledOutline;
};

constexpr Colours lightColours{
    .window = 0xFFF0F1F3,
    .base = 0xFFFFFFFF,
    .alternateBase = 0xFFF6F7F9,
    .button = 0xFFE6E8EB,
    .toolTip = 0xFFFFFBE6,
    .text = 0xFF1B1F24,
    .disabledText = 0xFF767C85,
    .placeholder = 0xFF5F6670,
    .brightText = 0xFFA3001B,
    .highlight = 0xFF1A5FB4,
    .highlightedText = 0xFFFFFFFF,
    .inactiveHighlight = 0xFF4A6A8F,
    .disabledHighlight = 0xFF5F6670,
    .link = 0xFF0B57B0,
    .visitedLink = 0xFF6F3FA0,
    .light = 0xFFFFFFFF,
    .midlight = 0xFFF7F8F9,
    .mid = 0xFFB5B9BF,
    .outline = 0xFF767C85,
    .shadow = 0xFF5C6168,
    .disabledOutline = 0xFFB5B9BF,
};

constexpr Colours darkColours{
    .window = 0xFF24272C,
    .base = 0xFF17191D,
    .alternateBase = 0xFF1E2126,
    .button = 0xFF33373E,
    .toolTip = 0xFF3A3F47,
    .text = 0xFFE8EAED,
    .disabledText = 0xFF8B9199,
    .placeholder = 0xFFA3A9B2,
    .brightText = 0xFFFF9DA6,
    .highlight = 0xFF8AB4F8,
    .highlightedText = 0xFF10141A,
    .inactiveHighlight = 0xFF9DB3D1,
    .disabledHighlight = 0xFF8B9199,
    .link = 0xFF8AB4F8,
    .visitedLink = 0xFFC8A8F5,
    .light = 0xFF4A4F57,
    .midlight = 0xFF3E434A,
    .mid = 0xFF1A1C20,
    .outline = 0xFF8B9199,
    .shadow = 0xFF0B0C0E,
    .disabledOutline = 0xFF565C65,
};

/// All texts keep 7:1 (WCAG 2.1 AAA), as outlines and the highlight do; disabled text keeps 4.5:1.
constexpr Colours lightHighContrast{
    .window = 0xFFFFFFFF,
    .base = 0xFFFFFFFF,
    .alternateBase = 0xFFFFFFFF,
    .button = 0xFFFFFFFF,
    .toolTip = 0xFFFFFFFF,
    .text = 0xFF000000,
    .disabledText = 0xFF6B6B6B,
    .placeholder = 0xFF4A4A4A,
    .brightText = 0xFF8B0000,
    .highlight = 0xFF00008B,
    .highlightedText = 0xFFFFFFFF,
    .inactiveHighlight = 0xFF00008B,
    .disabledHighlight = 0xFF4A4A4A,
    .link = 0xFF00008B,
    .visitedLink = 0xFF5B0A91,
    .light = 0xFFFFFFFF,
    .midlight = 0xFFFFFFFF,
    .mid = 0xFF000000,
    .outline = 0xFF000000,
    .shadow = 0xFF000000,
    .disabledOutline = 0xFF6B6B6B,
};

constexpr Colours darkHighContrast{
    .window = 0xFF000000,
    .base = 0xFF000000,
    .alternateBase = 0xFF000000,
    .button = 0xFF000000,
    .toolTip = 0xFF000000,
    .text = 0xFFFFFFFF,
    .disabledText = 0xFF8C8C8C,
    .placeholder = 0xFFB8B8B8,
    .brightText = 0xFFFFB3B3,
    .highlight = 0xFFFFE000,
    .highlightedText = 0xFF000000,
    .inactiveHighlight = 0xFFFFE000,
    .disabledHighlight = 0xFFB8B8B8,
    .link = 0xFF9EC9FF,
    .visitedLink = 0xFFE0B8FF,
    .light = 0xFFFFFFFF,
    .midlight = 0xFFFFFFFF,
    .mid = 0xFFFFFFFF,
    .outline = 0xFFFFFFFF,
    .shadow = 0xFFFFFFFF,
    .disabledOutline = 0xFF8C8C8C,
};

void setGroup(QPalette& palette, QPalette::ColorGroup group, const Colours& colours)
{
    const bool disabled = group == QPalette::Disabled;
    const QRgb text = disabled ? colours.disabledText : colours.text;
    const QRgb highlight = disabled                      ? colours.disabledHighlight
                           : group == QPalette::Inactive ? colours.inactiveHighlight
                                                         : colours.highlight;
    const auto set = [&](QPalette::ColorRole role, QRgb colour) {
        palette.setColor(group, role, QColor::fromRgb(colour));
    };
    set(QPalette::Window, colours.window);
    set(QPalette::WindowText, text);
    // A disabled field takes the window's colour: nothing can be typed there.
    set(QPalette::Base, disabled ? colours.window : colours.base);
    set(QPalette::AlternateBase, colours.alternateBase);
    set(QPalette::Text, text);
    set(QPalette::PlaceholderText, disabled ? colours.disabledText : colours.placeholder);
    set(QPalette::BrightText, colours.brightText);
    set(QPalette::Button, disabled ? colours.window : colours.button);
    set(QPalette::ButtonText, text);
    set(QPalette::ToolTipBase, colours.toolTip);
    set(QPalette::ToolTipText, colours.text);
    set(QPalette::Highlight, highlight);
    set(QPalette::HighlightedText, colours.highlightedText);
    set(QPalette::Link, disabled ? colours.disabledText : colours.link);
    set(QPalette::LinkVisited, disabled ? colours.disabledText : colours.visitedLink);
    set(QPalette::Light, colours.light);
    set(QPalette::Midlight, colours.midlight);
    set(QPalette::Mid, colours.mid);
    set(QPalette::Dark, disabled ? colours.disabledOutline : colours.outline);
    set(QPalette::Shadow, colours.shadow);
}

QPalette makePalette(const Colours& colours)
{
    QPalette palette;
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        setGroup(palette, group, colours);
    return palette;
}

class OutlineStyle final : public QProxyStyle
{
public:
    OutlineStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        const bool focused = (option->state & State_HasFocus) != 0;
        const QPalette& palette = option->palette;
        const QColor outline = palette.color(focused ? QPalette::Highlight : QPalette::Dark);
        switch (element) {
        case PE_IndicatorCheckBox:
            // The style draws the focus around the box's text.
            drawOutline(*option, *painter, palette.color(QPalette::Dark), 1.0, 0.0);
            break;
        case PE_FrameLineEdit:
        case PE_PanelButtonCommand:
            drawOutline(*option, *painter, outline, focused ? 2.0 : 1.0, cornerRadius);
            break;
        case PE_FrameFocusRect:
            // A box that was reached by its letter, too, which is no change of the focus to the toolkit.
            if ((option->state & State_KeyboardFocusChange) || qobject_cast<const QCheckBox*>(widget))
                drawOutline(*option, *painter, palette.color(QPalette::Highlight), 1.0, cornerRadius);
            break;
        case PE_Frame:
            drawOutline(*option, *painter,
                        focused ? outline : palette.color(QPalette::Disabled, QPalette::Dark), 1.0, 0.0);
            break;
        case PE_PanelMenu:
            drawOutline(*option, *painter, palette.color(QPalette::Dark), 1.0, 0.0);
            break;
        default:
            break;
        }
    }

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override
    {
        // A menu's disabled words twice, once lighter, are read worse, and look enabled on a dark ground.
        return hint == SH_EtchDisabledText ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override
    {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        const auto* const bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        // Where there is nothing to scroll the slider says nothing.
        if (control != CC_ScrollBar || !bar || bar->minimum == bar->maximum)
            return;
        QStyleOption slider(*option);
        slider.rect = subControlRect(control, option, SC_ScrollBarSlider, widget);
        drawOutline(slider, *painter, option->palette.color(QPalette::Dark), 1.0, 0.0);
    }

    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override
    {
        const QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
        return type == CT_PushButton ? size + QSize(buttonPadding, 0) : size;
    }

private:
    // Fusion's own corners, which are painted over.
    static constexpr qreal cornerRadius = 2.0;
    static constexpr int buttonPadding = 12;

    static void drawOutline(const QStyleOption& option, QPainter& painter, const QColor& colour, qreal width,
                            qreal radius)
    {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing, radius > 0);
        painter.setPen(QPen(colour, width));
        painter.setBrush(Qt::NoBrush);
        const qreal inset = width / 2;
        painter.drawRoundedRect(QRectF(option.rect).adjusted(inset, inset, -inset, -inset), radius, radius);
        painter.restore();
    }
};

QString darkName()
{
    return QStringLiteral("NSAppearanceNameDarkAqua");
}

QString lightName()
{
    return QStringLiteral("NSAppearanceNameAqua");
}

} // namespace

Appearance darkAppearnace()
{
    return {darkName(), makePalette(darkColours)};
}

Appearance lightAppearnace()
{
    return {lightName(), makePalette(lightColours)};
}

Appearance desiredAppearanceObject(bool dark, Contrast contrast)
{
    const bool high = contrast == Contrast::high;
    if (dark)
        return {darkName(), makePalette(high ? darkHighContrast : darkColours)};
    return {lightName(), makePalette(high ? lightHighContrast : lightColours)};
}

Contrast contrastOf(const QPalette& desktop)
{
    const QRgb text = desktop.color(QPalette::WindowText).rgb();
    const QRgb window = desktop.color(QPalette::Window).rgb();
    constexpr QRgb black = 0xFF000000;
    constexpr QRgb white = 0xFFFFFFFF;
    return (text == black && window == white) || (text == white && window == black) ? Contrast::high
                                                                                    : Contrast::normal;
}

std::unique_ptr<QStyle> makeStyle()
{
    return std::make_unique<OutlineStyle>();
}

} // namespace spotwell
