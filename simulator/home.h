// What the simulated controller remembers between requests, and the file of it for --state and
// --state-out. Plain data; the service decides what it means.
#pragma once

#include <array>
#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <string_view>

struct home_element {
    std::string status;
    std::string value;
};

struct home_neighbour {
    std::string name;
    std::string address;
    std::string port;
    std::string optionals;
};

/// A user of the controller. A login opens the user's one session, whose name is fixed, since
/// the login answer has no place for it: scripts can rely on it.
struct user_account {
    std::string_view name;
    std::string_view password;
    std::string_view session;
};

inline constexpr std::array USERS{user_account{"demo", "demo", "DEMO-SESSION"},
                                  user_account{"admin", "admin", "ADMIN-SESSION"}};

/// The user whose session is open from the start.
inline constexpr const user_account &FIRST_USER = USERS.front();

/// The session that requests from the controller itself carry.
inline constexpr std::string_view LOCAL_SESSION = "NO-SESSIONID";

inline constexpr std::string_view ALARM_PIN = "1234";

/// Older messages are dropped.
inline constexpr std::size_t KEPT_MESSAGES = 100;

/// What a schedule belongs to: object, mode and type.
using schedule_place = std::array<std::string, 3>;

struct home_state {
    std::map<std::string, home_element, std::less<>> elements{
        {"BATH-RADIO", {"OFF", "0"}},
        {"GARDEN-LAMP", {"OFF", "0"}},
        {"KITCHEN-RADIO", {"OFF", "0"}},
        {"KITCHEN-THERMOSTAT", {"ON", "21.5"}},
        {"LIVING-LAMP", {"OFF", "0"}}};
    /// Which element is at an address of a gateway, written with the gateway's name in options.
    std::map<std::string, std::string, std::less<>> links{{"eib 1/1/3", "LIVING-LAMP"},
                                                          {"lintronic 07", "GARDEN-LAMP"},
                                                          {"tutondo 3", "KITCHEN-RADIO"},
                                                          {"vivaldi 1/4", "BATH-RADIO"}};
    std::map<std::string, std::string, std::less<>> sessions{
        {std::string(FIRST_USER.session), std::string(FIRST_USER.name)}};
    std::map<std::string, home_neighbour, std::less<>> neighbours; ///< by unique identifier
    std::map<schedule_place, std::string> schedules;
    std::deque<std::string> messages;
    std::string configuration; ///< the last uploaded configuration file
    std::map<std::string_view, std::size_t> statuses_given; ///< by daemon, of those it was told
    std::string origin; ///< the address of the web service, such as http://127.0.0.1:8080
    std::string token;  ///< what a request of the page must carry to change something
};

/// Fills the home from the text of a state file. A part that the text names replaces the whole
/// part; the others stay. Returns what is wrong with the text, empty when nothing is.
std::string read_state(const std::string &text, home_state &home);
std::string write_state(const home_state &home);
