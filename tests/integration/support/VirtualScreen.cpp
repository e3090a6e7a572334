// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/VirtualScreen.h"

#include <QFile>
#include <QtEndian>

#include <cstring>
#include <stdexcept>

namespace spotwell
{

VirtualScreen::VirtualScreen()
{
    server_.emplace(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24",
                                             "-fbdir", directory_.path().toStdString(), "-noreset",
                                             "-nolisten", "tcp"});
    const auto number = server_->readLine();
    if (!number || number->empty())
        throw std::runtime_error("Xvfb does not start");
    display_ = QLatin1Char(':') + QString::fromStdString(*number);
}

VirtualScreen::~VirtualScreen()
{
    // Ended in order, it takes its lock file with it.
    server_->signal(SIGTERM);
    server_->signal(SIGCONT);
    server_->wait();
}

QImage VirtualScreen::picture() const
{
    // The X window dump format, version 7 (X11/XWDFile.h): big-endian 32-bit words, then the colours of 12
    // bytes each, then the pixels.
    enum Word { headerSize = 0, width = 4, height = 5, bitsPerPixel = 11, bytesPerLine = 12, colours = 19 };
    constexpr qsizetype words = 25;
    QFile file(filePath(QStringLiteral("Xvfb_screen0")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray dump = file.readAll();
    if (dump.size() < words * 4)
        return {};
    const auto word = [&dump](Word which) {
        return static_cast<qsizetype>(qFromBigEndian<quint32>(dump.constData() + 4 * which));
    };
    const qsizetype pixels = word(headerSize) + 12 * word(colours);
    if (word(bitsPerPixel) != 32 || dump.size() < pixels + word(height) * word(bytesPerLine))
        return {};
    QImage image(static_cast<int>(word(width)), static_cast<int>(word(height)), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(image.scanLine(y), dump.constData() + pixels + y * word(bytesPerLine),
                    static_cast<std::size_t>(image.width()) * 4);
    return image;
}

} // namespace spotwell
