// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FeedAnswers.h"

namespace spotwell
{

namespace
{

std::string twoDigits(int number)
{
    return (number < 10 ? "0" : "") + std::to_string(number);
}

/// Noon and so many seconds.
std::string timeOfNumber(int number)
{
    return "2024-03-01T" + twoDigits(12 + number / 3600) + ":" + twoDigits(number / 60 % 60) + ":" +
           twoDigits(number % 60);
}

template <typename Element>
std::string newestFirst(int count, const std::string& separator, Element element)
{
    std::string all;
    for (int number = count; number > 0; --number)
        all += element(number) + (number > 1 ? separator : "");
    return all;
}

} // namespace

std::string potaElement(int number)
{
    const std::string text = std::to_string(number);
    return R"({"spotId":)" + text + R"(,"spotter":"W3XYZ","activator":"N)" + text +
           R"(A","frequency":"14062","spotTime":")" + timeOfNumber(number) + R"("})";
}

std::string potaAnswer(int count)
{
    return "[" + newestFirst(count, ",", potaElement) + "]";
}

std::string dxSummitElement(int number)
{
    const std::string text = std::to_string(number);
    return R"({"id":)" + text + R"(,"de_call":"W3XYZ-@","dx_call":"N)" + text +
           R"(B","frequency":14025.0,"time":")" + timeOfNumber(number) + R"("})";
}

std::string dxSummitAnswer(int count)
{
    return "[" + newestFirst(count, ",", dxSummitElement) + "]";
}

std::string wsprnetRow(int number)
{
    std::string row = "<tr>";
    for (const std::string& cell :
         {"2024-03-01 12:" + twoDigits(number % 60), "N" + std::to_string(number) + "C",
          std::string("14.097061"), std::string("-12"), std::string("0"), std::string("FN31"),
          std::string("5"), std::string("W3XYZ"), std::string("JO62"), std::string("6400")})
        row += "<td align=left>&nbsp;" + cell + "&nbsp;</td>";
    return row + "</tr>\n";
}

std::string wsprnetPage(int count)
{
    return "<html><body><table>\n<tr><th>Timestamp</th><th>Call</th></tr>\n" +
           newestFirst(count, "", wsprnetRow) + "</table></body></html>\n";
}

QStringList callsUpTo(int count, char last)
{
    QStringList calls;
    for (int number = 1; number <= count; ++number)
        calls.append(QStringLiteral("N%1%2").arg(number).arg(QLatin1Char(last)));
    return calls;
}

} // namespace spotwell
