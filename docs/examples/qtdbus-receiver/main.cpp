// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// A logger's receiving side, whole, on QtDBus: it shows itself to spotwell, takes both notifications and the
// command processSpot, and prints each as a line of JSON.
//
//   qtdbus-receiver [VERSION]    with a version below 6.45 cluster lines come by processSpot

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusError>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariantMap>

#include <cmath>
#include <cstdio>

namespace
{

// Any name will do that begins so: with one of its own a logger is in nobody's way.
const auto busName = QStringLiteral("com.tarnbrooksoftware.Application.QtReceiver");
const auto objectPath = QStringLiteral("/com/tarnbrooksoftware/Application");
const auto notificationsPath = QStringLiteral("/com/tarnbrooksoftware/DistributedNotifications");
const auto notificationsInterface = QStringLiteral("com.tarnbrooksoftware.DistributedNotifications");
const auto spotName = QStringLiteral("com.tarnbrooksoftware.spotwell_spot");
const auto lineName = QStringLiteral("com.tarnbrooksoftware.spotwell_line");

// Everything below runs in the main thread. A real logger only notes here what came and returns: the next
// message waits until then.
void print(const QString& kind, const QJsonObject& content)
{
    std::puts(QJsonDocument(QJsonObject{{kind, content}}).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

QString isoTime(qint64 microseconds)
{
    const qint64 seconds = microseconds / 1000000 - (microseconds % 1000000 < 0 ? 1 : 0);
    const qint64 fraction = (microseconds % 1000000 + 1000000) % 1000000;
    return QDateTime::fromSecsSinceEpoch(seconds).toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.")) +
           QStringLiteral("%1Z").arg(fraction, 6, 10, QLatin1Char('0'));
}

// A dictionary's entries of the three types there are; anything else is passed over.
QJsonObject known(const QVariantMap& information)
{
    QJsonObject result;
    for (auto entry = information.begin(); entry != information.end(); ++entry) {
        const int type = entry->userType();
        if (type == QMetaType::QString)
            result.insert(entry.key(), entry->toString());
        else if (type == QMetaType::Double && std::isfinite(entry->toDouble()))
            result.insert(entry.key(), entry->toDouble());
        else if (type == QMetaType::LongLong)
            result.insert(entry.key(), isoTime(entry->toLongLong()));
    }
    return result;
}

} // namespace

// What spotwell reads to find its logger.
class ApplicationAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.tarnbrooksoftware.Application")
    Q_PROPERTY(QString DisplayName READ displayName CONSTANT)
    Q_PROPERTY(QString Version READ version CONSTANT)

public:
    ApplicationAdaptor(QObject* logger, const QString& version)
        : QDBusAbstractAdaptor(logger), version_(version)
    {
    }
    QString displayName() const { return QStringLiteral("Logwright"); }
    QString version() const { return version_; }

private:
    const QString version_;
};

// The command, which only a logger of a version below 6.45 gets.
class ScriptingAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.tarnbrooksoftware.Scripting")

public:
    explicit ScriptingAdaptor(QObject* logger) : QDBusAbstractAdaptor(logger) {}

public Q_SLOTS:
    void processSpot(const QString& line) { print(QStringLiteral("command"), {{"line", line}}); }
};

class Logger : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void posted(const QString& name, const QString&, const QVariantMap& information)
    {
        print(name == spotName ? QStringLiteral("spot") : QStringLiteral("line"), known(information));
    }
};

int fail(const QString& why)
{
    std::fprintf(stderr, "qtdbus-receiver: %s\n", qPrintable(why));
    return 1;
}

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QDBusConnection bus = QDBusConnection::sessionBus();
    Logger logger;
    new ApplicationAdaptor(&logger, QCoreApplication::arguments().value(1, QStringLiteral("6.45")));
    new ScriptingAdaptor(&logger);

    bool works = bus.registerObject(objectPath, &logger, QDBusConnection::ExportAdaptors);
    // With the signature given, signals of another shape never reach the slot.
    for (const QString& name : {spotName, lineName})
        works = works &&
                bus.connect({}, notificationsPath, notificationsInterface, QStringLiteral("Posted"), {name},
                            QStringLiteral("ssa{sv}"), &logger, SLOT(posted(QString, QString, QVariantMap)));
    if (!works)
        return fail(bus.lastError().message());
    // The name comes last: whoever sees it finds everything in place.
    if (!bus.registerService(busName))
        return fail(QStringLiteral("the bus name %1 is taken").arg(busName));
    print(QStringLiteral("ready"), {{"name", busName}});
    return QCoreApplication::exec();
}

#include "main.moc"
