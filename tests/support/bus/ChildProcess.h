// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace spotwell
{

/// Looks at `condition` again and again until it holds; false when it does not within `limit`.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds{20});

/// A child whose standard input and output are lines to and from the test. Killed at the latest when
/// destroyed.
class ChildProcess
{
public:
    /// `environment` holds "NAME=VALUE" entries that are added to the test's own. Error output is dropped
    /// unless `keepErrors`, in which case it is mixed into the lines.
    explicit ChildProcess(const std::vector<std::string>& command,
                          const std::vector<std::string>& environment = {}, bool keepErrors = false);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void writeLine(const std::string& line);
    /// The next line; absent at the end of the output and when none comes within `limit`.
    std::optional<std::string> readLine(std::chrono::milliseconds limit = std::chrono::seconds{60});
    void signal(int number);
    [[nodiscard]] pid_t process() const { return pid_; }
    /// Waits for the child to end. Its exit code; negative when a signal ended it.
    int wait();

private:
    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string buffer_;
};

} // namespace spotwell
