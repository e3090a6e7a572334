// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/WaitUntil.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

struct xcb_connection_t;

namespace spotwell
{

/// Asks the program's window all the time, on a thread of its own, whether it still answers, as window
/// managers do: _NET_WM_PING of the Extended Window Manager Hints 1.5. The program answers on its main
/// thread, so the answer says that this is not held up.
///
/// When it ends, it appends "SUITE.TEST<tab>MILLISECONDS<tab>ANSWERS" (the longest that an answer took) to
/// the file that the variable SPOTWELL_FIGURES names, if there is one.
class WindowPing
{
public:
    using Duration = std::chrono::steady_clock::duration;

    /// The program's window may open later. By default on the screen that all tests share.
    explicit WindowPing(const QString& display = qEnvironmentVariable("DISPLAY"));
    ~WindowPing();
    WindowPing(const WindowPing&) = delete;
    WindowPing& operator=(const WindowPing&) = delete;

    /// Waits until the window has answered a question that was asked after this call began.
    [[nodiscard]] bool answers(std::chrono::milliseconds deadline = std::chrono::seconds{60}) const;
    /// Waits until `condition` holds, and then for the answer to what was asked until then; whether both
    /// came. The longest answer meanwhile counts for longest().
    template <typename Condition>
    [[nodiscard]] bool answersWhile(Condition condition,
                                    std::chrono::milliseconds deadline = std::chrono::seconds{60}) const
    {
        return answers(deadline) && waitUntil(condition, deadline) && answers(deadline);
    }
    /// The longest that an answer took, or that one has been missing by now; zero before the first question.
    [[nodiscard]] Duration longest() const;
    /// Forgets the longest so far, so that longest() is about what comes.
    void forget();

private:
    struct Atoms;

    void work();
    [[nodiscard]] std::uint32_t findWindow(std::uint32_t below, const Atoms& atoms) const;
    void ask(std::uint32_t window, const Atoms& atoms);
    [[nodiscard]] bool takeEvents(const Atoms& atoms);
    [[nodiscard]] bool isWaiting() const;
    void report() const;

    const QString display_;
    /// Used by the thread alone, once that runs.
    xcb_connection_t* connection_ = nullptr;
    std::uint32_t root_ = 0;

    mutable std::mutex mutex_; // guards what follows
    std::uint32_t asked_ = 0;
    std::uint32_t answered_ = 0;
    /// Whether the last question is still to be answered, and since when.
    bool waiting_ = false;
    std::chrono::steady_clock::time_point askedAt_;
    Duration longest_{};

    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

} // namespace spotwell
