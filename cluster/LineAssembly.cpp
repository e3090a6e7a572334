// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/LineAssembly.h"

#include "util/StringAdditions.h"

#include <algorithm>
#include <array>

namespace spotwell
{

namespace
{

constexpr qsizetype shortestSpotLine = 75;
constexpr Seconds loginDelay{1.0};
constexpr Seconds passwordDelay{2.0};

constexpr QStringView loginVeto = u"qrx:";
constexpr std::array<QStringView, 7> callsignPrompts{
    u"login:", u"call:", u"Callsign :", u"Votre indicatif:", u"sign:", u"javAPRSSrvr", u"enter your cal"};
constexpr std::array<QStringView, 3> passwordPrompts{u"password:", u"Password :", u"Mot de passe:"};

template <std::size_t Size>
bool containsAny(const QString& line, const std::array<QStringView, Size>& prompts)
{
    return std::any_of(prompts.begin(), prompts.end(),
                       [&line](QStringView prompt) { return containsString(line, prompt, true); });
}

} // namespace

QStringList linesOfChunk(const QString& text)
{
    return removeCharactersInSet(text, u"\r\a").split(QLatin1Char('\n'));
}

bool isSpotLine(const QString& line)
{
    return line.size() >= shortestSpotLine && line.startsWith(QLatin1String("DX de "));
}

bool isCallsignPrompt(const QString& line)
{
    return !containsString(line, loginVeto, true) && containsAny(line, callsignPrompts);
}

bool isPasswordPrompt(const QString& line)
{
    return containsAny(line, passwordPrompts);
}

LineAssembly::LineAssembly(ClusterHost& host, LoginLine& line, MainQueue& mainQueue, Log& log)
    : host_(host), line_(line), mainQueue_(mainQueue), log_(log)
{
}

void LineAssembly::processInputStream(const QStringList& lines, const QString& node)
{
    for (const QString& line : lines) {
        if (line.isEmpty())
            continue;
        host_.postText(QStringLiteral("teln ") + line);
        if (isSpotLine(line))
            host_.takeSpotLine(line, node);
        if (line_.promptsAreArmed())
            answerPrompts(line);
    }
}

void LineAssembly::answerPrompts(const QString& line)
{
    if (isCallsignPrompt(line))
        mainQueue_.async([this] { startLogintimer(); });
    if (!host_.passwordIsEmpty() && isPasswordPrompt(line)) {
        mainQueue_.after(passwordDelay,
                         [this] { line_.sendTelnet(host_.passwordText() + QLatin1Char('\n')); });
    }
}

void LineAssembly::startLogintimer()
{
    mainQueue_.after(loginDelay, [this] { login(); });
}

void LineAssembly::login()
{
    log_.line(QStringLiteral("logging in"));
    host_.appendText(QStringLiteral("loging in"));
    const QString callsign = host_.callsignText();
    if (!callsign.isEmpty())
        line_.sendTelnet(callsign + QLatin1Char('\n'));
    line_.setLoggedIn();
    host_.setConnected(true);
}

} // namespace spotwell
