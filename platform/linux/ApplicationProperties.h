#pragma once

#include "platform/RunningApplications.h"

#include <systemd/sd-bus.h>

#include <optional>

namespace spotwell
{

/// What an answer of `org.freedesktop.DBus.Properties.GetAll` says of an application; its address is left
/// empty. Absent when there is no displayed name of a sensible length. A version of another type counts as
/// missing.
[[nodiscard]] std::optional<RunningApplication> readApplicationProperties(sd_bus_message* answer);

} // namespace spotwell
