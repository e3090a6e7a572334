// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/PrivateDesktop.h"

#include <QDir>
#include <QFile>

#include <stdexcept>
#include <sys/mman.h>

namespace spotwell::bench
{

namespace
{

constexpr int patienceMilliseconds = 20'000;
constexpr auto screenSize = "1280x1024x24";
// Of the screen's contents that are looked at: a prime, so that no column is left out.
constexpr qint64 wordsApart = 509;

void write(const QString& path, const QByteArray& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

} // namespace

PrivateDesktop::PrivateDesktop()
{
    if (!directory_.isValid())
        throw std::runtime_error("no temporary directory");
    QDir(directory_.path()).mkpath(QStringLiteral("config/tarnbrooksoftware"));
}

PrivateDesktop::~PrivateDesktop()
{
    if (screen_ != nullptr)
        ::munmap(const_cast<quint64*>(screen_), static_cast<std::size_t>(screenBytes_));
    end(display_);
    end(bus_);
}

QString PrivateDesktop::path(const char* name) const
{
    return directory_.filePath(QString::fromLatin1(name));
}

std::string PrivateDesktop::busAddress() const
{
    return "unix:path=" + path("bus").toStdString();
}

void PrivateDesktop::startBus()
{
    // No services: nothing is started that the benchmark does not start itself.
    write(path("bus.conf"),
          "<!DOCTYPE busconfig PUBLIC '-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN' "
          "'http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd'>\n"
          "<busconfig><type>session</type><listen>" +
              QByteArray::fromStdString(busAddress()) +
              "</listen><auth>EXTERNAL</auth><policy context='default'>"
              "<allow send_destination='*' eavesdrop='true'/><allow eavesdrop='true'/><allow own='*'/>"
              "</policy></busconfig>\n");
    bus_.start(QStringLiteral("dbus-daemon"),
               {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"), QStringLiteral("--print-address"),
                QStringLiteral("--config-file=") + path("bus.conf")});
    if (lineOf(bus_).isEmpty())
        throw std::runtime_error("dbus-daemon does not start");
}

void PrivateDesktop::startDisplay()
{
    display_.setStandardErrorFile(QProcess::nullDevice());
    display_.start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), QString::fromLatin1(screenSize), QStringLiteral("-nolisten"),
                    QStringLiteral("tcp"), QStringLiteral("-fbdir"), directory_.path()});
    displayName_ = ':' + lineOf(display_);
    QFile screen(path("Xvfb_screen0"));
    if (displayName_.size() < 2 || !screen.open(QIODevice::ReadOnly))
        throw std::runtime_error("Xvfb does not start");
    screenBytes_ = screen.size();
    void* const mapped =
        ::mmap(nullptr, static_cast<std::size_t>(screenBytes_), PROT_READ, MAP_SHARED, screen.handle(), 0);
    if (mapped == MAP_FAILED)
        throw std::runtime_error("no view of the screen");
    screen_ = static_cast<const quint64*>(mapped);
}

QProcessEnvironment PrivateDesktop::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const auto set = [&environment](const char* name, const QString& value) {
        environment.insert(QString::fromLatin1(name), value);
    };
    set("HOME", directory_.path());
    set("XDG_CONFIG_HOME", path("config"));
    set("XDG_STATE_HOME", path("state"));
    set("XDG_RUNTIME_DIR", directory_.path());
    set("DBUS_SESSION_BUS_ADDRESS", QString::fromStdString(busAddress()));
    set("DISPLAY", QString::fromLatin1(displayName_));
    set("QT_QPA_PLATFORM", QStringLiteral("xcb"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    return environment;
}

void PrivateDesktop::writeSettings(int port) const
{
    write(path("config/tarnbrooksoftware/spotwell.conf"),
          "[General]\ndxcluster=127.0.0.1\nport=" + QByteArray::number(port) +
              "\ncallsign=N0CALL\npassword=\nreconnect=true\n");
}

void PrivateDesktop::keepPicture(const QString& picture) const
{
    write(picture, QByteArray(reinterpret_cast<const char*>(screen_), static_cast<qsizetype>(screenBytes_)));
}

qint64 PrivateDesktop::litPixels() const
{
    constexpr qint64 pixelsInWord = 2;
    constexpr quint64 colours = 0x00ff'ffff'00ff'ffff;
    qint64 lit = 0;
    for (qint64 i = 0; i < screenWords(); i += wordsApart)
        lit += (word(i) & colours) != 0 ? wordsApart * pixelsInWord : 0;
    return lit;
}

quint64 PrivateDesktop::screenSum() const
{
    quint64 sum = 0;
    for (qint64 i = 0; i < screenWords(); i += wordsApart)
        sum += word(i);
    return sum;
}

QByteArray lineOf(QProcess& process)
{
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(patienceMilliseconds))
            return {};
    }
    return process.readLine().trimmed();
}

void end(QProcess& process)
{
    constexpr int endMilliseconds = 5000;
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(endMilliseconds)) {
        process.kill();
        process.waitForFinished();
    }
}

} // namespace spotwell::bench
