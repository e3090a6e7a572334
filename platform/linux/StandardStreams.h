// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

namespace spotwell
{

/// Puts /dev/null where the parent has closed a standard stream, so that what is opened later is not taken
/// for one. To be called first of all.
void occupyStandardStreams();

} // namespace spotwell
