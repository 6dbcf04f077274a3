// What the simulated controller remembers between requests: elements, users and sessions,
// neighbours, schedules, messages. Plain data behind one lock; the service decides what it means.
#pragma once

#include <array>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

struct Element {
    std::string status;
    std::string value;
};

struct Neighbour {
    std::string name;
    std::string address;
    std::string port;
    std::string optionals;
};

/// A user of the controller. A login opens the user's one session, whose name is fixed, since
/// the login answer has no place for it: scripts can rely on it.
struct User {
    std::string_view name;
    std::string_view password;
    std::string_view session;
};

inline constexpr std::array<User, 2> USERS{
    {{"demo", "demo", "DEMO-SESSION"}, {"admin", "admin", "ADMIN-SESSION"}}};

/// The session that requests from the controller itself carry.
inline constexpr std::string_view LOCAL_SESSION = "NO-SESSIONID";

/// The PIN that the simulated alarm unit knows.
inline constexpr std::string_view ALARM_PIN = "1234";

/// Older messages are dropped.
inline constexpr std::size_t KEPT_MESSAGES = 100;

struct Home {
    std::mutex lock;
    std::map<std::string, Element, std::less<>> elements{{"KITCHEN-THERMOSTAT", {"ON", "21.5"}},
                                                         {"LIVING-LAMP", {"OFF", "0"}}};
    std::map<std::string, std::string, std::less<>> sessions{{"DEMO-SESSION", "demo"}};
    std::map<std::string, Neighbour, std::less<>> neighbours; ///< by unique identifier
    std::map<std::string, std::string, std::less<>> schedules;
    std::deque<std::string> messages;
    std::string configuration; ///< the last uploaded configuration file
    std::string origin;        ///< the address of the web service, such as http://127.0.0.1:8080
};
