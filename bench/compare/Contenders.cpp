// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Contenders.h"

#include <QDir>
#include <QFile>

#include <stdexcept>

namespace spotwell::bench
{

namespace
{

constexpr char callsign[] = "N0CALL";
constexpr char klogTitle[] = "^KLog-.* - Logbook of";

void write(const QString& path, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

void copy(const QString& from, const QString& to)
{
    QDir().mkpath(QFileInfo(to).path());
    if (!QFile::copy(from, to))
        throw std::runtime_error("cannot copy " + from.toStdString());
}

Contender spotwell(const QString& programs)
{
    Contender contender;
    contender.name = QStringLiteral("spotwell");
    contender.title = QStringLiteral("^spotwell$");
    contender.prepare = [](const PrivateDesktop& desktop, std::uint16_t port) {
        desktop.writeSettings(port);
    };
    contender.command = [programs](std::uint16_t) {
        return QStringList{programs + QStringLiteral("/spotwell")};
    };
    contender.delivers = true;
    return contender;
}

Contender bareWindow(const QString& programs)
{
    Contender contender;
    contender.name = QStringLiteral("bare Qt window");
    contender.title = QStringLiteral("^bare window$");
    contender.command = [programs](std::uint16_t) {
        return QStringList{programs + QStringLiteral("/spotwell-bench-bare-window")};
    };
    contender.connects = false;
    return contender;
}

Contender xdx()
{
    Contender contender;
    contender.name = QStringLiteral("xdx");
    contender.title = QStringLiteral("^xdx");
    contender.prepare = [](const PrivateDesktop& desktop, std::uint16_t port) {
        write(desktop.home() + QStringLiteral("/.xdx/preferences"),
              "version 2.91\nwidth " + QByteArray::number(windowWidth) + "\nheight " +
                  QByteArray::number(windowHeight) + "\nautologin 1\ncallsign " + callsign +
                  "\nsavedx 0\nsavetoall 0\n");
        write(desktop.home() + QStringLiteral("/.xdx/history"),
              "ho:127.0.0.1\npo:" + QByteArray::number(port) + '\n');
    };
    contender.command = [](std::uint16_t) { return QStringList{QStringLiteral("xdx")}; };
    contender.connect = [title = contender.title](const Hands& hands) {
        hands.press(hands.window(title), {QStringLiteral("ctrl+o")});
        hands.press(hands.window(QStringLiteral("^Xdx - Open connection$")), {QStringLiteral("alt+o")});
    };
    return contender;
}

Contender klog(const QString& klogHome)
{
    // Where KLog has these in a window of its own choice of size at the upper left of the screen.
    constexpr int tabX = 105;
    constexpr int tabY = 453;
    constexpr int connectX = 963;
    constexpr int connectY = 627;

    Contender contender;
    contender.name = QStringLiteral("KLog");
    contender.title = QString::fromLatin1(klogTitle);
    contender.prepare = [klogHome](const PrivateDesktop& desktop, std::uint16_t port) {
        copy(klogHome + QStringLiteral("/.klog/logbook.dat"),
             desktop.home() + QStringLiteral("/.klog/logbook.dat"));
        copy(klogHome + QStringLiteral("/.klog/cty.csv"), desktop.home() + QStringLiteral("/.klog/cty.csv"));
        write(desktop.home() + QStringLiteral("/.klog/klogrc"),
              "Callsign=" + QByteArray(callsign) +
                  "\nDXClusterServerToUse=127.0.0.1:" + QByteArray::number(port) + ";\n");
    };
    contender.command = [](std::uint16_t) { return QStringList{QStringLiteral("klog")}; };
    contender.connect = [title = contender.title](const Hands& hands) {
        (void)hands.window(title);
        const QString message = QStringLiteral("^KLog - Stop");
        hands.press(hands.window(message), {QStringLiteral("Return")});
        hands.waitUntilGone(message);
        hands.click(tabX, tabY);
        hands.click(connectX, connectY);
    };
    contender.giveCallsign = [](const Hands& hands) {
        const QString question = QStringLiteral("^KLog message$");
        const QString forCallsign = hands.window(question);
        hands.enter(forCallsign, QString::fromLatin1(callsign));
        const QString forPassword = hands.anotherWindow(question, forCallsign);
        hands.enter(forPassword, {});
    };
    return contender;
}

Contender ncInXterm()
{
    Contender contender;
    contender.name = QStringLiteral("nc in xterm");
    contender.title = QStringLiteral("^nc$");
    contender.command = [](std::uint16_t port) {
        return QStringLiteral("xterm -T nc -geometry 160x50 -e nc 127.0.0.1 %1")
            .arg(port)
            .split(QLatin1Char(' '));
    };
    contender.giveCallsign = [title = contender.title](const Hands& hands) {
        hands.enter(hands.window(title), QString::fromLatin1(callsign));
    };
    return contender;
}

} // namespace

QProcessEnvironment environmentOn(const PrivateDesktop& desktop)
{
    QProcessEnvironment environment = desktop.environment();
    // KLog complains at other languages' lack of a translation, GTK at a missing service.
    environment.insert(QStringLiteral("LANG"), QStringLiteral("en_US.UTF-8"));
    environment.insert(QStringLiteral("LC_CTYPE"), QStringLiteral("C.UTF-8"));
    environment.remove(QStringLiteral("LC_ALL"));
    environment.insert(QStringLiteral("NO_AT_BRIDGE"), QStringLiteral("1"));
    return environment;
}

std::vector<Contender> contenders(const QString& programs, const QString& klogHome)
{
    return {spotwell(programs), bareWindow(programs), xdx(), klog(klogHome), ncInXterm()};
}

void makeKlogHome(const QString& home)
{
    copy(QStringLiteral("/usr/share/hamradio-files/cty.csv"), home + QStringLiteral("/.klog/cty.csv"));
    write(home + QStringLiteral("/.klog/klogrc"), "Callsign=" + QByteArray(callsign) + '\n');
    PrivateDesktop desktop;
    desktop.startBus();
    desktop.startDisplay();
    QProcessEnvironment environment = environmentOn(desktop);
    environment.insert(QStringLiteral("HOME"), home);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("klog"), QStringList());
    // Before its splash screen it says that it has found the list of countries, and waits for an answer.
    const Hands hands(environment);
    const QString title = QStringLiteral("^KLog$");
    const QString splash = hands.window(title);
    const QString message = hands.anotherWindow(title, splash);
    hands.press(message, {QStringLiteral("Return")});
    (void)hands.window(QString::fromLatin1(klogTitle));
    end(process);
}

} // namespace spotwell::bench
