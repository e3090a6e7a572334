// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// What spotwell-bridge may be told on the bus: notifications with values of any types, instead of them
// anything else; and what it prints and hands on of them.

#include "fuzz/BusWriter.h"
#include "tools/spotwell-bridge/JsonReport.h"
#include "tools/spotwell-bridge/NotificationReader.h"
#include "tools/spotwell-bridge/spots/N1mmSpot.h"
#include "tools/spotwell-bridge/spots/SpotLine.h"
#include "tools/spotwell-bridge/spots/SpotText.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace
{

using namespace spotwell;
using namespace spotwell::bridge;
using namespace Qt::Literals::StringLiterals;

constexpr TimePoint now = std::chrono::sys_days{std::chrono::year{2026} / 11 / 21} + std::chrono::hours{12};
constexpr std::array<const char*, 10> keys{"combinedCallsign", "megahertz", "timestamp", "dxde_call",
                                           "comments",         "mode",      "grid",      "pota_ref",
                                           "source",           "line"};

void checkJson(const Notification& notification)
{
    const QByteArray line = notificationJson(notification, now);
    check(!line.contains('\n') && line.isValidUtf8(), "a line of text");
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    check(object["notification"_L1].toString() == notification.name, "the name as it came");
    check(object["object"_L1].toString() == notification.object, "the object as it came");
    // Qt 6.4 sorts the keys it reads by their UTF-8 and looks them up by their UTF-16, and so misses some.
    const QStringList found = object["userInfo"_L1].toObject().keys();
    for (const auto& [key, value] : notification.userInfo)
        check(found.contains(key), "every key is there");
}

void checkHandedOn(const Notification& notification)
{
    for (const auto& [key, value] : notification.userInfo) {
        const auto* const text = std::get_if<QString>(&value);
        const auto passed = text != nullptr ? clusterLine(*text) : std::nullopt;
        check(!passed || passed->size() == text->size(), "a line keeps its columns");
    }
    const auto report = reportOfSpot(notification, now);
    if (!report)
        return;
    const QString line = spotLine(*report);
    check(characterCount(line) >= 75 && std::none_of(line.begin(), line.end(), isControl),
          "a spot is a line");
    check(n1mmSpot(*report).size() <= largestDatagram, "a datagram fits a packet");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static BusMessages messages;
    Input input(data, size);
    const unsigned kind = input.byte();
    const BusMessage message = messages.made();
    BusWriter writer(message.get(), input);
    if ((kind & 7U) == 0) {
        writer.writeAny();
        writer.writeAny();
    } else {
        writer.writeText(writer.text());
        writer.writeText("string object");
        writer.writeDictionary(keys);
    }
    if (!writer.good() || !BusMessages::seal(message.get()))
        return 0;
    const auto notification = readNotification(message.get());
    check(notification.has_value() || (kind & 7U) == 0, "what has the right shape is read");
    if (!notification)
        return 0;
    check(notification->userInfo.size() <= mostEntries, "the entries are bounded");
    checkJson(*notification);
    checkHandedOn(*notification);
    return 0;
}
