// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/FeedAnswers.h"

#include <QList>
#include <QString>

namespace spotwell::bench
{

namespace
{

/// The time of day that the spot number `index`, counted from the newest, was made at.
struct TimeOfDay {
    explicit TimeOfDay(int index) : sinceMidnight(86399 - index * 8) {}
    int sinceMidnight;
    int hour = sinceMidnight / 3600;
    int minute = sinceMidnight / 60 % 60;
    int second = sinceMidnight % 60;
};

QByteArray potaSpot(int index)
{
    const TimeOfDay time(index);
    return QString::asprintf(
               R"({"spotId":%d,"activator":"DL%dAB/P","frequency":"%d.%d","mode":"%s",)"
               R"("reference":"DE-%04d","parkName":null,"spotTime":"2027-02-02T%02d:%02d:%02d",)"
               R"("spotter":"%s","comments":"%s","source":"%s","invalid":null,)"
               R"("name":"Naturpark Number %d","locationDesc":"DE-%02d","grid4":"JO%02d",)"
               R"("grid6":"JO%02dxa","latitude":5%d.%04d,"longitude":1%d.%04d,"count":%d,"expire":%d})",
               37000000 - index, index % 1000, 14000 + index % 350, index % 10, index % 3 == 0 ? "SSB" : "CW",
               index % 9000, time.hour, time.minute, time.second, index % 2 == 0 ? "W3LPL-#" : "OE6XYZ",
               index % 2 == 0 ? "RBN 12 dB 22 WPM via W3LPL-#" : "cq cq tnx 59 in Graz",
               index % 2 == 0 ? "RBN" : "Web", index, index % 16, index % 100, index % 100, index % 4,
               index % 10000, index % 6, index % 10000, 1 + index % 40, 60 + index % 1700)
        .toLatin1();
}

QByteArray dxSummitSpot(int index)
{
    const TimeOfDay time(index);
    return QString::asprintf(
               R"({"id":%d,"de_call":"OH%dXYZ%s","dx_call":"ZS%dABC","frequency":%d.%d,"info":"%s",)"
               R"("time":"2027-02-02T%02d:%02d:%02d","de_latitude":6%d.%d,"de_longitude":-2%d.%d,)"
               R"("dx_latitude":-3%d.%d,"dx_longitude":-1%d.%d,"dx_country":"South Africa",)"
               R"("de_country":"Finland","band":20,"mode_guess":null,"qsl":"%d"})",
               64000000 - index, index % 10, index % 3 == 0 ? "-@" : "", index % 1000, 14000 + index % 350,
               index % 10, index % 4 == 0 ? "up 1.5 tnx qso" : "CQ CQ", time.hour, time.minute, time.second,
               index % 9, index % 10, index % 9, index % 10, index % 4, index % 10, index % 9, index % 10,
               index % 7)
        .toLatin1();
}

QByteArray wsprnetRow(int index)
{
    const TimeOfDay time(index);
    const QByteArray cells =
        QString::asprintf(
            "2027-02-02 %02d:%02d,DL%dABC,14.097%03d,-%d,0,JO%02d,0.2,W%dXYZ,FN%02d,%d,%d,WSPR-2", time.hour,
            time.minute, index % 10000, index % 1000, index % 30, index % 100, index % 1000, index % 100,
            5000 + index % 3000, 3100 + index % 2000)
            .toLatin1();
    QByteArray row = "<tr>";
    for (const QByteArray& cell : cells.split(','))
        row += "<td align=\"left\">&nbsp;" + cell + "&nbsp;</td>";
    return row + "</tr>\n";
}

template <typename MakeSpot>
QByteArray jsonArray(int spots, MakeSpot makeSpot)
{
    QByteArray answer = "[";
    for (int index = 0; index < spots; ++index)
        answer += (index == 0 ? "" : ",") + makeSpot(index);
    return answer + "]";
}

} // namespace

QByteArray potaAnswer(int spots)
{
    return jsonArray(spots, potaSpot);
}

QByteArray dxSummitAnswer(int spots)
{
    return jsonArray(spots, dxSummitSpot);
}

QByteArray wsprnetPage(int spots)
{
    QByteArray page = "<html>\n<head><title>Spots</title></head>\n<body>\n<table>\n"
                      "<tr><th>Timestamp</th><th>Call</th><th>MHz</th><th>Reporter</th></tr>\n";
    for (int index = 0; index < spots; ++index)
        page += wsprnetRow(index);
    return page + "</table>\n</body>\n</html>\n";
}

} // namespace spotwell::bench
