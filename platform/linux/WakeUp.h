// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

namespace spotwell
{

/// Lets one thread end another's wait in poll(): an eventfd, readable from wake() to clear(). Any thread.
class WakeUp
{
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    void wake();
    void clear();
    [[nodiscard]] bool isAwake() const;
    /// The descriptor to poll for reading.
    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

} // namespace spotwell
