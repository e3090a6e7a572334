// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Tries what a program in its place should not be able to do, and says in a line each what came of it:
//
//   confinement_probe NAME [leave]      "NAME: what: result"
//
// With "leave" the files that it could write stay. Started with the superuser's rights for everybody, it says
// whether it got them, and goes on without.

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <sched.h>
#include <string>
#include <sys/mman.h>
#include <sys/personality.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

constexpr std::size_t page = 4096;

class Probe
{
public:
    explicit Probe(const char* name) : name_(name) {}
    void say(const std::string& what, const std::string& result) const
    {
        std::cout << name_ << ": " << what << ": " << result << std::endl;
    }
    /// A call's result, negative when it failed, with errno.
    void say(const std::string& what, long result) const
    {
        say(what, result < 0 ? ::strerrorname_np(errno) : std::string("done"));
    }

private:
    const std::string name_;
};

void tryFiles(const Probe& probe, bool unlinks)
{
    const std::string home = std::getenv("HOME");
    const std::string runtime = std::getenv("XDG_RUNTIME_DIR");
    for (const std::string& directory :
         {home, home + "/.config", home + "/.config/tarnbrooksoftware", home + "/.local/state",
          home + "/.local/state/tarnbrooksoftware", runtime, std::string("/tmp"), std::string("/var/tmp"),
          std::string("/dev/shm")}) {
        const std::string file = directory + "/probe";
        const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        probe.say("write in " + directory, descriptor);
        if (descriptor >= 0 && unlinks)
            ::unlink(file.c_str());
    }
    for (const std::string& file :
         {home + "/.ssh/id_ed25519", home + "/.Xauthority", runtime + "/keyring/control"})
        probe.say("read " + file, ::open(file.c_str(), O_RDONLY | O_CLOEXEC));
}

void tryRights(const Probe& probe)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        for (const char* name :
             {"CapInh:", "CapPrm:", "CapEff:", "CapBnd:", "CapAmb:", "NoNewPrivs:", "Seccomp:"}) {
            if (line.starts_with(name))
                probe.say(line.substr(0, line.find(':')), line.substr(line.find('\t') + 1));
        }
    }
    rlimit core{};
    ::getrlimit(RLIMIT_CORE, &core);
    probe.say("largest core", std::to_string(core.rlim_cur));
}

void tryCalls(const Probe& probe)
{
    const std::string own = std::string(std::getenv("HOME")) + "/.config/tarnbrooksoftware/probe-s";
    ::close(::open(own.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    probe.say("chmod u+s", ::chmod(own.c_str(), 04700));
    ::unlink(own.c_str());
    const char* const group = "/sys/fs/cgroup/probe";
    probe.say("new control group", ::mkdir(group, 0700));
    ::rmdir(group);
    probe.say("AF_UNIX", ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    probe.say("AF_INET", ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    probe.say("AF_INET6", ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
    probe.say("AF_PACKET", ::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0));
    const int zeros = ::open("/dev/zero", O_RDWR | O_CLOEXEC);
    const auto map = [zeros](int protection) {
        return ::mmap(nullptr, page, protection, MAP_PRIVATE, zeros, 0);
    };
    probe.say("write and execute", map(PROT_READ | PROT_WRITE | PROT_EXEC) == MAP_FAILED ? -1L : 0L);
    void* const memory = map(PROT_READ | PROT_WRITE);
    probe.say("execute what was written", ::mprotect(memory, page, PROT_READ | PROT_EXEC));
    probe.say("personality", ::personality(ADDR_NO_RANDOMIZE));
    probe.say("setpriority", ::setpriority(PRIO_PROCESS, 0, 1));
    probe.say("setuid", ::setuid(0));
    probe.say("add_key", ::syscall(SYS_add_key, "user", "probe", "x", 1, -3 /* the process's keyring */));
    probe.say("ptrace", ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr));
    probe.say("new user namespace", ::unshare(CLONE_NEWUSER));
}

} // namespace

int main(int, char** argv)
{
    const Probe probe(argv[1]);
    probe.say("superuser", ::geteuid() == 0 && ::getuid() != 0 ? "yes" : "no");
    if (::geteuid() != ::getuid() && ::setresuid(::getuid(), ::getuid(), ::getuid()) != 0)
        return 1;
    tryRights(probe);
    tryFiles(probe, argv[2] == nullptr);
    tryCalls(probe);
}
