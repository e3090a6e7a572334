// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusText.h"

#include <algorithm>

namespace spotwell
{

namespace
{

constexpr char32_t replacement = 0xFFFD;

bool isCarried(char32_t character)
{
    return character != 0 && !QChar::isSurrogate(character) && !QChar::isNonCharacter(character);
}

/// The character at `index`, which is moved behind it; a surrogate without its other half stands for itself.
char32_t nextCharacter(const QString& text, qsizetype& index)
{
    const char16_t unit = text[index++].unicode();
    if (QChar::isHighSurrogate(unit) && index < text.size() && text[index].isLowSurrogate())
        return QChar::surrogateToUcs4(unit, text[index++].unicode());
    return unit;
}

void appendUtf8(std::string& out, char32_t c)
{
    const auto put = [&out](char32_t byte) {
        out.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
    };
    const auto putTail = [&put, c](unsigned shift) { put(0x80U | ((c >> shift) & 0x3FU)); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0U | (c >> 6U));
        putTail(0);
    } else if (c < 0x10000) {
        put(0xE0U | (c >> 12U));
        putTail(6);
        putTail(0);
    } else {
        put(0xF0U | (c >> 18U));
        putTail(12);
        putTail(6);
        putTail(0);
    }
}

} // namespace

std::string busSafeText(const QString& text, std::size_t maxBytes)
{
    std::string out;
    out.reserve(std::min(static_cast<std::size_t>(text.size()), maxBytes));
    for (qsizetype index = 0; index < text.size();) {
        const std::size_t whole = out.size();
        const char32_t character = nextCharacter(text, index);
        appendUtf8(out, isCarried(character) ? character : replacement);
        if (out.size() > maxBytes) {
            out.resize(whole);
            break;
        }
    }
    return out;
}

} // namespace spotwell
