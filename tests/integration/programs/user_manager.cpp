// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Runs what is installed as an ordinary user's service, under a service manager of that user's own: systemd.
//
//   user_manager                                   says why the machine does not permit that, or nothing
//   user_manager HOME PREFIX INSTALLED RUNTIME     runs spotwell.service, until told to end by SIGTERM
//
// HOME becomes the user's home in the place where homes are, and INSTALLED is what is found at PREFIX.
// Programs in it whose name ends in "_probe" have the superuser's rights for everybody. The bus of the
// environment is where a session has it, in RUNTIME. Each of it in a mount namespace of its own. What more is
// in the arguments is not looked at.

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <iostream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace
{

/// Who the user is: somebody that the machine knows, for the bus asks, and who owns next to nothing
/// ("games").
constexpr uid_t user = 5;
const fs::path controlGroups = "/sys/fs/cgroup";

void require(bool holds, const std::string& what)
{
    if (!holds)
        throw std::system_error(errno, std::generic_category(), what);
}

void mountMemory(const fs::path& target)
{
    require(::mount("tmpfs", target.c_str(), "tmpfs", MS_NODEV, "mode=0755") == 0, target);
}

void mountOver(const fs::path& source, const fs::path& target)
{
    require(::mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, target);
}

void giveToUser(const fs::path& path)
{
    require(::lchown(path.c_str(), user, user) == 0, path);
}

void mountControlGroups()
{
    require(::mount("cgroup2", controlGroups.c_str(), "cgroup2", 0, nullptr) == 0, controlGroups);
}

/// A control group within that of this process; its path as the machine has it.
fs::path makeControlGroup()
{
    std::ifstream groups("/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        if (!line.starts_with("0::/"))
            continue;
        const fs::path group = controlGroups / line.substr(4) / ("spotwell-" + std::to_string(::getpid()));
        fs::create_directory(group);
        for (const char* name : {"", "cgroup.procs", "cgroup.subtree_control", "cgroup.threads"})
            giveToUser(group / name);
        return group;
    }
    throw std::runtime_error("no control group");
}

void removeControlGroup(const fs::path& group)
{
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(group, ignored)) {
        if (entry.is_directory())
            removeControlGroup(entry.path());
    }
    ::rmdir(group.c_str());
}

void prepareFiles(char** arguments)
{
    const fs::path installed = arguments[3];
    const fs::path runtime = arguments[4];
    const std::string busAddress = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    // Taken from where it is before that is covered.
    const int homeFile = ::open(arguments[1], O_PATH | O_CLOEXEC);
    require(homeFile >= 0, arguments[1]);
    giveToUser(arguments[1]);
    for (const auto& entry : fs::recursive_directory_iterator(arguments[1]))
        giveToUser(entry.path());

    for (const auto& entry : fs::directory_iterator(installed / "bin")) {
        if (entry.path().string().ends_with("_probe"))
            require(::chmod(entry.path().c_str(), 04755) == 0, entry.path());
    }
    require(::chmod(installed.c_str(), 0755) == 0, installed);
    mountOver(installed, arguments[2]);

    mountMemory("/run");
    // What the machine's own manager has made by the time that a user comes.
    fs::create_directories("/run/systemd/system");
    fs::create_directories("/run/systemd/unit-root");
    fs::create_directories(runtime / "keyring");
    std::ofstream(runtime / "keyring" / "control").close();
    for (const fs::path& path : {runtime, runtime / "keyring", runtime / "keyring" / "control"})
        giveToUser(path);
    require(::chmod(runtime.c_str(), 0700) == 0, runtime);
    std::ofstream(runtime / "bus").close();
    mountOver(busAddress.substr(std::strlen("unix:path=")), runtime / "bus");

    mountMemory("/home");
    const fs::path home = fs::path("/home") / "operator";
    fs::create_directory(home);
    mountOver("/proc/self/fd/" + std::to_string(homeFile), home);
}

[[noreturn]] void becomeManager(const fs::path& runtime)
{
    const std::string display = std::getenv("DISPLAY");
    require(::clearenv() == 0, "clearenv");
    for (const auto& [name, value] : {std::pair<const char*, std::string>{"HOME", "/home/operator"},
                                      {"XDG_RUNTIME_DIR", runtime},
                                      {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (runtime / "bus").string()},
                                      {"DISPLAY", display},
                                      {"LC_ALL", "C.UTF-8"},
                                      {"PATH", "/usr/bin:/bin"}})
        ::setenv(name, value.c_str(), 1);
    require(::chdir("/") == 0, "chdir");
    const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
    ::setrlimit(RLIMIT_CORE, &unlimited);
    require(::setgroups(0, nullptr) == 0 && ::setresgid(user, user, user) == 0 &&
                ::setresuid(user, user, user) == 0,
            "setresuid");
    ::execl("/lib/systemd/systemd", "systemd", "--user", "--unit=spotwell.service", nullptr);
    throw std::system_error(errno, std::generic_category(), "systemd");
}

/// Waits for a child's end and tells it when this process is to end; its exit code.
int attend(pid_t child)
{
    sigset_t awaited;
    ::sigemptyset(&awaited);
    ::sigaddset(&awaited, SIGTERM);
    ::sigaddset(&awaited, SIGCHLD);
    while (true) {
        int signal = 0;
        ::sigwait(&awaited, &signal);
        if (signal == SIGTERM)
            ::kill(child, SIGTERM);
        int status = 0;
        for (pid_t ended = 0; (ended = ::waitpid(-1, &status, WNOHANG)) > 0;) {
            if (ended == child)
                return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
        }
    }
}

void blockSignals(int how)
{
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGTERM);
    ::sigaddset(&signals, SIGCHLD);
    ::sigprocmask(how, &signals, nullptr);
}

/// Runs `work` in another process.
template <typename Work>
pid_t inChild(Work work)
{
    const pid_t child = ::fork();
    require(child >= 0, "fork");
    if (child != 0)
        return child;
    try {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::_exit(work());
    } catch (const std::exception& error) {
        std::cerr << "user_manager: " << error.what() << '\n';
    }
    ::_exit(1);
}

int run(char** arguments)
{
    require(::unshare(CLONE_NEWNS) == 0, "unshare");
    require(::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "/");
    mountControlGroups();
    if (arguments[1] == nullptr) {
        removeControlGroup(makeControlGroup());
        return 0;
    }
    blockSignals(SIG_BLOCK);
    const fs::path group = makeControlGroup();
    const pid_t child = inChild([&] {
        require(!!(std::ofstream(group / "cgroup.procs") << "0" << std::flush), group);
        require(::unshare(CLONE_NEWNS | CLONE_NEWPID | CLONE_NEWCGROUP) == 0, "unshare");
        // The first process of the new namespace takes all others with it when it ends.
        return attend(inChild([&] {
            require(::mount("proc", "/proc", "proc", 0, nullptr) == 0, "/proc");
            require(::umount2(controlGroups.c_str(), MNT_DETACH) == 0, controlGroups);
            mountControlGroups();
            prepareFiles(arguments);
            return attend(inChild([&] {
                blockSignals(SIG_UNBLOCK);
                becomeManager(arguments[4]);
                return 1;
            }));
        }));
    });
    const int status = attend(child);
    removeControlGroup(group);
    return status;
}

} // namespace

int main(int, char** argv)
{
    try {
        return run(argv);
    } catch (const std::exception& error) {
        std::cout << error.what() << '\n';
    }
    return 1;
}
