// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/UrlAccount.h"

#include <utility>

namespace spotwell
{

bool UrlAccount::hasRoomToStart() const
{
    const std::lock_guard lock(mutex_);
    return held_ < limits_.start;
}

bool UrlAccount::bookBody(qsizetype bytes)
{
    const std::lock_guard lock(mutex_);
    if (bytes > limits_.held - held_)
        return false;
    held_ += bytes;
    return true;
}

void UrlAccount::bookAnswer()
{
    const std::lock_guard lock(mutex_);
    held_ += limits_.answer;
}

void UrlAccount::releaseBody(qsizetype bytes)
{
    bool hasRoomAgain = false;
    {
        const std::lock_guard lock(mutex_);
        const bool hadRoom = held_ < limits_.start;
        held_ -= bytes;
        hasRoomAgain = !hadRoom && held_ < limits_.start;
    }
    if (hasRoomAgain)
        released_.wake();
}

void UrlAccount::releaseAnswer()
{
    releaseBody(limits_.answer);
}

UrlBooking::UrlBooking(std::shared_ptr<UrlAccount> account) : account_(std::move(account))
{
    account_->bookAnswer();
}

UrlBooking::UrlBooking(UrlBooking&& other) noexcept
    : account_(std::move(other.account_)), body_(std::exchange(other.body_, 0))
{
}

UrlBooking& UrlBooking::operator=(UrlBooking&& other) noexcept
{
    std::swap(account_, other.account_);
    std::swap(body_, other.body_);
    return *this;
}

UrlBooking::~UrlBooking()
{
    if (!account_)
        return;
    dropBody();
    account_->releaseAnswer();
}

bool UrlBooking::addBody(qsizetype bytes)
{
    if (!account_->bookBody(bytes))
        return false;
    body_ += bytes;
    return true;
}

void UrlBooking::dropBody()
{
    account_->releaseBody(std::exchange(body_, 0));
}

} // namespace spotwell
