// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Endpoints.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;

/// How an address to listen on was understood; "none" when it was not.
QString listenAddress(const QString& text)
{
    const auto read = readListenAddress(text);
    return read ? endpointText(read->address, read->port) : u"none"_s;
}

QString target(const QString& text)
{
    const auto read = readTarget(text);
    return read ? read->host + u'|' + QString::number(read->port) : u"none"_s;
}

TEST(Endpoints, ReadsWhereToListen)
{
    const struct {
        const char16_t* text;
        const char16_t* understood;
    } table[] = {
        {u"7373", u"127.0.0.1:7373"},
        {u"0", u"127.0.0.1:0"},
        {u"65535", u"127.0.0.1:65535"},
        {u"65536", u"none"},
        {u"127.0.0.1:7300", u"127.0.0.1:7300"},
        {u"0.0.0.0:7300", u"0.0.0.0:7300"},
        {u"localhost:7373", u"127.0.0.1:7373"},
        {u"LocalHost:7373", u"127.0.0.1:7373"},
        {u"[::1]:7373", u"[::1]:7373"},
        {u"[::]:0", u"[::]:0"},
        {u"", u"none"},
        {u":", u"none"},
        {u":7373", u"none"},
        {u"127.0.0.1", u"none"},
        {u"127.0.0.1:", u"none"},
        {u"127.0.0.1:x", u"none"},
        {u"127.0.0.1:+1", u"none"},
        {u"127.0.0.1: 1", u"none"},
        {u"-1", u"none"},
        {u"0x10", u"none"},
        {u"127.1:7373", u"none"},
        {u"7300:7373", u"none"},
        {u"256.0.0.1:7373", u"none"},
        {u"::1:7373", u"none"},
        {u"[127.0.0.1]:7373", u"none"},
        {u"[::1]", u"none"},
        {u"node.example:7373", u"none"},
    };
    for (const auto& row : table)
        EXPECT_EQ(listenAddress(QString::fromUtf16(row.text)), QString::fromUtf16(row.understood));
}

TEST(Endpoints, ReadsWhereToSend)
{
    const QString longName(253, u'a');
    const struct {
        QString text;
        QString understood;
    } table[] = {
        {u"127.0.0.1:12060"_s, u"127.0.0.1|12060"_s},
        {u"255.255.255.255:1"_s, u"255.255.255.255|1"_s},
        {u"[::1]:12060"_s, u"::1|12060"_s},
        {u"shack.example:65535"_s, u"shack.example|65535"_s},
        {u"my_log-1:1"_s, u"my_log-1|1"_s},
        {longName + u":1"_s, longName + u"|1"_s},
        {longName + u"a:1"_s, u"none"_s},
        {u"shack.example"_s, u"none"_s},
        {u"shack.example:0"_s, u"none"_s},
        {u"shack.example:65536"_s, u"none"_s},
        {u"shack.example:"_s, u"none"_s},
        {u":12060"_s, u"none"_s},
        {u"12060"_s, u"none"_s},
        {u"127.1:12060"_s, u"none"_s},
        {u"::1:12060"_s, u"none"_s},
        {u"a b:12060"_s, u"none"_s},
        {u""_s, u"none"_s},
    };
    for (const auto& row : table)
        EXPECT_EQ(target(row.text), row.understood) << row.text.toStdString();
}

} // namespace

} // namespace spotwell::bridge
