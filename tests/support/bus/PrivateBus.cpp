// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/bus/PrivateBus.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace spotwell
{

PrivateBus::PrivateBus(bool running, const std::string& denied)
{
    std::string name = (std::filesystem::temp_directory_path() / "spotwell-bus-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("mkdtemp");
    directory_ = name;
    address_ = "unix:path=" + directory_ + "/bus";
    std::ofstream(directory_ + "/bus.conf")
        << "<!DOCTYPE busconfig PUBLIC '-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN' "
           "'http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd'>\n"
           "<busconfig><type>session</type><listen>"
        << address_ << "</listen><servicedir>" << directory_
        << "</servicedir><auth>EXTERNAL</auth><policy context='default'>"
           "<allow user='*'/><allow send_destination='*' eavesdrop='true'/><allow eavesdrop='true'/>"
           "<allow own='*'/>"
        << denied
        << "</policy>"
           // As the session buses of desktops have it.
           "<limit name='max_replies_per_connection'>50000</limit></busconfig>\n";
    if (running)
        start();
}

PrivateBus::~PrivateBus()
{
    kill();
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

std::string PrivateBus::offer(const std::string& name)
{
    std::string mark = directory_ + "/" + name + ".started";
    std::ofstream(directory_ + "/" + name + ".service")
        << "[D-BUS Service]\nName=" << name << "\nExec=/bin/sh -c 'touch " << mark << "; exit 1'\n";
    return mark;
}

void PrivateBus::start()
{
    daemon_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile",
                                 "--config-file=" + directory_ + "/bus.conf", "--print-address"});
    if (!daemon_->readLine())
        throw std::runtime_error("dbus-daemon does not start");
}

void PrivateBus::kill()
{
    daemon_.reset();
    std::filesystem::remove(directory_ + "/bus");
}

void PrivateBus::stop()
{
    daemon_->signal(SIGSTOP);
}

void PrivateBus::resume()
{
    daemon_->signal(SIGCONT);
}

} // namespace spotwell
