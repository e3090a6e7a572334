// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/WebPoller.h"

#include <utility>

namespace spotwell
{

WebPollerValues potaPollerValues(const QString& address)
{
    return {QStringLiteral("potaTimer"), address, Seconds{30.0}, WebPollerValues::Stamp::whenHandled};
}

WebPollerValues dxsummitPollerValues(const QString& address)
{
    return {QStringLiteral("dxsummitTimer"), address, Seconds{30.0}, WebPollerValues::Stamp::whenHandled};
}

WebPollerValues wsprnetPollerValues(const QString& address)
{
    return {QStringLiteral("wsprnetTimer"), address, Seconds{120.0}, WebPollerValues::Stamp::whenIssued};
}

WebPoller::WebPoller(WebPollerValues values, WebPollerHost host, std::atomic<TimePoint>& stamp,
                     const Clock& clock, Log& log)
    : values_(std::move(values)), host_(std::move(host)), stamp_(stamp), clock_(clock), log_(log)
{
}

void WebPoller::tick()
{
    if (!host_.isOn())
        return;
    const bool option = host_.option();
    if (clock_.now() - stamp_.load() <= values_.gap)
        return;
    if (!hasRoom())
        return;
    ++unhandled_;
    host_.queue().async([this, option] { startTransfer(option); });
    if (values_.stamp == WebPollerValues::Stamp::whenIssued)
        stamp_ = clock_.now();
}

bool WebPoller::hasRoom()
{
    const bool full = unhandled_.load() >= mostUnhandled;
    if (full && !told_)
        log_.line(QStringLiteral("%1:too many answers are waiting").arg(values_.name));
    told_ = full;
    return !full;
}

void WebPoller::startTransfer(bool option)
{
    if (UrlSession* const session = host_.session())
        session->dataTask(values_.address,
                          [this, option](const UrlResult& result) { handle(result, option); });
    else
        --unhandled_;
}

void WebPoller::handle(const UrlResult& result, bool option)
{
    if (result.error)
        log_.line(QStringLiteral("%1:error:[%2]").arg(values_.name, *result.error));
    else if (!result.body.isEmpty())
        host_.parse(result.body, option);
    else
        log_.line(QStringLiteral("%1:error:no data").arg(values_.name));
    if (values_.stamp == WebPollerValues::Stamp::whenHandled)
        stamp_ = clock_.now();
    --unhandled_;
}

} // namespace spotwell
