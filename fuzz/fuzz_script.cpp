// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Scripts: what the program forms of a line is always understood, whatever the line; what is understood of
// any other text is one command.

#include "delivery/LineDelivery.h"
#include "fuzz/BusTextChecks.h"
#include "fuzz/Input.h"
#include "platform/linux/bus/ScriptText.h"

#include <QRegularExpression>

#include <algorithm>

namespace
{

using namespace spotwell;
using namespace Qt::Literals::StringLiterals;

/// `line`, as the reader of the node's bytes gives it, on its way to an older logger.
void checkLine(const QString& line)
{
    const auto read = readScriptText(processSpotScript(line));
    const auto* const script = std::get_if<ScriptText>(&read);
    check(script != nullptr, "every script of the program is understood");
    check(script->application == u"Logwright" && script->command == u"processSpot", "as the command it is");
    check(script->text.size() == line.size() &&
              std::equal(line.begin(), line.end(), script->text.begin(),
                         [](QChar was, QChar is) {
                             return QStringView(u"\\\"'").contains(was) ? is == u'.' : is == was;
                         }),
          "with the line but for its quotes and backslashes");
    checkBusText(script->text);
}

/// A hand-written script, or none.
void checkSource(const QString& source)
{
    const auto read = readScriptText(source);
    if (const auto* const error = std::get_if<ScriptTextError>(&read)) {
        check(error->message.startsWith(u"Expected ") && error->message.endsWith(u'.'),
              "an error says what was expected");
        return;
    }
    static const QRegularExpression memberName(u"\\A[A-Za-z_][A-Za-z0-9_]*\\z"_s);
    const auto& script = std::get<ScriptText>(read);
    check(!script.application.isEmpty() && !script.application.contains(u'"') &&
              !script.application.contains(u'\\') && !script.application.contains(u'\n'),
          "a name is one");
    check(!script.text.contains(u'"') && !script.text.contains(u'\\') && !script.text.contains(u'\n'),
          "a text is one");
    check(script.command.size() <= 255 && memberName.match(script.command).hasMatch(),
          "a command can be called");
    const auto again = readScriptText(u"TELL APPLICATION\""_s + script.application + u"\"\n\t"_s +
                                      script.command + u'"' + script.text + u"\"\nEND TELL"_s);
    const auto* const same = std::get_if<ScriptText>(&again);
    check(same != nullptr && same->application == script.application && same->command == script.command &&
              same->text == script.text,
          "written in another way it is the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    Input input(data, size);
    const bool wide = (input.byte() & 1U) != 0;
    const QByteArray bytes = input.all().toByteArray();
    // In UTF-16 as it is there may be any unit, halves of pairs among them.
    QString text = wide ? QString(reinterpret_cast<const QChar*>(bytes.constData()), bytes.size() / 2)
                        : QString::fromUtf8(bytes);
    checkSource(text);
    checkLine(text.remove(u'\n'));
    return 0;
}
