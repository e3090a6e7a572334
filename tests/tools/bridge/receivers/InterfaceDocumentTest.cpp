// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/receivers/InterfaceDocument.h"

#include "tests/tools/bridge/receivers/LoggerFixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using Interfaces = QMap<QString, QStringList>;

const Interfaces loggerInterfaces{
    {u"com.tarnbrooksoftware.Application"_s,
     {u"property DisplayName s read"_s, u"property Version s read"_s}},
    {u"com.tarnbrooksoftware.Scripting"_s, {u"method processSpot s "_s}},
};

class InterfaceDocumentTest : public LoggerFixture
{
protected:
    /// What a logger on the bus answers to Introspect.
    Interfaces introspect(const QString& busName)
    {
        const auto answer = run(u"busctl --user --json=short call "_s + busName +
                                u" /com/tarnbrooksoftware/Application org.freedesktop.DBus.Introspectable "
                                "Introspect"_s);
        const auto json = QJsonDocument::fromJson(QByteArray::fromStdString(answer));
        return interfaces(json[u"data"_s][0].toString());
    }
};

TEST_F(InterfaceDocumentTest, DescribesWhatALoggerExports)
{
    EXPECT_EQ(interfaces(codeBlocks(u"Introspection"_s).value(0)), loggerInterfaces);
}

TEST_F(InterfaceDocumentTest, EveryReceiverExportsIt)
{
    const QString prefix = u"com.tarnbrooksoftware.Application."_s;
    const QPair<QString, QString> loggers[] = {
        {u"spotwell-bridge"_s, u"Logwright"_s},
        {QStringLiteral(QTDBUS_RECEIVER), u"QtReceiver"_s},
        {QStringLiteral(EXAMPLES "/python-receiver/receiver.py"), u"PythonReceiver"_s},
    };
    for (const auto& [command, name] : loggers) {
        const auto logger = start(command);
        ASSERT_TRUE(waitUntil([this] { return applications.runningApplications().size() == 1; }));
        EXPECT_EQ(introspect(prefix + name), loggerInterfaces) << name.toStdString();
        logger->signal(SIGKILL);
        logger->wait();
        ASSERT_TRUE(waitUntil([this] { return applications.runningApplications().empty(); }));
    }
}

TEST_F(InterfaceDocumentTest, DescribesWhatSpotwellEmits)
{
    const auto monitor = start(commands(codeBlocks(u"Receivers to start from"_s).value(2)).value(0));
    ASSERT_EQ(monitor->readLine(), "Monitoring bus message stream.");
    deliverSpot();
    const auto message =
        QJsonDocument::fromJson(QByteArray::fromStdString(monitor->readLine().value_or(""))).object();
    const QString member = message[u"member"_s].toString();
    const QString types = message[u"payload"_s][u"type"_s].toString();
    const Interfaces emitted{{message[u"interface"_s].toString(), {u"signal %1 %2"_s.arg(member, types)}}};
    EXPECT_EQ(interfaces(codeBlocks(u"Introspection"_s).value(1)), emitted);
    EXPECT_EQ(message[u"path"_s].toString(), u"/com/tarnbrooksoftware/DistributedNotifications"_s);
}

} // namespace

} // namespace spotwell
