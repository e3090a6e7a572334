// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// A peer on QtDBus. Commands come as lines on standard input, each answered by "ok"; what it sees goes to
// standard output. Fields are percent-encoded and separated by tabs.
//
//   sync                       nothing
//   own NAME, release NAME     takes a bus name (from whoever has it), gives it back
//   text KEY VALUE             a property of com.tarnbrooksoftware.Application
//   number KEY VALUE           the same with a double
//   fail NAME TEXT             every call is answered with this error from now on; an empty name ends that
//   hold                       calls other than GetAll are not answered from now on
//   setting KEY TYPE VALUE     what the settings portal tells of "NAMESPACE KEY"; "u" a number, "b" a Boolean
//   listen NAME                tells of notifications of this name
//
// Seen: "GetAll INTERFACE", "call INTERFACE MEMBER SIGNATURE ARGUMENT...", and
// "signal PATH INTERFACE MEMBER SIGNATURE NAME OBJECT KEY=TYPE:VALUE...".

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QLocale>
#include <QSocketNotifier>
#include <QUrl>

#include <array>
#include <cstdio>
#include <unistd.h>

namespace
{

void tell(const QStringList& fields)
{
    QByteArrayList encoded;
    for (const QString& field : fields)
        encoded.append(QUrl::toPercentEncoding(field));
    std::puts(encoded.join('\t').constData());
    std::fflush(stdout);
}

QString describe(const QVariant& value)
{
    const QString type = QString::fromLatin1(value.metaType().name());
    return type + QStringLiteral(":") +
           (value.metaType().id() == QMetaType::Double
                ? QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest)
                : value.toString());
}

} // namespace

class Peer final : public QDBusVirtualObject
{
    Q_OBJECT

public:
    explicit Peer(const QString& address)
        : bus_(QDBusConnection::connectToBus(address, QStringLiteral("peer")))
    {
        for (const QString& path : {QStringLiteral("/com/tarnbrooksoftware/Application"),
                                    QStringLiteral("/org/freedesktop/FileManager1"),
                                    QStringLiteral("/org/freedesktop/portal/desktop")})
            bus_.registerVirtualObject(path, this, QDBusConnection::SingleNode);
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const bool asksAll = message.member() == QStringLiteral("GetAll");
        QStringList seen{asksAll ? message.member() : QStringLiteral("call")};
        if (!asksAll)
            seen << message.interface() << message.member() << message.signature();
        for (const QVariant& argument : message.arguments())
            seen << argument.toStringList();
        tell(seen);
        if (!failure_.isEmpty())
            return connection.send(message.createErrorReply(failure_, failureText_));
        if (asksAll)
            return connection.send(message.createReply(properties_));
        if (message.member() == QStringLiteral("Read") && !holds_)
            return connection.send(setting(message));
        return holds_ || connection.send(message.createReply());
    }

    void run(const QStringList& command)
    {
        const QString& what = command.first();
        const QString first = command.value(1);
        const QString second = command.value(2);
        if (what == QStringLiteral("own"))
            bus_.interface()->registerService(first, QDBusConnectionInterface::ReplaceExistingService,
                                              QDBusConnectionInterface::AllowReplacement);
        else if (what == QStringLiteral("release"))
            bus_.interface()->unregisterService(first);
        else if (what == QStringLiteral("text"))
            properties_.insert(first, second);
        else if (what == QStringLiteral("number"))
            properties_.insert(first, second.toDouble());
        else if (what == QStringLiteral("fail"))
            failure_ = first, failureText_ = second;
        else if (what == QStringLiteral("hold"))
            holds_ = true;
        else if (what == QStringLiteral("setting"))
            settings_.insert(first, second == QStringLiteral("b")
                                        ? QVariant(command.value(3) == QStringLiteral("true"))
                                        : QVariant(command.value(3).toUInt()));
        else if (what == QStringLiteral("listen"))
            bus_.connect({}, {}, QStringLiteral("com.tarnbrooksoftware.DistributedNotifications"),
                         QStringLiteral("Posted"), {first}, {}, this, SLOT(posted(QDBusMessage)));
        // Whatever the command sent, the bus has it once it answers this.
        bus_.call(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
        tell({QStringLiteral("ok")});
    }

public Q_SLOTS:
    void posted(const QDBusMessage& message)
    {
        const QList<QVariant> arguments = message.arguments();
        QStringList seen{QStringLiteral("signal"),     message.path(),
                         message.interface(),          message.member(),
                         message.signature(),          arguments.value(0).toString(),
                         arguments.value(1).toString()};
        const auto userInfo = arguments.value(2).value<QDBusArgument>();
        userInfo.beginMap();
        while (!userInfo.atEnd()) {
            QString key;
            QDBusVariant value;
            userInfo.beginMapEntry();
            userInfo >> key >> value;
            userInfo.endMapEntry();
            seen << key + QStringLiteral("=") + describe(value.variant());
        }
        userInfo.endMap();
        tell(seen);
    }

private:
    [[nodiscard]] QDBusMessage setting(const QDBusMessage& question) const
    {
        const QVariant value = settings_.value(question.arguments().value(0).toString() + QLatin1Char(' ') +
                                               question.arguments().value(1).toString());
        if (!value.isValid())
            return question.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                                             QStringLiteral("Requested setting not found"));
        // A variant in a variant, as portals have it.
        return question.createReply(
            QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(value)))));
    }

    QDBusConnection bus_;
    QVariantMap settings_;
    QVariantMap properties_;
    QString failure_;
    QString failureText_;
    bool holds_ = false;
};

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    Peer peer(QString::fromLocal8Bit(argv[1]));
    QByteArray buffer;
    QSocketNotifier notifier(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application, [&] {
        std::array<char, 4096> bytes{};
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count <= 0)
            return QCoreApplication::quit();
        buffer.append(bytes.data(), count);
        for (qsizetype end = buffer.indexOf('\n'); end >= 0; end = buffer.indexOf('\n')) {
            QStringList fields;
            for (const QByteArray& field : buffer.first(end).split('\t'))
                fields.append(QUrl::fromPercentEncoding(field));
            buffer.remove(0, end + 1);
            peer.run(fields);
        }
    });
    return QCoreApplication::exec();
}

#include "bus_peer.moc"
