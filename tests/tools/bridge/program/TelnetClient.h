#pragma once

#include <cstdint>
#include <string>

namespace spotwell::bridge
{

/// A telnet client on loopback that waits, with a deadline, for what it is to hear.
class TelnetClient
{
public:
    explicit TelnetClient(std::uint16_t port);
    ~TelnetClient();
    TelnetClient(const TelnetClient&) = delete;
    TelnetClient& operator=(const TelnetClient&) = delete;

    void say(const std::string& line);
    /// Answers the question for a callsign and waits for the prompt.
    bool logIn();
    /// Hears until `text` has come; false when it does not come.
    bool hears(const std::string& text);
    /// Hears until the node ends the connection; false when it does not.
    bool hearsEnd();
    [[nodiscard]] const std::string& heard() const { return heard_; }

private:
    enum class Step { more, end, nothing };
    Step hearMore();

    int socket_;
    std::string heard_;
};

} // namespace spotwell::bridge
