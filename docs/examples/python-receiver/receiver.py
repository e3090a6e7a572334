#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 the spotwell developers
# SPDX-License-Identifier: MIT

"""A logger's receiving side, whole, on the GIO that comes with PyGObject (Debian: python3-gi).

It shows itself to spotwell, takes both notifications and the command processSpot, and prints each as a line of JSON.

    receiver.py [VERSION]    with a version below 6.45 cluster lines come by processSpot
"""

import json
import math
import sys
from datetime import datetime, timedelta, timezone

from gi.repository import Gio, GLib

# Any name will do that begins so: with one of its own a logger is in nobody's way.
BUS_NAME = "com.tarnbrooksoftware.Application.PythonReceiver"
OBJECT_PATH = "/com/tarnbrooksoftware/Application"
NOTIFICATIONS_PATH = "/com/tarnbrooksoftware/DistributedNotifications"
NOTIFICATIONS_INTERFACE = "com.tarnbrooksoftware.DistributedNotifications"
KINDS = {"com.tarnbrooksoftware.spotwell_spot": "spot", "com.tarnbrooksoftware.spotwell_line": "line"}
INTERFACES = """
<node>
  <interface name="com.tarnbrooksoftware.Application">
    <property name="DisplayName" type="s" access="read"/>
    <property name="Version" type="s" access="read"/>
  </interface>
  <interface name="com.tarnbrooksoftware.Scripting">
    <method name="processSpot"><arg name="line" type="s" direction="in"/></method>
  </interface>
</node>"""
EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)

properties = {"DisplayName": "Logwright", "Version": sys.argv[1] if len(sys.argv) > 1 else "6.45"}


def show(kind, content):
    """A real logger only notes here what came and returns: the next message waits until then."""
    print(json.dumps({kind: content}, separators=(",", ":")), flush=True)


def known(information):
    """A dictionary's entries of the three types there are; anything else is passed over."""
    result = {}
    for entry in (information.get_child_value(index) for index in range(information.n_children())):
        key, value = entry.get_child_value(0).get_string(), entry.get_child_value(1).get_variant()
        kind = value.get_type_string()
        if kind == "s":
            result[key] = value.get_string()
        elif kind == "d" and math.isfinite(value.get_double()):
            result[key] = value.get_double()
        elif kind == "x":
            try:
                time = EPOCH + timedelta(microseconds=value.get_int64())
                result[key] = time.isoformat(timespec="microseconds").replace("+00:00", "Z")
            except OverflowError:  # beyond the years 1 to 9999
                pass
    return result


def posted(_bus, _sender, _path, _interface, _member, parameters):
    if parameters.get_type_string() == "(ssa{sv})":
        show(KINDS[parameters.get_child_value(0).get_string()], known(parameters.get_child_value(2)))


def called(_bus, _sender, _path, _interface, _method, parameters, invocation):
    show("command", {"line": parameters.unpack()[0]})
    invocation.return_value(None)


def property_asked(_bus, _sender, _path, _interface, name):
    return GLib.Variant("s", properties[name])


def name_refused(_bus, name):
    sys.exit(f"python-receiver: the bus name {name} is taken")


try:
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
except GLib.Error as error:
    sys.exit(f"python-receiver: {error.message}")
for interface in Gio.DBusNodeInfo.new_for_xml(INTERFACES).interfaces:
    bus.register_object(OBJECT_PATH, interface, called, property_asked, None)
for kind in KINDS:
    bus.signal_subscribe(None, NOTIFICATIONS_INTERFACE, "Posted", NOTIFICATIONS_PATH, kind,
                         Gio.DBusSignalFlags.NONE, posted)
# The name comes last: whoever sees it finds everything in place.
Gio.bus_own_name_on_connection(bus, BUS_NAME, Gio.BusNameOwnerFlags.NONE,
                               lambda _bus, name: show("ready", {"name": name}), name_refused)
GLib.MainLoop().run()
