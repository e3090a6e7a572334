// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace spotwell
{

/// Answers the look-ups of this test program in place of the system's resolver, as the test says.
///
/// A name that is held waits, as with a name server that stays silent; any other has the addresses given to
/// it.
class NameServer
{
public:
    /// Gives `name` these numeric addresses, in this order.
    static void set(const std::string& name, std::vector<std::string> addresses);
    /// Lets every look-up of `name` wait until release().
    static void hold(const std::string& name);
    static void release();
    /// How many look-ups wait now.
    static int waiting();
};

} // namespace spotwell
