// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Images.h"

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPixmap>

#include <initializer_list>

// Drawn here rather than read from files: for the first file, Qt would load each of its plugins for images
// and the libraries of each. For the same reason without angles: sines alone bring 240 KiB into memory.

namespace spotwell
{

namespace
{

/// Draws around the point of origin, within 12 units to each side.
using Drawing = void (*)(QPainter&);

// What drawArc() and its like count in.
constexpr int degree = 16;

QRectF around(QPointF centre, qreal width, qreal height)
{
    return {centre.x() - width / 2, centre.y() - height / 2, width, height};
}

QPen roundPen(QRgb colour, qreal width)
{
    return {QColor(colour), width, Qt::SolidLine, Qt::RoundCap};
}

/// A gleam on a ball, from its left upwards to its top.
void drawGleam(QPainter& painter, const QPen& pen, qreal radius)
{
    QPainterPath gleam(QPointF(-radius, -0.6));
    gleam.quadTo(QPointF(-0.8 * radius, -0.8 * radius), QPointF(-0.1, -radius));
    painter.strokePath(gleam, pen);
}

void drawGreenBall(QPainter& painter)
{
    constexpr QRgb rim = 0xFF1A8F3C;
    constexpr qreal diagonal = 0.7071;
    painter.setPen(roundPen(rim, 2.0));
    for (const QPointF& direction :
         {QPointF(0, 1), QPointF(1, 0), QPointF(diagonal, diagonal), QPointF(diagonal, -diagonal)}) {
        painter.drawLine(direction * 10.6, direction * 8.2);
        painter.drawLine(direction * -10.6, direction * -8.2);
    }
    painter.setPen(QPen(QColor(rim), 1.4));
    painter.setBrush(QColor(0xFF2FB457));
    painter.drawEllipse(QPointF(), 6.2, 6.2);
    drawGleam(painter, roundPen(0xFFE6F8EB, 1.5), 3.2);
}

void drawGreyBall(QPainter& painter)
{
    constexpr QRgb grey = 0xFF7F868F;
    painter.setPen(QPen(QColor(grey), 2.0));
    painter.drawEllipse(QPointF(), 6.6, 6.6);
    drawGleam(painter, roundPen(grey, 1.3), 2.8);
}

/// A spot that falls into a well: a full dot above the rings it makes.
void drawSpotwell(QPainter& painter)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xFF15395C));
    painter.drawRoundedRect(around({}, 22.5, 22.5), 5.25, 5.25);
    painter.setBrush(QColor(0xFFFFC63D));
    painter.drawEllipse(QPointF(0, -4.9), 3.4, 3.4);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(roundPen(0xFFFFFFFF, 1.9));
    painter.drawArc(around({0, 1.1}, 10.5, 4.5), 180 * degree, 180 * degree);
    painter.setPen(roundPen(0xFF8FD0FF, 1.9));
    painter.drawArc(around({0, 3.4}, 16.5, 8.25), 180 * degree, 180 * degree);
}

QIcon drawn(Drawing draw, std::initializer_list<int> sizes)
{
    QIcon icon;
    for (const int size : sizes) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(size / 2.0, size / 2.0);
        painter.scale(size / 24.0, size / 24.0);
        draw(painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

QIcon imageNamed(const QString& name)
{
    if (name == QLatin1String("green_ball"))
        return drawn(drawGreenBall, {22, 44});
    if (name == QLatin1String("gray_ball"))
        return drawn(drawGreyBall, {22, 44});
    if (name == QLatin1String("spotwell"))
        return drawn(drawSpotwell, {32, 64});
    return {};
}

} // namespace spotwell
