// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/bus/BusConnection.h"
#include "tools/spotwell-bridge/Alarm.h"

#include <QString>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>

namespace spotwell::bridge
{

/// The D-Bus name of each error that answers the command processSpot.
inline constexpr const char* commandErrorName = "com.tarnbrooksoftware.Scripting.Error.Failed";

/// How the command processSpot is answered.
struct AnswerRule {
    /// The error's text; absent for success.
    std::optional<QString> error;
    /// How long each answer is held back.
    std::chrono::microseconds delay{0};
};

/// The answers to the command processSpot, at once or later, in the order of the calls. What is held back is
/// the finished answer, not the call with its text.
class HeldAnswers
{
public:
    /// The most answers held back; a call beyond is refused at once.
    static constexpr std::size_t most = 10'000;

    /// `answered` runs after held-back answers were sent.
    HeldAnswers(AnswerRule rule, std::function<void()> answered);

    /// Answers `call`, now or later. Negative, an errno, when that is impossible.
    int answer(sd_bus_message* call);
    /// Answers every further call with an error.
    void refuseFurther() { refusing_ = true; }
    /// Answers everything held back with an error, too.
    void refuseAll();
    /// Drops everything held back, for nobody can be answered any more.
    void forget();
    [[nodiscard]] bool isEmpty() const { return held_.empty(); }

private:
    struct Held {
        Alarm::Clock::time_point due;
        BusMessage answer;
        BusMessage refusal;
    };

    [[nodiscard]] BusMessage makeAnswer(sd_bus_message* call) const;
    void sendDue();

    const AnswerRule rule_;
    const std::function<void()> answered_;
    std::deque<Held> held_;
    Alarm due_;
    bool refusing_ = false;
};

} // namespace spotwell::bridge
