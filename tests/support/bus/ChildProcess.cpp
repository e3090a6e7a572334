// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/bus/ChildProcess.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace spotwell
{

namespace
{

using Clock = std::chrono::steady_clock;

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    for (std::string& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

} // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit)
{
    const auto end = Clock::now() + limit;
    while (!condition()) {
        if (Clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds{2});
    }
    return true;
}

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::vector<std::string>& environment, bool keepErrors)
{
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (::pipe2(in.data(), O_CLOEXEC) != 0 || ::pipe2(out.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("pipe2");
    std::vector<std::string> arguments = command;
    std::vector<std::string> variables = environment;
    for (char** variable = environ; *variable != nullptr; ++variable)
        variables.emplace_back(*variable);

    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    if (keepErrors)
        posix_spawn_file_actions_adddup2(&actions, out[1], STDERR_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const int result = ::posix_spawnp(&pid_, arguments[0].c_str(), &actions, nullptr,
                                      pointers(arguments).data(), pointers(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(in[0]);
    ::close(out[1]);
    input_ = in[1];
    output_ = out[0];
    if (result != 0)
        throw std::runtime_error("cannot start " + command[0]);
}

ChildProcess::~ChildProcess()
{
    signal(SIGKILL);
    wait();
    ::close(input_);
    ::close(output_);
}

void ChildProcess::writeLine(const std::string& line)
{
    const std::string bytes = line + '\n';
    if (::write(input_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("the child does not read");
}

std::optional<std::string> ChildProcess::readLine(std::chrono::milliseconds limit)
{
    const auto end = Clock::now() + limit;
    while (true) {
        if (const auto lineEnd = buffer_.find('\n'); lineEnd != std::string::npos) {
            std::string line = buffer_.substr(0, lineEnd);
            buffer_.erase(0, lineEnd + 1);
            return line;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        pollfd entry{output_, POLLIN, 0};
        if (::poll(&entry, 1, static_cast<int>(std::max<long>(left.count(), 0))) <= 0)
            return std::nullopt;
        std::array<char, 65536> bytes{};
        const ssize_t count = ::read(output_, bytes.data(), bytes.size());
        if (count <= 0)
            return std::nullopt;
        buffer_.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

void ChildProcess::signal(int number)
{
    if (pid_ > 0)
        ::kill(pid_, number);
}

int ChildProcess::wait()
{
    int status = 0;
    const pid_t pid = std::exchange(pid_, -1);
    if (pid <= 0 || ::waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace spotwell
