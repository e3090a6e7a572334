// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebAnswer.h"

#include <algorithm>

namespace spotwell::simulator
{

bool WebAnswer::saysSomething() const
{
    return end == End::keepAlive || status || !headers.empty() || hasBody();
}

bool WebAnswer::hasBody() const
{
    return std::any_of(parts.begin(), parts.end(),
                       [](const Part& part) { return !std::holds_alternative<WebPause>(part); });
}

} // namespace spotwell::simulator
