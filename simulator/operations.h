// The web service's operations: names, request and response children in wire order, which of
// them need a session or a field, and the function that does what it asks for.
#pragma once

#include "simulator/home.h"

#include <optional>
#include <span>
#include <variant>
#include <vector>

inline constexpr const char *SERVICE_NAMESPACE = "urn:xmethods-lumows";

/// What an operation came to: 0, or an error number relative to the web service's base.
enum service_status : int {
    SERVICE_DONE = 0,
    SERVICE_MALFORMED = 2,     ///< an unknown, repeated or misplaced child
    SERVICE_NO_SESSION = 3,    ///< the session is unknown or another user's
    SERVICE_NOT_FOUND = 4,     ///< no such element, neighbour or schedule
    SERVICE_REFUSED = 5,       ///< wrong user, password or PIN
    SERVICE_FIELD_MISSING = 6, ///< a field that the operation cannot do without is absent
};

enum class session_rule {
    NONE,          ///< no session child
    KNOWN,         ///< the session must be open
    KNOWN_OR_LOCAL ///< requests from the controller itself may do without one
};

struct service_operation;

/// One request, with its children in the operation's order; nothing for an absent child.
struct service_call {
    const service_operation *operation = nullptr;
    std::vector<std::optional<std::string>> values;
    std::string complaint; ///< what is wrong with the children; empty for a proper request
};

/// Response children by name; those that are not set are answered empty. A field that is none of
/// the operation's children is not answered.
using response_fields = std::map<std::string_view, std::string>;

/// The field for a remark that belongs on the request line, and not into the answer.
inline constexpr std::string_view REMARK = "(remark)";

struct service_operation {
    std::string_view name;
    std::string_view request;  ///< its children in wire order, a blank between them
    std::string_view response; ///< likewise
    session_rule session;
    std::string_view needed; ///< the request child that must be there and not empty, if any
    int (*run)(home_state &home, const service_call &call, response_fields &response);
};

extern const std::span<const service_operation> OPERATIONS;

std::vector<std::string_view> child_names(std::string_view children);

/// The operation of this element name, null when there is none.
const service_operation *find_operation(std::string_view name);

/// The value of a request child; empty when it is absent.
std::string_view request_value(const service_call &call, std::string_view child);

/// Gives an element, which is made where there is none, a status and a value, and tells of it in a
/// message.
void change_element(home_state &home, const std::string &name, const home_element &now);

/// Checks children, session and needed field, then runs the operation. Returns a ServiceStatus;
/// `fields` holds the other children of a successful answer.
int run_operation(home_state &home, const service_call &call, response_fields &fields);

// Envelopes: taking a request apart, and writing responses and faults.

/// A request that cannot be answered with a response element.
struct soap_fault {
    std::string code; ///< local name in the envelope namespace, such as Client
    std::string text;
};

/// A qualified name without its prefix.
std::string_view local_name(std::string_view name);

/// Reads a request envelope. Wrong children of a known operation are no fault but a complaint
/// in the call, since they can be answered with a status.
std::variant<service_call, soap_fault> read_envelope(std::string_view body);

/// The response envelope of an operation: all its response children in order, the ones that
/// `fields` does not hold empty.
std::string write_response(const service_operation &operation, const response_fields &fields);
std::string write_fault(const soap_fault &fault);
