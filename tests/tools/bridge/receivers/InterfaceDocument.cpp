// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/receivers/InterfaceDocument.h"

#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <stdexcept>

namespace spotwell
{

namespace
{

QString document()
{
    QFile file(QStringLiteral(INTERFACE_DOCUMENT));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(INTERFACE_DOCUMENT);
    return QString::fromUtf8(file.readAll());
}

QString attribute(const QXmlStreamReader& reader, const QString& name)
{
    return reader.attributes().value(name).toString();
}

/// Reads a method or a signal, whose start the reader stands on.
QString readCallable(QXmlStreamReader& reader)
{
    const bool isSignal = reader.name() == QStringLiteral("signal");
    const QString name = attribute(reader, QStringLiteral("name"));
    QString in;
    QString out;
    while (reader.readNextStartElement()) {
        const QString type = attribute(reader, QStringLiteral("type"));
        if (reader.name() == QStringLiteral("arg"))
            (attribute(reader, QStringLiteral("direction")) == QStringLiteral("in") ? in : out) += type;
        reader.skipCurrentElement();
    }
    return isSignal ? QStringLiteral("signal %1 %2").arg(name, out)
                    : QStringLiteral("method %1 %2 %3").arg(name, in, out);
}

QStringList readInterface(QXmlStreamReader& reader)
{
    QStringList members;
    while (reader.readNextStartElement()) {
        if (reader.name() == QStringLiteral("method") || reader.name() == QStringLiteral("signal")) {
            members << readCallable(reader);
            continue;
        }
        if (reader.name() == QStringLiteral("property"))
            members << QStringLiteral("property %1 %2 %3")
                           .arg(attribute(reader, QStringLiteral("name")),
                                attribute(reader, QStringLiteral("type")),
                                attribute(reader, QStringLiteral("access")));
        reader.skipCurrentElement();
    }
    members.sort();
    return members;
}

} // namespace

QStringList codeBlocks(const QString& heading)
{
    QStringList blocks;
    bool isInSection = false;
    bool isInBlock = false;
    for (const QString& line : document().split(u'\n')) {
        if (line.startsWith(QStringLiteral("```"))) {
            isInBlock = !isInBlock;
            if (isInBlock && isInSection)
                blocks << QString();
        } else if (isInBlock && isInSection) {
            blocks.last() += line + u'\n';
        } else if (!isInBlock && line.startsWith(QStringLiteral("## "))) {
            isInSection = line.sliced(3) == heading;
        }
    }
    return blocks;
}

QStringList commands(const QString& block)
{
    static const QRegularExpression lineEndWithin(QStringLiteral("\\\\\\n *"));
    static const QRegularExpression comment(QStringLiteral(" +# .*$"));
    QString joined = block;
    joined.remove(lineEndWithin);
    QStringList result = joined.split(u'\n', Qt::SkipEmptyParts);
    for (QString& command : result)
        command.remove(comment);
    return result;
}

QMap<QString, QStringList> interfaces(const QString& xml)
{
    QMap<QString, QStringList> result;
    QXmlStreamReader reader(xml);
    reader.readNextStartElement();
    while (reader.readNextStartElement()) {
        const QString name = attribute(reader, QStringLiteral("name"));
        if (reader.name() == QStringLiteral("interface") &&
            !name.startsWith(QStringLiteral("org.freedesktop.DBus.")))
            result.insert(name, readInterface(reader));
        else
            reader.skipCurrentElement();
    }
    if (reader.hasError())
        throw std::runtime_error(reader.errorString().toStdString());
    return result;
}

} // namespace spotwell
