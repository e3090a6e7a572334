// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "fuzz/Check.h"
#include "fuzz/Input.h"
#include "platform/linux/bus/BusText.h"
#include "tests/fakes/BusMessages.h"

#include <systemd/sd-bus.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace spotwell
{

/// Writes values as the input says. What it says wrongly ends the message.
class BusWriter
{
public:
    BusWriter(sd_bus_message* message, Input& input) : message_(message), input_(input) {}

    [[nodiscard]] bool good() const { return good_; }
    void note(int result) { good_ = good_ && result >= 0; }

    /// A text of the input's that the bus carries: as it is, or a few of its characters again and again.
    std::string text()
    {
        const unsigned length = input_.byte();
        if (length == 0xFF)
            return repeated(busSafeText(QString::fromUtf8(input_.bytes(4))));
        return busSafeText(QString::fromUtf8(input_.bytes(length)));
    }
    void writeText(const std::string& text) { note(sd_bus_message_append(message_, "s", text.c_str())); }

    /// A dictionary of texts and variants whose keys are often among `keys`.
    template <std::size_t Size>
    void writeDictionary(const std::array<const char*, Size>& keys)
    {
        note(sd_bus_message_open_container(message_, 'a', "{sv}"));
        for (unsigned left = input_.byte() & 0x1FU; good_ && left > 0 && !input_.isEmpty(); --left) {
            const unsigned choice = input_.byte();
            note(sd_bus_message_open_container(message_, 'e', "sv"));
            writeText(choice < Size ? keys[choice] : text());
            writeVariant(0);
            note(sd_bus_message_close_container(message_));
        }
        note(sd_bus_message_close_container(message_));
    }

    /// A value of any type.
    void writeAny()
    {
        const std::string type = anyType(0);
        writeValue(type, 0);
    }

private:
    static constexpr int deepest = 12;

    static std::string repeated(const std::string& text)
    {
        constexpr std::size_t times = 1000;
        std::string all;
        all.reserve(times * text.size());
        for (std::size_t i = 0; i < times; ++i)
            all += text;
        return all;
    }

    std::string anyType(int depth)
    {
        constexpr std::string_view basic = "ssdxbynqiutog";
        const unsigned choice = input_.byte() & 0x1FU;
        if (depth >= deepest || choice < 0x18)
            return std::string(1, basic[choice % basic.size()]);
        switch (choice & 7U) {
        case 0:
        case 1:
            return 'a' + anyType(depth + 1);
        case 2:
            return std::string("a{") + basic[input_.byte() % basic.size()] + anyType(depth + 2) + '}';
        case 3:
            return '(' + anyType(depth + 1) + anyType(depth + 1) + ')';
        case 4:
            return "a{sv}";
        default:
            return "v";
        }
    }

    /// Writes a value of the complete type at the front of `type`, which is taken.
    void writeValue(std::string_view type, int depth)
    {
        switch (type.front()) {
        case 'v':
            return writeVariant(depth);
        case 'a':
            return writeArray(type.substr(1), depth);
        case '(':
            return writeParts('r', type.substr(1, type.size() - 2), depth);
        case '{':
            return writeParts('e', type.substr(1, type.size() - 2), depth);
        default:
            return writeBasic(type.front());
        }
    }

    void writeVariant(int depth)
    {
        const std::string type = depth >= deepest ? std::string("s") : anyType(depth);
        note(sd_bus_message_open_container(message_, 'v', type.c_str()));
        if (good_)
            writeValue(type, depth + 1);
        note(sd_bus_message_close_container(message_));
    }

    void writeArray(std::string_view element, int depth)
    {
        note(sd_bus_message_open_container(message_, 'a', std::string(element).c_str()));
        for (unsigned left = input_.byte() & 7U; good_ && left > 0 && !input_.isEmpty(); --left)
            writeValue(element, depth + 1);
        note(sd_bus_message_close_container(message_));
    }

    void writeParts(char kind, std::string_view types, int depth)
    {
        note(sd_bus_message_open_container(message_, kind, std::string(types).c_str()));
        while (good_ && !types.empty()) {
            const std::size_t length = completeType(types);
            writeValue(types.substr(0, length), depth + 1);
            types.remove_prefix(length);
        }
        note(sd_bus_message_close_container(message_));
    }

    /// How long the complete type at the front of `types` is.
    static std::size_t completeType(std::string_view types)
    {
        if (types.front() == 'a')
            return 1 + completeType(types.substr(1));
        if (types.front() != '(' && types.front() != '{')
            return 1;
        int open = 0;
        for (std::size_t i = 0;; ++i) {
            open += types[i] == '(' || types[i] == '{' ? 1 : 0;
            open -= types[i] == ')' || types[i] == '}' ? 1 : 0;
            if (open == 0)
                return i + 1;
        }
    }

    void writeBasic(char type)
    {
        const auto number = [&](auto value) { note(sd_bus_message_append_basic(message_, type, &value)); };
        switch (type) {
        case 's':
            return writeText(text());
        case 'o':
            return note(sd_bus_message_append_basic(message_, type, "/a/b"));
        case 'g':
            return note(sd_bus_message_append_basic(message_, type, "a{sv}"));
        case 'b':
            return number(static_cast<int>(input_.byte() & 1U));
        case 'y':
            return number(input_.number<std::uint8_t>());
        case 'n':
        case 'q':
            return number(input_.number<std::uint16_t>());
        case 'i':
        case 'u':
            return number(input_.number<std::uint32_t>());
        default:
            return number(input_.number<std::uint64_t>());
        }
    }

    sd_bus_message* message_;
    Input& input_;
    bool good_ = true;
};

} // namespace spotwell
