// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The road of a node's bytes to lines: decoded, stripped of carriage returns and bells, split at line feeds.

#include "cluster/LineAssembly.h"
#include "cluster/TextDecoding.h"
#include "fuzz/Check.h"
#include "platform/linux/IcuTextConverter.h"

#include <QByteArray>

namespace
{

class NoLog final : public spotwell::Log
{
public:
    void line(const QString& text) override { (void)text; }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    using spotwell::check;
    static const spotwell::IcuTextConverter converter;
    const QByteArray buffer(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QByteArray seen(buffer.constData());
    NoLog log;
    const QString text = spotwell::decodeClusterLine(buffer.constData(), converter, log);
    check(text.isEmpty() == seen.isEmpty(), "some encoding takes every text");
    check(seen.isValidUtf8() ? text.toUtf8() == seen : text.toLatin1() == seen, "UTF-8, else ISO 8859-1");

    const QStringList lines = spotwell::linesOfChunk(text);
    check(lines.size() == text.count(u'\n') + 1, "a line more than line feeds");
    for (const QString& line : lines) {
        check(!line.contains(u'\r') && !line.contains(u'\a') && !line.contains(u'\n'),
              "no controls are left");
        const bool prompts = spotwell::isCallsignPrompt(line) || spotwell::isPasswordPrompt(line);
        check(!prompts || !line.isEmpty(), "an empty line is no prompt");
        check(!spotwell::isSpotLine(line) || line.size() >= 75, "a spot line is long");
    }
    return 0;
}
