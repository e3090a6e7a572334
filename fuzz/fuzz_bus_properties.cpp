// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// What an application may say of itself on the bus: properties of any names and types, instead of them
// anything else, and errors.

#include "fuzz/BusWriter.h"
#include "platform/linux/bus/ApplicationProperties.h"

namespace
{

using namespace spotwell;

constexpr std::array<const char*, 4> keys{"DisplayName", "Version", "DisplayName", ""};

void checkProperties(sd_bus_message* answer)
{
    const auto application = readApplicationProperties(answer);
    if (!application)
        return;
    check(application->displayName.size() <= 1000 && application->address.isEmpty(), "a name is short");
    check(application->information.has_value(), "there is information, if only that there is no version");
    const auto& version = application->information->shortVersion;
    check(!version || version->size() <= 1000, "a version is short");
}

/// The reading leaves the message where it can be read again, to the same end.
void checkAgain(sd_bus_message* answer)
{
    const auto first = readApplicationProperties(answer);
    check(sd_bus_message_rewind(answer, 1) >= 0, "a message can be read again");
    const auto second = readApplicationProperties(answer);
    check(first.has_value() == second.has_value(), "nothing is kept of an answer");
    check(!first || first->displayName == second->displayName, "the same name");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static BusMessages messages;
    Input input(data, size);
    const unsigned kind = input.byte();
    const BusMessage message = messages.made();
    BusWriter writer(message.get(), input);
    if ((kind & 7U) == 0)
        writer.writeAny();
    else
        writer.writeDictionary(keys);
    if (!writer.good() || !BusMessages::seal(message.get()))
        return 0;
    checkProperties(message.get());
    check(sd_bus_message_rewind(message.get(), 1) >= 0, "a message can be read again");
    checkAgain(message.get());
    check(busErrorText(message.get()).isEmpty(), "what is no error has no text of one");
    return 0;
}
