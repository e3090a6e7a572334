// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/HeldAnswers.h"

#include "platform/linux/bus/BusText.h"

#include <cerrno>
#include <string>
#include <utility>

namespace spotwell::bridge
{

namespace
{

constexpr const char* tooMany = "Too many commands wait for their answer.";
constexpr const char* ending = "The logger is ending.";

BusMessage makeError(sd_bus_message* call, const char* text)
{
    const sd_bus_error error{commandErrorName, text, 0};
    sd_bus_message* made = nullptr;
    sd_bus_message_new_method_error(call, &made, &error);
    return BusMessage(made);
}

int send(const BusMessage& message)
{
    return message ? sd_bus_send(nullptr, message.get(), nullptr) : -ENOMEM;
}

} // namespace

HeldAnswers::HeldAnswers(AnswerRule rule, std::function<void()> answered)
    : rule_(std::move(rule)), answered_(std::move(answered)), due_([this] { sendDue(); })
{
}

int HeldAnswers::answer(sd_bus_message* call)
{
    if (sd_bus_message_get_expect_reply(call) == 0)
        return 0;
    if (refusing_)
        return send(makeError(call, ending));
    if (rule_.delay.count() <= 0)
        return send(makeAnswer(call));
    if (held_.size() >= most)
        return send(makeError(call, tooMany));
    held_.push_back({Alarm::Clock::now() + rule_.delay, makeAnswer(call), makeError(call, ending)});
    if (held_.size() == 1)
        due_.set(held_.front().due);
    return 0;
}

void HeldAnswers::refuseAll()
{
    refuseFurther();
    for (const Held& held : held_)
        (void)send(held.refusal);
    forget();
}

void HeldAnswers::forget()
{
    held_.clear();
    due_.cancel();
}

BusMessage HeldAnswers::makeAnswer(sd_bus_message* call) const
{
    if (rule_.error)
        return makeError(call, busSafeText(*rule_.error).c_str());
    sd_bus_message* made = nullptr;
    sd_bus_message_new_method_return(call, &made);
    return BusMessage(made);
}

void HeldAnswers::sendDue()
{
    while (!held_.empty() && held_.front().due <= Alarm::Clock::now()) {
        (void)send(held_.front().answer); // a caller that is gone is nobody's business
        held_.pop_front();
    }
    if (!held_.empty())
        due_.set(held_.front().due);
    answered_();
}

} // namespace spotwell::bridge
